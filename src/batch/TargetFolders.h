#pragma once

// The folders that the results of a run go to: made when the first result comes, cleared of what a
// killed run left there, and given up as a whole where nothing can be written.

#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

#include "io/FileError.h"

namespace velloran {

/// Why no result goes to a folder.
struct FolderFailure {
    std::filesystem::path at;  // the folder that refuses: the target's own or one above it
    FileError error;
};

/// May be used by several threads.
class TargetFolders {
 public:
    explicit TargetFolders(std::filesystem::path root) : root_(std::move(root)) {}

    /// Makes the folder with all above it. What failed once is not tried again.
    std::optional<FolderFailure> Prepare(const std::filesystem::path& folder);

 private:
    std::optional<FolderFailure> PrepareNew(const std::filesystem::path& folder) const;

    std::filesystem::path root_;
    std::mutex lock_;
    std::unordered_map<std::string, std::optional<FolderFailure>> known_;
};

}  // namespace velloran
