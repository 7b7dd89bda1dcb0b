#include "files/Walkers.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "core/MessagePump.h"

namespace velloran {

namespace {

std::int64_t Nanoseconds(const statx_timestamp& time) {
    return time.tv_sec * std::int64_t{1'000'000'000} + time.tv_nsec;
}

/// Zeros for a file that is gone.
FileRecord RecordOf(const std::filesystem::path& path) {
    struct statx status {};
    if (statx(AT_FDCWD, path.c_str(), 0, STATX_BTIME | STATX_MTIME | STATX_SIZE, &status) != 0)
        return {};
    const bool hasBirth = (status.stx_mask & STATX_BTIME) != 0;
    return {Nanoseconds(hasBirth ? status.stx_btime : status.stx_mtime), status.stx_size, 0};
}

}  // namespace

void CDirCounter::SetUp(std::u16string_view filter, WalkOwner* owner, bool recursive,
                        const std::filesystem::path& excluded) {
    CSrchDir::SetUp(filter, owner, recursive, excluded);
    count_ = 0;
}

void CDirCounter::OnFile(const std::filesystem::path&, const FindData&) {
    PumpMessages();
    if (Owner() != nullptr && Owner()->IsStopRequested()) {
        Stop();
        count_ = 0;
        return;
    }
    ++count_;
}

std::optional<std::filesystem::path> CDirGetFirst::GetFirstFile(
    const std::filesystem::path& folder, std::u16string_view filter, bool recursive,
    const std::filesystem::path& excluded) {
    first_.reset();
    SetUp(filter, nullptr, recursive, excluded);
    Walk(folder);
    return first_;
}

void CDirGetFirst::OnFile(const std::filesystem::path& path, const FindData&) {
    first_ = path;
    Stop();
}

void CDirInfo::Collect(const std::filesystem::path& folder, std::u16string_view filter,
                       bool recursive, const std::filesystem::path& excluded, CStrMng& list,
                       CStructMng<FileRecord>* records) {
    list_ = &list;
    records_ = records;
    SetUp(filter, nullptr, recursive, excluded);
    Walk(folder);
    list_ = nullptr;
    records_ = nullptr;
}

void CDirInfo::OnFile(const std::filesystem::path& path, const FindData&) {
    if (list_ == nullptr)
        return;
    const int nameIndex = list_->Add(path);
    if (records_ == nullptr)
        return;
    FileRecord record = RecordOf(path);
    record.nameIndex = nameIndex;
    records_->Add(record);
}

void CGetFiles::SetUp(std::u16string_view filter, WalkOwner* owner, bool recursive,
                      const std::filesystem::path& excluded) {
    CSrchDir::SetUp(filter, owner, recursive, excluded);
    names_.Clear();
}

void CGetFiles::OnFile(const std::filesystem::path& path, const FindData&) {
    if (Owner() == nullptr || Owner()->AcceptsFile(path))
        names_.Add(path.filename());
}

}  // namespace velloran
