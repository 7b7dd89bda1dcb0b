// Copies are deep, Transfer moves, a ghost owns nothing.

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include "core/DibImage.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"

namespace velloran {
namespace {

/// A picture with both planes, fields and a source record that can be told from the defaults.
CDibImage Furnished() {
    CDibImage image = test::Noise(7, 5, 8, 3);
    EXPECT_TRUE(image.CreateAlpha());
    EXPECT_TRUE(image.CreateSelection());
    for (int i = 0; i < 35; ++i) {
        image.GetAlpha()[i] = static_cast<std::uint8_t>(i * 7);
        image.GetSelection()[i] = static_cast<std::uint8_t>(i % 3);
    }
    image.UpdateSelectionBox();
    image.SetXDpi(300);
    image.SetYDpi(150);
    image.Fields().quality = 55;
    image.Fields().type = 9;
    image.Fields().backgroundIndex = 4;
    image.Source() = {24, 1, "scan.png", 5};
    return image;
}

void ExpectFurnished(const CBaseImage& image) {
    const CDibImage expected = Furnished();
    test::ExpectSamePixels(image, expected);
    ASSERT_NE(image.GetAlpha(), nullptr);
    ASSERT_NE(image.GetSelection(), nullptr);
    EXPECT_EQ(std::memcmp(image.GetAlpha(), expected.GetAlpha(), 35), 0);
    EXPECT_EQ(std::memcmp(image.GetSelection(), expected.GetSelection(), 35), 0);
    EXPECT_EQ(image.RareFields().selectionBox, expected.RareFields().selectionBox);
    EXPECT_EQ(image.GetXDpi(), 300);
    EXPECT_EQ(image.GetYDpi(), 150);
    EXPECT_EQ(image.GetHeader().xPixelsPerMeter, 11811);
    EXPECT_EQ(image.Fields().quality, 55);
    EXPECT_EQ(image.GetType(), 9u);
    EXPECT_EQ(image.Fields().backgroundIndex, 4);
    EXPECT_EQ(std::memcmp(image.GetDib(), &image.GetHeader(), 40), 0);
}

TEST(ImageCopy, IsDeepAndComplete) {
    CDibImage source = Furnished();
    const CDibImage copy = source;
    source.Clear(0);
    std::memset(source.GetAlpha(), 1, 35);
    std::memset(source.GetSelection(), 1, 35);
    source.GetPalette()[3] = {1, 2, 3, 0};
    source.Destroy();
    ExpectFurnished(copy);
    EXPECT_EQ(copy.Source().sourceColours, 24u);
    EXPECT_EQ(copy.Source().sourceName, "scan.png");
}

TEST(ImageCopy, AssignmentReplacesWhatWasThere) {
    CDibImage target = test::Filled(90, 3, 24, 9);
    ASSERT_TRUE(target.CreateAlpha());
    target = Furnished();
    ExpectFurnished(target);
    const CDibImage plain = test::Filled(2, 2, 1, 1);
    CDibImage copied = Furnished();
    copied = plain;
    test::ExpectSamePixels(copied, plain);
    EXPECT_EQ(copied.GetAlpha(), nullptr) << "the source has no alpha";
    EXPECT_EQ(copied.GetSelection(), nullptr);
}

TEST(ImageCopy, TakesOnlyThePartsAskedFor) {
    const CDibImage source = Furnished();
    CBaseImage target;
    ASSERT_TRUE(target.Copy(source, /*copyPixels=*/false, /*copySelection=*/false,
                            /*copyAlpha=*/false));
    EXPECT_EQ(target.GetWidth(), 7);
    EXPECT_EQ(target.GetBpp(), 8);
    EXPECT_EQ(target.GetType(), 9u);
    EXPECT_TRUE(target.IsGrayScale()) << "the palette comes without pixels too";
    EXPECT_EQ(target.GetAlpha(), nullptr);
    EXPECT_EQ(target.GetSelection(), nullptr);
    EXPECT_EQ(target.RareFields().selectionBox, SelectionBox{});
    ASSERT_TRUE(target.Copy(source, true, false, true));
    EXPECT_NE(target.GetAlpha(), nullptr);
    EXPECT_EQ(target.GetSelection(), nullptr);
    test::ExpectSamePixels(target, source);
}

TEST(ImageCopy, OfItselfChangesNothing) {
    CDibImage image = Furnished();
    const CDibImage& same = image;
    image = same;
    EXPECT_TRUE(image.Copy(same));
    EXPECT_TRUE(image.Transfer(image));
    ExpectFurnished(image);
}

TEST(ImageCopy, OfAnEmptyImageIsEmpty) {
    CDibImage image = Furnished();
    image = CDibImage(CDibImage());
    EXPECT_FALSE(image.IsValid());
    CBaseImage other = test::Filled(2, 2, 8, 1);
    EXPECT_FALSE(other.Copy(CBaseImage()));
    EXPECT_FALSE(other.IsValid());
}

TEST(ImageCopy, LayersAreNotCopied) {
    CBaseImage image = test::Filled(3, 3, 8, 1);
    ASSERT_TRUE(image.AddLayer(std::make_unique<CBaseImage>(test::Filled(2, 2, 8, 7))));
    const CBaseImage copy = image;
    EXPECT_EQ(copy.GetLayerCount(), 0);
    EXPECT_EQ(image.GetLayer(0)->GetParent(), &image);
    EXPECT_EQ(image.GetLayer(1), nullptr);
    EXPECT_EQ(image.GetLayer(-1), nullptr);
    EXPECT_FALSE(image.AddLayer(nullptr));
}

TEST(ImageCopy, OfAnOwnLayerOutlivesTheLayer) {
    const CBaseImage layer = test::Noise(6, 4, 8, 8);
    CBaseImage copied = test::Filled(3, 3, 8, 1), moved = test::Filled(3, 3, 8, 1);
    ASSERT_TRUE(copied.AddLayer(std::make_unique<CBaseImage>(layer)));
    ASSERT_TRUE(moved.AddLayer(std::make_unique<CBaseImage>(layer)));
    EXPECT_TRUE(copied.Copy(*copied.GetLayer(0)));
    EXPECT_TRUE(moved.Transfer(*moved.GetLayer(0)));
    test::ExpectSamePixels(copied, layer);
    test::ExpectSamePixels(moved, layer);
    EXPECT_EQ(copied.GetLayerCount(), 0);
}

TEST(ImageCopy, IsWholeOrEmptyWhenMemoryRunsOut) {
    const CDibImage source = Furnished();
    long n = 1;
    for (bool failed = true; failed; ++n) {
        CDibImage target = test::Filled(3, 3, 24, 1);
        bool copied;
        {
            const test::FailAllocation fail(n);
            copied = target.Copy(source);
            failed = fail.Happened();
        }
        EXPECT_EQ(copied, !failed);
        if (copied)
            ExpectFurnished(target);
        EXPECT_EQ(target.IsValid(), copied);
    }
    EXPECT_EQ(n - 2, 4) << "rare fields, block and two planes";
}

TEST(ImageCopy, NeverThrowsForALongSourceName) {
    CDibImage source = Furnished();
    source.Source().sourceName = std::string(500, 'n');
    const int failures = test::SweepFailingAllocations([&](long) {
        const CDibImage copy = source;
        const bool whole = copy.Source().sourceName == source.Source().sourceName;
        EXPECT_EQ(copy.IsValid(), whole);
    });
    EXPECT_GE(failures, 4) << "block, two planes and the name";
}

TEST(ImageTransfer, EmptiesTheSource) {
    CBaseImage from = Furnished(), to = test::Filled(2, 2, 24, 1);
    const std::uint8_t* block = from.GetDib();
    EXPECT_TRUE(to.Transfer(from));
    EXPECT_EQ(to.GetDib(), block) << "nothing is copied";
    ExpectFurnished(to);
    EXPECT_FALSE(from.IsValid());
    EXPECT_EQ(from.GetWidth(), 0);
    EXPECT_EQ(from.GetAlpha(), nullptr);
    EXPECT_EQ(from.GetSelection(), nullptr);
    EXPECT_EQ(from.GetXDpi(), 96);
    EXPECT_NE(from.Create(3, 3, 8), nullptr) << "the source can be used again";
}

TEST(ImageTransfer, TargetKeepsItsOwnSourceRecord) {
    CDibImage to = test::Filled(2, 2, 24, 1);
    to.Source() = {8, 3, "own.tif", 6};
    CDibImage from = Furnished();
    EXPECT_TRUE(to.Transfer(from));
    EXPECT_EQ(to.Source().sourceColours, 8u);
    EXPECT_EQ(to.Source().sourceFlag, 3u);
    EXPECT_EQ(to.Source().sourceName, "own.tif");
    EXPECT_EQ(to.Source().sourceInfo, 6u);
    EXPECT_EQ(from.Source().sourceColours, 24u) << "and so does the source";
    to = test::Filled(3, 3, 8, 2);  // move assignment
    EXPECT_EQ(to.Source().sourceName, "own.tif");
    EXPECT_EQ(to.GetWidth(), 3);
}

TEST(ImageTransfer, FromAnEmptyImageEmpties) {
    CDibImage image = Furnished();
    CBaseImage empty;
    EXPECT_TRUE(image.Transfer(empty));
    EXPECT_FALSE(image.IsValid());
}

TEST(ImageTransfer, LayersFindTheirNewParent) {
    CBaseImage from = test::Filled(3, 3, 8, 1);
    ASSERT_TRUE(from.AddLayer(std::make_unique<CBaseImage>()));
    CBaseImage to = std::move(from);
    ASSERT_EQ(to.GetLayerCount(), 1);
    EXPECT_EQ(to.GetLayer(0)->GetParent(), &to);
}

TEST(ImageTransfer, MovingANewImageTakesTheSourceRecordToo) {
    CDibImage from = Furnished();
    const CDibImage to = std::move(from);
    EXPECT_EQ(to.Source().sourceName, "scan.png");
    ExpectFurnished(to);
}

TEST(ImageGhost, SeesThePixelsAndFreesNothing) {
    CDibImage owner = Furnished();
    {
        CBaseImage ghost;
        ghost.Ghost(owner);
        EXPECT_TRUE(ghost.IsGhost());
        EXPECT_EQ(ghost.GetDib(), owner.GetDib());
        ExpectFurnished(ghost);
        EXPECT_FALSE(ghost.Destroy());
        EXPECT_TRUE(ghost.IsValid());
    }
    ExpectFurnished(owner);
}

TEST(ImageGhost, RefusesAllThatWouldReplaceTheBlock) {
    CDibImage owner = Furnished();
    CBaseImage ghost, other = test::Filled(2, 2, 8, 1);
    ghost.Ghost(owner);
    EXPECT_EQ(ghost.Create(4, 4, 8), nullptr);
    EXPECT_FALSE(ghost.Copy(other));
    EXPECT_FALSE(ghost.Transfer(other));
    EXPECT_FALSE(ghost.TakePixels(other));
    EXPECT_FALSE(other.TakePixels(ghost));
    EXPECT_FALSE(ghost.CropInPlace(1, 0, 0, 0));
    EXPECT_FALSE(ghost.Rotate90(true));
    EXPECT_FALSE(ghost.Flip(FlipMode::kMirror));
    EXPECT_FALSE(ghost.IncreaseBpp24());
    EXPECT_FALSE(ghost.CreateAlpha());
    EXPECT_FALSE(ghost.CreateFromArray(owner.GetBits(), 4, 2, 8, 8, true));
    EXPECT_TRUE(other.IsValid());
    ExpectFurnished(ghost);
    ExpectFurnished(owner);
    ghost.SetXDpi(72);
    EXPECT_EQ(std::memcmp(owner.GetDib(), &owner.GetHeader(), 40), 0);
}

TEST(ImageGhost, CopyOfAGhostOwnsItsPixels) {
    CBaseImage copy;
    {
        CDibImage owner = Furnished();
        CBaseImage ghost, second;
        ghost.Ghost(owner);
        second.Ghost(ghost);
        copy = second;
        owner.Clear(0);
    }
    EXPECT_FALSE(copy.IsGhost());
    ExpectFurnished(copy);
}

TEST(ImageGhost, OfAGhostDependsOnTheOwnerOnly) {
    CDibImage owner = Furnished();
    CBaseImage second;
    {
        CBaseImage first;
        first.Ghost(owner);
        second.Ghost(first);
    }
    ExpectFurnished(second);
    second.Ghost(second);
    owner.Ghost(second);  // would be a view of itself
    EXPECT_FALSE(owner.IsGhost());
    ExpectFurnished(owner);
}

TEST(ImageGhost, TransferFromAGhostPassesTheViewOn) {
    CDibImage owner = Furnished();
    CBaseImage ghost;
    ghost.Ghost(owner);
    CBaseImage taker;
    EXPECT_TRUE(taker.Transfer(ghost));
    EXPECT_TRUE(taker.IsGhost());
    EXPECT_FALSE(ghost.IsValid());
    EXPECT_FALSE(ghost.IsGhost());
    ExpectFurnished(taker);
}

TEST(ImageGhost, ReplacesWhatTheImageHeld) {
    CDibImage owner = Furnished();
    CBaseImage ghost = test::Filled(50, 50, 24, 1);
    ASSERT_TRUE(ghost.CreateAlpha());
    ghost.Ghost(owner);
    ExpectFurnished(ghost);
}

TEST(ImageInfo, IsTakenByAnEmptyImageOnly) {
    const CDibImage source = Furnished();
    CBaseImage image;
    EXPECT_TRUE(image.CopyInfo(source));
    EXPECT_FALSE(image.IsValid());
    EXPECT_EQ(image.GetWidth(), 7);
    EXPECT_EQ(image.GetXDpi(), 300);
    EXPECT_EQ(image.GetBits(0), nullptr);
    EXPECT_EQ(image.GetPalette(), nullptr);
    EXPECT_FALSE(image.CropInPlace(1, 1, 1, 1));
    CBaseImage full = test::Filled(2, 2, 8, 1);
    EXPECT_FALSE(full.CopyInfo(source));
    EXPECT_EQ(full.GetWidth(), 2);
}

TEST(ImageTakePixels, KeepsFieldsAndPlanesOfTheSameSize) {
    CDibImage image = Furnished();
    CBaseImage color = test::Noise(7, 5, 24, 4);
    const CBaseImage expected = color;
    EXPECT_TRUE(image.TakePixels(color));
    EXPECT_FALSE(color.IsValid());
    test::ExpectSamePixels(image, expected);
    EXPECT_NE(image.GetAlpha(), nullptr);
    EXPECT_NE(image.GetSelection(), nullptr);
    EXPECT_EQ(image.GetXDpi(), 300);
    EXPECT_EQ(image.GetHeader().xPixelsPerMeter, 11811);
    EXPECT_EQ(image.Fields().quality, 55);
    EXPECT_EQ(image.Source().sourceColours, 24u);
    EXPECT_FALSE(image.TakePixels(image));
}

TEST(ImageTakePixels, DropsPlanesOfAnotherSize) {
    CDibImage image = Furnished();
    CBaseImage other = test::Noise(7, 6, 8, 4);
    EXPECT_TRUE(image.TakePixels(other));
    EXPECT_EQ(image.GetHeight(), 6);
    EXPECT_EQ(image.GetAlpha(), nullptr);
    EXPECT_EQ(image.GetSelection(), nullptr);
    EXPECT_EQ(image.RareFields().selectionBox, SelectionBox{});
}

TEST(ImageSelection, BoxEnclosesTheSelectedPixels) {
    CBaseImage image = test::Filled(9, 6, 8, 0);
    ASSERT_TRUE(image.CreateSelection());
    EXPECT_EQ(image.GetSelection()[53], 0);
    image.GetSelection()[1 * 9 + 5] = 1;
    image.GetSelection()[4 * 9 + 2] = 255;
    image.UpdateSelectionBox();
    EXPECT_EQ(image.RareFields().selectionBox, (SelectionBox{2, 1, 6, 5}));
    ASSERT_TRUE(image.CropInPlace(0, 0, 5, 0));  // the pixel in column 5 goes
    EXPECT_EQ(image.RareFields().selectionBox, (SelectionBox{2, 4, 3, 5}));
}

}  // namespace
}  // namespace velloran
