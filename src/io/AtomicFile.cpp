#include "io/AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "io/Leftovers.h"

namespace velloran {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kNewFileMode = 0666;  // the system takes the umask away
constexpr int kLinksFollowed = 40;
constexpr int kNamesTried = 100;

fs::path FolderOf(const fs::path& file) {
    return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

/// The file behind a symbolic link, also where it does not exist yet. False with errno.
bool FollowLinks(fs::path& file) {
    for (int i = 0; i < kLinksFollowed; ++i) {
        struct stat status {};
        if (lstat(file.c_str(), &status) != 0)
            return errno == ENOENT;
        if (!S_ISLNK(status.st_mode))
            return true;
        std::error_code error;
        const fs::path behind = fs::read_symlink(file, error);
        if (error) {
            errno = error.value();
            return false;
        }
        file = behind.is_absolute() ? behind : FolderOf(file) / behind;
    }
    errno = ELOOP;
    return false;
}

/// Calls `make(name)` with new names until it gives no "exists already"; its last result.
template <typename Make>
int WithNewName(const fs::path& folder, fs::path& name, Make&& make) {
    int result = -1;
    for (int i = 0; i < kNamesTried; ++i) {
        name = MakeTemporaryName(folder);
        result = make(name.c_str());
        if (result >= 0 || errno != EEXIST)
            break;
    }
    if (result < 0)
        name.clear();
    return result;
}

#ifdef O_TMPFILE
/// A file without a name, of which nothing is left whatever ends the program; -1 where the file
/// system has none.
int OpenNameless(const fs::path& folder) {
    if (access("/proc/self/fd", X_OK) != 0)
        return -1;  // it could not be given its name later
    return open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, kNewFileMode);
}
#else
int OpenNameless(const fs::path&) {
    return -1;
}
#endif

int GiveName(int descriptor, const char* name) {
    const std::string open = "/proc/self/fd/" + std::to_string(descriptor);
    return linkat(AT_FDCWD, open.c_str(), AT_FDCWD, name, AT_SYMLINK_FOLLOW);
}

/// A name that is too long stays so: another try will not help.
bool FailTarget(FileError* error, const char* what) {
    if (errno == ENAMETOOLONG)
        return FailContent(
            error, std::string(what) + ": " + std::generic_category().message(ENAMETOOLONG));
    return FailErrno(error, what);
}

/// A new file under a temporary name, locked so that no other run takes it for one that was left;
/// -1 with errno.
int OpenNamed(const fs::path& folder, fs::path& name) {
    for (int i = 0; i < kNamesTried; ++i) {
        const int descriptor = WithNewName(folder, name, [](const char* path) {
            return open(path, O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, kNewFileMode);
        });
        struct stat opened {};
        if (descriptor < 0 ||
            (LockTemporary(descriptor) && fstat(descriptor, &opened) == 0 && opened.st_nlink > 0))
            return descriptor;
        close(descriptor);  // another run was quicker with its lock and removes the file
    }
    errno = EBUSY;
    return -1;
}

/// Attributes that vouch for the bytes of a file, which are going to be others.
bool IsOfContent(std::string_view name) {
    return name == "security.ima" || name == "security.evm" || name == "security.capability";
}

/// Owner, group, mode and extended attributes of the file that is going to be replaced. What the
/// user or the file system does not allow is left as it is; nothing of the picture is lost.
void TakeAttributes(const char* from, const struct stat& status, int to) {
    if (fchown(to, status.st_uid, status.st_gid) != 0 && fchown(to, -1, status.st_gid) != 0)
        errno = 0;
    fchmod(to, status.st_mode & 0777);
    std::vector<char> names(
        static_cast<std::size_t>(std::max<ssize_t>(0, listxattr(from, nullptr, 0))));
    const ssize_t length = names.empty() ? 0 : listxattr(from, names.data(), names.size());
    std::vector<char> value;
    for (ssize_t at = 0; at < length;) {
        const char* name = names.data() + at;
        at += static_cast<ssize_t>(std::string_view(name).size()) + 1;
        const ssize_t size = getxattr(from, name, nullptr, 0);
        if (size < 0 || IsOfContent(name))
            continue;
        value.resize(static_cast<std::size_t>(size));
        if (getxattr(from, name, value.data(), value.size()) == size)
            fsetxattr(to, name, value.data(), value.size(), 0);
    }
}

/// What a network file system tells only at close, while the file has no final name yet.
bool CloseTellsNoError(int descriptor) {
    const int copy = dup(descriptor);
    return copy >= 0 && close(copy) == 0;
}

}  // namespace

AtomicFile::AtomicFile(fs::path target) : target_(std::move(target)) {}

AtomicFile::~AtomicFile() {
    Abandon();
}

void AtomicFile::Abandon() {
    if (stream_ != nullptr)
        std::fclose(stream_);
    stream_ = nullptr;
    if (!temporary_.empty())
        unlink(temporary_.c_str());
    temporary_.clear();
}

bool AtomicFile::CheckTarget(FileError* error) {
    file_ = target_;
    if (!file_.has_filename())
        return FailStorage(error, "cannot write: names no file", FileReason::kIsFolder);
    if (!FollowLinks(file_))
        return FailTarget(error, "cannot open");
    struct stat status {};
    if (stat(file_.c_str(), &status) != 0) {
        if (errno != ENOENT)
            return FailErrno(error, "cannot open");
        replaces_ = false;
        return true;
    }
    if (S_ISDIR(status.st_mode))
        return FailStorage(error, "cannot write: is a folder", FileReason::kIsFolder);
    if (!S_ISREG(status.st_mode))
        return FailStorage(error, "cannot write: is no plain file", FileReason::kNotPlainFile);
    if (faccessat(AT_FDCWD, file_.c_str(), W_OK, AT_EACCESS) != 0)
        return FailErrno(error, "cannot write");
    replaces_ = true;
    return true;
}

bool AtomicFile::Open(FileError* error) {
    Abandon();
    failed_ = false;
    errnoOfFailure_ = 0;
    if (!CheckTarget(error))
        return false;
    const fs::path folder = FolderOf(file_);
    int descriptor = OpenNameless(folder);
    if (descriptor < 0)
        descriptor = OpenNamed(folder, temporary_);
    if (descriptor < 0)
        return FailErrno(error, "cannot create");
    if (struct stat status{}; replaces_ && stat(file_.c_str(), &status) == 0)
        TakeAttributes(file_.c_str(), status, descriptor);
    stream_ = fdopen(descriptor, "w+b");
    if (stream_ == nullptr) {
        FailErrno(error, "cannot open");
        close(descriptor);
        Abandon();
        return false;
    }
    return true;
}

bool AtomicFile::Write(const void* data, std::size_t size) {
    if (failed_ || stream_ == nullptr)
        return false;
    errno = 0;
    if (std::fwrite(data, 1, size, stream_) != size)
        NoteFailure();
    return !failed_;
}

bool AtomicFile::Seek(std::uint64_t position) {
    if (failed_ || stream_ == nullptr)
        return false;
    errno = 0;
    if (::fseeko(stream_, static_cast<off_t>(position), SEEK_SET) != 0)
        NoteFailure();
    return !failed_;
}

std::uint64_t AtomicFile::Position() const {
    const off_t position = stream_ != nullptr ? ::ftello(stream_) : 0;
    return static_cast<std::uint64_t>(std::max<off_t>(position, 0));
}

std::uint64_t AtomicFile::Size() const {
    if (stream_ == nullptr)
        return 0;
    const off_t position = ::ftello(stream_);
    if (::fseeko(stream_, 0, SEEK_END) != 0)
        return 0;
    const off_t size = ::ftello(stream_);
    ::fseeko(stream_, position, SEEK_SET);
    return static_cast<std::uint64_t>(std::max<off_t>(size, 0));
}

std::size_t AtomicFile::Read(void* data, std::size_t size) {
    return stream_ != nullptr ? std::fread(data, 1, size, stream_) : 0;
}

bool AtomicFile::FailWrite(FileError* error) {
    if (errnoOfFailure_ == 0)
        return FailStorage(error, "cannot write: not all could be written");
    errno = errnoOfFailure_;
    return FailErrno(error, "cannot write");
}

void AtomicFile::NoteFailure() {
    if (errnoOfFailure_ == 0)
        errnoOfFailure_ = errno;
    failed_ = true;
}

bool AtomicFile::FlushAll() {
    // A library's failed write left its mark on the stream, but not its errno; what could not be
    // written is still in the buffer, so flushing meets the cause again.
    if (std::ferror(stream_) != 0)
        failed_ = true;
    errno = 0;
    if (std::fflush(stream_) != 0)
        NoteFailure();
    const int descriptor = fileno(stream_);
    // An old file must not be lost to a crash of the machine; a new one has nothing to lose.
    if (!failed_ && replaces_ && fdatasync(descriptor) != 0 && errno != EINVAL && errno != ENOSYS)
        NoteFailure();
    if (!failed_ && !CloseTellsNoError(descriptor))
        NoteFailure();
    return !failed_;
}

bool AtomicFile::Publish() {
    if (temporary_.empty()) {
        const int descriptor = fileno(stream_);
        if (!replaces_ && GiveName(descriptor, file_.c_str()) == 0)
            return true;
        if (!replaces_ && errno != EEXIST)
            return false;
        LockTemporary(descriptor);
        const int named = WithNewName(FolderOf(file_), temporary_,
                                      [&](const char* name) { return GiveName(descriptor, name); });
        if (named != 0)
            return false;
    }
    if (rename(temporary_.c_str(), file_.c_str()) != 0)
        return false;
    temporary_.clear();
    return true;
}

bool AtomicFile::Commit(FileError* error) {
    if (stream_ == nullptr)
        return FailStorage(error, "cannot write: not open");
    bool published = FlushAll();
    if (published && !Publish()) {
        published = false;
        NoteFailure();
    }
    Abandon();
    if (published)
        return true;
    return FailWrite(error);
}

}  // namespace velloran
