#pragma once

// A folder that one program works on at a time: who holds the lock may change what lies in it. It
// goes with the process, however that ends. File systems without locks let everyone in.

#include <filesystem>

namespace velloran {

class FolderLock {
 public:
    FolderLock() = default;
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

    /// False when another holds it.
    bool Take(const std::filesystem::path& folder);
    bool IsHeld() const { return descriptor_ >= 0; }

 private:
    int descriptor_ = -1;
};

}  // namespace velloran
