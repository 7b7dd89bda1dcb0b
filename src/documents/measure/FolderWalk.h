#pragma once

// The walk of the folder tools: each file that the filter accepts is handed on until the user wants
// a stop. Folders that cannot be listed are told.

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace velloran {

class Asker;

struct FolderWalk {
    std::filesystem::path folder;
    std::u16string filter;
    bool recursive = true;
};

/// Why the walk cannot begin, in the system's words; empty when it can.
std::u16string_view RefuseWalk(const FolderWalk& walk);

struct WalkEnd {
    bool wasStopped = false;
    std::size_t unreadableFolders = 0;
};

/// Calls `work` for each file; the asker is told of folders that cannot be listed.
WalkEnd WalkFiles(const FolderWalk& walk, Asker& asker,
                  const std::function<void(const std::filesystem::path&)>& work);

}  // namespace velloran
