#include "params/DirBlock.h"

#include <gtest/gtest.h>

namespace velloran {
namespace {

TEST(DirBlock, StartsWithEmptyFolders) {
    const CDirBlock folders;
    EXPECT_TRUE(folders.GetPath(CDirBlock::kSource).empty());
    EXPECT_TRUE(folders.GetPath(CDirBlock::kTarget).empty());
}

TEST(DirBlock, AFileNameIsCutAway) {
    CDirBlock folders;
    folders.SetByFile(CDirBlock::kTarget, "/scans/01/page.png");
    EXPECT_EQ(folders.GetPath(CDirBlock::kTarget), "/scans/01");
    EXPECT_TRUE(folders.GetPath(CDirBlock::kSource).empty());
}

TEST(DirBlock, ASourceSetByFileFillsAnEmptyTarget) {
    CDirBlock folders;
    folders.SetByFile(CDirBlock::kSource, "/scans/01/page.png");
    EXPECT_EQ(folders.GetPath(CDirBlock::kSource), "/scans/01");
    EXPECT_EQ(folders.GetPath(CDirBlock::kTarget), "/scans/01");
}

TEST(DirBlock, ASourceSetByFileLeavesATargetThatIsSet) {
    CDirBlock folders;
    folders.SetPath(CDirBlock::kTarget, "/clean");
    folders.SetByFile(CDirBlock::kSource, "/scans/01/page.png");
    EXPECT_EQ(folders.GetPath(CDirBlock::kTarget), "/clean");
}

TEST(DirBlock, ASourceSetAsAFolderDoesNotFillTheTarget) {
    CDirBlock folders;
    folders.SetPath(CDirBlock::kSource, "/scans/01");
    EXPECT_EQ(folders.GetPath(CDirBlock::kSource), "/scans/01");
    EXPECT_TRUE(folders.GetPath(CDirBlock::kTarget).empty());
}

}  // namespace
}  // namespace velloran
