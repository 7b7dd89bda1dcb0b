#include "batch/RunLog.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <iterator>
#include <utility>

#include "files/ReplaceRules.h"
#include "text/Labels.h"
#include "text/PathText.h"
#include "text/Text.h"

namespace velloran {

namespace {

constexpr int kRowWithSecondTab = 7;
constexpr int kMostNumberedLogs = 1000;

std::string ToUtf16LittleEndian(std::u16string_view text) {
    std::string bytes;
    bytes.reserve(text.size() * 2);
    for (const char16_t unit : text) {
        bytes.push_back(static_cast<char>(unit & 0xFF));
        bytes.push_back(static_cast<char>(unit >> 8));
    }
    return bytes;
}

std::filesystem::path NumberedName(const std::filesystem::path& file, int number) {
    std::filesystem::path name = file.stem();
    name += "~";
    name += std::to_string(number);
    name += file.extension();
    return file.parent_path() / name;
}

bool WriteAllBytes(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

/// Whether the open file is still the one of that name: another run may have deleted it between
/// the opening and the lock.
bool IsStillNamed(int descriptor, const std::filesystem::path& file) {
    struct stat open {};
    struct stat named {};
    return ::fstat(descriptor, &open) == 0 && ::stat(file.c_str(), &named) == 0 &&
           open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

bool IsPlainFile(int descriptor) {
    struct stat status {};
    return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

void RunLog::Close() {
    if (descriptor_ >= 0)
        ::close(descriptor_);
    descriptor_ = -1;
}

void RunLog::Reset() {
    Close();
    lines_ = 0;
    lastPath_.clear();
    const int descriptor = ::open(file_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return;
    if (IsPlainFile(descriptor) && ::flock(descriptor, LOCK_EX | LOCK_NB) == 0 &&
        IsStillNamed(descriptor, file_) && CanBeLog(file_))
        ::unlink(file_.c_str());
    ::close(descriptor);
}

bool RunLog::TakeOver(const std::filesystem::path& file, FileError* error) {
    constexpr int kTrials = 16;  // another run may delete the file under our hands
    for (int trial = 0; trial < kTrials; ++trial) {
        const int descriptor =
            ::open(file.c_str(), O_WRONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC, 0666);
        if (descriptor < 0)
            return FailErrno(error, file.native());
        if (IsPlainFile(descriptor)) {
            if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
                ::close(descriptor);
                return false;  // in use: no error, the next name is tried
            }
            if (!CanBeLog(file)) {
                ::close(descriptor);
                return false;  // of the user's own
            }
            if (!IsStillNamed(descriptor, file)) {
                ::close(descriptor);
                continue;
            }
            if (::ftruncate(descriptor, 0) != 0) {
                FailErrno(error, file.native());
                ::close(descriptor);
                return false;
            }
        }
        descriptor_ = descriptor;
        return true;
    }
    return FailStorage(error, file.native() + ": deleted again and again");
}

bool RunLog::CreateFile(FileError* error) {
    const std::filesystem::path wanted = file_;
    for (int number = 1; number <= kMostNumberedLogs; ++number) {
        const std::filesystem::path name = number == 1 ? wanted : NumberedName(wanted, number);
        FileError failure;
        if (TakeOver(name, &failure)) {
            file_ = name;
            return true;
        }
        if (failure.cause != FileError::Cause::kNone)
            return FailStorage(error, failure.detail);
    }
    return FailStorage(error, wanted.native() + ": in use");
}

bool RunLog::LogFailure(const std::filesystem::path& path, int row, FileError* error) {
    if (row < 0 || row >= static_cast<int>(std::size(labels::kLogRows)))
        return true;
    const std::u16string text = PathText(path);
    if (text.empty() || EqualIgnoringCase(text, lastPath_))
        return true;
    std::u16string line;
    if (lines_ == 0) {
        if (descriptor_ < 0 && !CreateFile(error))
            return false;
        line += u'\uFEFF';
    }
    line += text;
    line += u'\t';
    if (row == kRowWithSecondTab)
        line += u'\t';
    line += labels::kLogRows[row];
    if (line.back() != u'\n')
        line += u"\r\n";
    if (!WriteAllBytes(descriptor_, ToUtf16LittleEndian(line)))
        return FailErrno(error, file_.native());
    ++lines_;
    lastPath_ = text;
    return true;
}

}  // namespace velloran
