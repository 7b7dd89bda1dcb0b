#pragma once

// The remembered source and target folders.

#include <array>
#include <filesystem>

namespace velloran {

class CDirBlock {
 public:
    enum Folder { kSource = 0, kTarget = 1 };

    const std::filesystem::path& GetPath(Folder folder) const { return paths_[folder]; }
    void SetPath(Folder folder, const std::filesystem::path& path) { paths_[folder] = path; }

    /// Takes the folder of a file. The source set so fills an empty target too.
    void SetByFile(Folder folder, const std::filesystem::path& file);

 private:
    std::array<std::filesystem::path, 2> paths_;
};

}  // namespace velloran
