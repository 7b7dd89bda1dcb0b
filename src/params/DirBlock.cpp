#include "params/DirBlock.h"

namespace velloran {

void CDirBlock::SetByFile(Folder folder, const std::filesystem::path& file) {
    paths_[folder] = file.parent_path();
    if (folder == kSource && paths_[kTarget].empty())
        paths_[kTarget] = paths_[kSource];
}

}  // namespace velloran
