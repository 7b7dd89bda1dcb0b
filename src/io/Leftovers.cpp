#include "io/Leftovers.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <memory>
#include <random>
#include <string>

namespace velloran {

namespace {

constexpr std::string_view kPrefix = ".velloran-";
constexpr std::size_t kDigitCount = 10;
constexpr std::string_view kDigits = "0123456789abcdefghijklmnopqrstuvwxyz";
constexpr std::time_t kSurelyLeft = 24 * 60 * 60;  // seconds

struct FolderCloser {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

/// Whether nobody writes the open file.
bool IsLeft(int descriptor, const struct stat& status) {
    if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0)
        return true;
    if (errno == EWOULDBLOCK)
        return false;
    return std::time(nullptr) - status.st_mtime > kSurelyLeft;
}

bool RemoveIfLeft(int folder, const char* name) {
    const int descriptor = ::openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    struct stat status {};
    const bool removed = ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) &&
                         IsLeft(descriptor, status) && ::unlinkat(folder, name, 0) == 0;
    ::close(descriptor);
    return removed;
}

}  // namespace

bool IsTemporaryName(std::string_view name) {
    return name.size() == kPrefix.size() + kDigitCount && name.starts_with(kPrefix) &&
           name.find_first_not_of(kDigits, kPrefix.size()) == std::string_view::npos;
}

std::filesystem::path MakeTemporaryName(const std::filesystem::path& folder) {
    thread_local std::minstd_rand random(std::random_device{}());
    std::string name(kPrefix);
    for (std::size_t i = 0; i < kDigitCount; ++i)
        name += kDigits[random() % kDigits.size()];
    return folder / name;
}

bool LockTemporary(int descriptor) {
    return ::flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

int RemoveLeftovers(const std::filesystem::path& folder) {
    const std::unique_ptr<DIR, FolderCloser> open(::opendir(folder.c_str()));
    if (open == nullptr)
        return 0;
    int removed = 0;
    while (const dirent* entry = ::readdir(open.get()))
        if (IsTemporaryName(entry->d_name))
            removed += RemoveIfLeft(::dirfd(open.get()), entry->d_name) ? 1 : 0;
    return removed;
}

}  // namespace velloran
