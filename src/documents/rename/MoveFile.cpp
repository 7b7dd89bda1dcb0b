#include "documents/rename/MoveFile.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <optional>
#include <vector>

#include "files/FileCopy.h"
#include "io/FileSource.h"

namespace velloran {

namespace {

namespace fs = std::filesystem;

bool Stands(const fs::path& file) {
    struct stat status {};
    return ::lstat(file.c_str(), &status) == 0;
}

MoveResult Fail(const fs::path& from, FileError* error) {
    if (errno == EEXIST)
        return MoveResult::kTaken;
    FailErrno(error, from.native());
    return MoveResult::kFailed;
}

/// For file systems that know no move that replaces nothing.
MoveResult MoveByLink(const fs::path& from, const fs::path& to, FileError* error) {
    if (::linkat(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), 0) == 0) {
        if (::unlink(from.c_str()) == 0)
            return MoveResult::kMoved;
        const int reason = errno;
        ::unlink(to.c_str());
        errno = reason;
        return Fail(from, error);
    }
    if (errno == EEXIST || errno == ENOENT || errno == EXDEV)
        return Fail(from, error);
    // No links either: a look first is the best there is.
    if (Stands(to))
        return MoveResult::kTaken;
    return ::rename(from.c_str(), to.c_str()) == 0 ? MoveResult::kMoved : Fail(from, error);
}

MoveResult MoveBetweenDisks(const fs::path& from, const fs::path& to, bool replace,
                            FileError* error) {
    if (!replace && Stands(to))
        return MoveResult::kTaken;
    const std::optional<struct stat> status = ReadFileStatus(from);
    if (!CopyFileWhole(from, to, error))
        return MoveResult::kFailed;
    if (status)
        SetFileTimes(to, *status);
    return ::unlink(from.c_str()) == 0 ? MoveResult::kMoved : Fail(from, error);
}

}  // namespace

MoveResult MoveOneFile(const fs::path& from, const fs::path& to, bool replace, FileError* error) {
    const int moved =
        replace ? ::rename(from.c_str(), to.c_str())
                : ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE);
    if (moved == 0)
        return MoveResult::kMoved;
    if (errno == EXDEV)
        return MoveBetweenDisks(from, to, replace, error);
    if (!replace && (errno == EINVAL || errno == ENOSYS))
        return MoveByLink(from, to, error);
    return Fail(from, error);
}

bool HaveSameBytes(const fs::path& a, const fs::path& b) {
    FileSource first, second;
    if (!first.Open(a) || !second.Open(b) || first.Size() != second.Size())
        return false;
    constexpr std::size_t kChunk = std::size_t{1} << 16;
    std::vector<std::uint8_t> bytesA(kChunk), bytesB(kChunk);
    for (std::uint64_t at = 0; at < first.Size(); at += kChunk) {
        const std::size_t size = first.ReadAt(at, bytesA);
        if (second.ReadAt(at, bytesB) != size ||
            !std::equal(bytesA.begin(), bytesA.begin() + static_cast<std::ptrdiff_t>(size),
                        bytesB.begin()))
            return false;
    }
    return !first.CameShort() && !second.CameShort();
}

}  // namespace velloran
