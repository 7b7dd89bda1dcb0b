#include "batch/TargetFolders.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "io/Leftovers.h"

namespace velloran {

namespace {

namespace fs = std::filesystem;

bool IsFolder(const fs::path& path) {
    std::error_code ignored;
    return fs::is_directory(path, ignored);
}

bool CanWriteIn(const fs::path& folder) {
    return ::faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

/// The folder that kept `folder` from being made, as long as it is the root or beneath it.
fs::path RefusingFolder(const fs::path& folder, const fs::path& root) {
    fs::path at = folder;
    while (at != root && !IsFolder(at) && at.has_relative_path())
        at = at.parent_path();
    return at;
}

}  // namespace

std::optional<FolderFailure> TargetFolders::Prepare(const fs::path& path) {
    const fs::path folder = path.has_filename() ? path : path.parent_path();
    const std::lock_guard hold(lock_);
    const auto found = known_.find(folder.native());
    if (found != known_.end())
        return found->second;
    std::optional<FolderFailure> failure = PrepareNew(folder);
    known_.emplace(folder.native(), failure);
    return failure;
}

std::optional<FolderFailure> TargetFolders::PrepareNew(const fs::path& folder) const {
    FolderFailure failure;
    std::error_code reason;
    if (!IsFolder(folder)) {
        fs::create_directories(folder, reason);
        if (reason && !IsFolder(folder)) {
            failure.at = RefusingFolder(folder, root_);
            errno = reason.value();
            if (reason == std::errc::filename_too_long)
                FailContent(&failure.error, folder.native() + ": " + reason.message());
            else
                FailErrno(&failure.error, folder.native());
            return failure;
        }
    }
    if (!CanWriteIn(folder)) {
        FailErrno(&failure.error, "cannot create");
        failure.at = folder;
        return failure;
    }
    RemoveLeftovers(folder);
    return std::nullopt;
}

}  // namespace velloran
