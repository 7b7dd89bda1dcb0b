#include "core/BaseImage.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include "support/FailingAllocator.h"
#include "support/Images.h"

namespace velloran {
namespace {

TEST(ImageCreate, RefusesZeroWidthWithItsTextAndLeavesTheImageEmpty) {
    CBaseImage image;
    EXPECT_EQ(image.Create(0, 10, 24, 0), nullptr);
    EXPECT_STREQ(image.GetLastError(),
                 "CBaseImage::Create : width and height must be greater than zero");
    EXPECT_FALSE(image.IsValid());
    EXPECT_EQ(image.GetWidth(), 0);
    EXPECT_EQ(image.GetHeight(), 0);
    EXPECT_EQ(image.GetBpp(), 0);
    EXPECT_EQ(image.GetBits(), nullptr);
    EXPECT_EQ(image.GetPalette(), nullptr);
    EXPECT_EQ(image.GetDibSize(), 0u);
}

TEST(ImageCreate, RefusesZeroHeightAndNegativeSides) {
    const std::pair<int, int> sizes[] = {{10, 0}, {-1, 10}, {10, -1}, {INT_MIN, INT_MIN}, {0, 0}};
    for (const auto& [width, height] : sizes) {
        CBaseImage image = test::Filled(3, 3, 8, 1);
        EXPECT_EQ(image.Create(width, height, 8), nullptr) << width << " x " << height;
        EXPECT_FALSE(image.IsValid());
    }
}

TEST(ImageCreate, ThirtyTwoBitsGiveTwentyFour) {
    CBaseImage image;
    ASSERT_NE(image.Create(10, 10, 32, 0), nullptr);
    EXPECT_EQ(image.GetBpp(), 24);
}

struct DepthCase {
    const char* name;
    int asked, given, entries;
};
void PrintTo(const DepthCase& c, std::ostream* out) {
    *out << c.name;
}
constexpr DepthCase kDepthCases[] = {
    {"NegativeGivesOne", -7, 1, 2},
    {"ZeroGivesOne", 0, 1, 2},
    {"One", 1, 1, 2},
    {"TwoGivesFour", 2, 4, 16},
    {"Four", 4, 4, 16},
    {"FiveGivesEight", 5, 8, 256},
    {"Eight", 8, 8, 256},
    {"NineGivesTwentyFour", 9, 24, 0},
    {"SixteenGivesTwentyFour", 16, 24, 0},
    {"TwentyFour", 24, 24, 0},
};
class ImageDepth : public testing::TestWithParam<DepthCase> {};
TEST_P(ImageDepth, IsRoundedAndSetsThePaletteSize) {
    CBaseImage image;
    ASSERT_NE(image.Create(5, 3, GetParam().asked), nullptr);
    EXPECT_EQ(image.GetBpp(), GetParam().given);
    EXPECT_EQ(image.GetPaletteCount(), GetParam().entries);
    EXPECT_EQ(image.GetPaletteSize(), static_cast<std::uint32_t>(GetParam().entries) * 4);
    EXPECT_EQ(image.GetPalette() == nullptr, GetParam().entries == 0);
}
INSTANTIATE_TEST_SUITE_P(Depths, ImageDepth, testing::ValuesIn(kDepthCases),
                         [](const auto& c) { return std::string(c.param.name); });

TEST(ImageCreate, LaysTheBlockOutAsABitmapFileHoldsIt) {
    CBaseImage image;
    ASSERT_NE(image.Create(5, 3, 4, 77), nullptr);
    // 5 pixels of 4 bits are 20 bits, one word a row; 40 bytes of header, 16 entries.
    EXPECT_EQ(image.GetEffWidth(), 4u);
    EXPECT_EQ(image.GetDibSize(), 40u + 64u + 12u);
    EXPECT_EQ(image.GetBits(0) - image.GetDib(), 104);
    EXPECT_EQ(image.GetBits(2) - image.GetBits(0), 8);
    EXPECT_EQ(reinterpret_cast<std::uint8_t*>(image.GetPalette()) - image.GetDib(), 40);
    EXPECT_EQ(image.GetType(), 77u);
    BitmapHeader header;
    std::memcpy(&header, image.GetDib(), sizeof header);
    EXPECT_EQ(header.size, 40u);
    EXPECT_EQ(header.width, 5);
    EXPECT_EQ(header.height, 3);
    EXPECT_EQ(header.planes, 1);
    EXPECT_EQ(header.bitCount, 4);
    EXPECT_EQ(header.compression, 0u);
    EXPECT_EQ(header.imageSize, 12u);
    EXPECT_EQ(header.colorsUsed, 16u);
    EXPECT_EQ(header.colorsImportant, 0u);
}

TEST(ImageCreate, RowsAreWholeWordsForEveryWidth) {
    for (int bpp : {1, 4, 8, 24})
        for (int width = 1; width <= 70; ++width) {
            CBaseImage image;
            ASSERT_NE(image.Create(width, 2, bpp), nullptr);
            int bytes = 0;
            while (bytes * 8 < width * bpp)
                bytes += 4;
            EXPECT_EQ(image.GetEffWidth(), static_cast<std::uint32_t>(bytes))
                << width << " " << bpp;
        }
}

TEST(ImageCreate, ClearsThePaletteAndTheRowPadding) {
    for (int bpp : {1, 4, 8, 24})
        for (int round = 0; round < 3; ++round) {  // memory that was used before
            CBaseImage image;
            ASSERT_NE(image.Create(9, 4, bpp), nullptr);
            for (int i = 0; i < image.GetPaletteCount(); ++i)
                EXPECT_EQ(image.GetPalette()[i], PaletteEntry{});
            const std::uint32_t used = (9u * static_cast<std::uint32_t>(bpp) + 7) / 8;
            for (int y = 0; y < 4; ++y)
                for (std::uint32_t x = used; x < image.GetEffWidth(); ++x)
                    EXPECT_EQ(image.GetBits(y)[x], 0) << bpp << " bits, row " << y;
            image.Clear(255);
            std::memset(image.GetBits(), 0xEE, image.GetHeader().imageSize);
        }
}

TEST(ImageCreate, RefusesABlockAboveTwoGigabytesBeforeAnythingOverflows) {
    struct {
        int width, height, bpp;
    } const sizes[] = {{INT_MAX, INT_MAX, 24}, {INT_MAX, INT_MAX, 1}, {65536, 65536, 8},
                       {40000, 20000, 24},     {1, INT_MAX, 1},       {INT_MAX, 1, 8}};
    for (const auto& [width, height, bpp] : sizes) {
        CBaseImage image = test::Filled(4, 4, 8, 3);
        EXPECT_EQ(image.Create(width, height, bpp), nullptr) << width << " x " << height;
        EXPECT_STREQ(image.GetLastError(), "CBaseImage::Create can't allocate memory");
        EXPECT_FALSE(image.IsValid());
        EXPECT_EQ(image.GetWidth(), 0);
    }
}

TEST(ImageCreate, TellsOfMemoryThatRanOutWithoutNeedingAny) {
    CBaseImage image = test::Filled(4, 4, 8, 3);
    {
        const test::FailAllocation fail(1);
        EXPECT_EQ(image.Create(5, 5, 8), nullptr);
        EXPECT_TRUE(fail.Happened());
    }
    EXPECT_STREQ(image.GetLastError(), "CBaseImage::Create can't allocate memory");
    EXPECT_FALSE(image.IsValid());
    EXPECT_NE(image.Create(5, 5, 8), nullptr) << "the image can be used again";
}

TEST(ImageCreate, KeepsResolutionAndFields) {
    CBaseImage image;
    image.SetXDpi(300);
    image.SetYDpi(200);
    image.Fields().quality = 71;
    ASSERT_NE(image.Create(5, 5, 8), nullptr);
    EXPECT_EQ(image.GetXDpi(), 300);
    EXPECT_EQ(image.GetYDpi(), 200);
    EXPECT_EQ(image.Fields().quality, 71);
    EXPECT_EQ(image.GetHeader().xPixelsPerMeter, 11811);
    EXPECT_EQ(image.GetHeader().yPixelsPerMeter, 7874);
}

TEST(ImageCreate, AnAlphaPlaneThatExistsTakesTheNewSizeOpaque) {
    CBaseImage image = test::Filled(3, 3, 24, 3);
    ASSERT_TRUE(image.CreateAlpha());
    std::memset(image.GetAlpha(), 7, 9);
    ASSERT_NE(image.Create(20, 10, 8), nullptr);
    ASSERT_NE(image.GetAlpha(), nullptr);
    for (int i = 0; i < 200; ++i)
        ASSERT_EQ(image.GetAlpha()[i], 255);
}

TEST(ImageFields, HaveTheirDefaults) {
    const CBaseImage image;
    const ImageFields& fields = image.Fields();
    EXPECT_EQ(fields.quality, 90);
    EXPECT_EQ(fields.backgroundIndex, -1);
    EXPECT_EQ(fields.xDpi, 96);
    EXPECT_EQ(fields.yDpi, 96);
    EXPECT_EQ(image.RareFields().alphaMax, 255);
    EXPECT_EQ(image.RareFields().enabled, 1);
    EXPECT_STREQ(image.GetLastError(), "");
    EXPECT_STREQ(CBaseImage::GetVersion(), "CBaseImage 5.99c");
}

TEST(ImageFields, AnImageIsSmallToMove) {
    EXPECT_LE(sizeof(CBaseImage), 160u);
}

TEST(ImageFields, RareOnesGoAlongWithCopiesMovesAndGhosts) {
    CBaseImage image = test::Filled(3, 3, 8, 1);
    RareImageFields* rare = image.MakeRareFields();
    ASSERT_NE(rare, nullptr);
    rare->flags = 7;
    rare->codecOption[5] = 9;
    rare->lastColorValid = 1;
    CBaseImage copy = image;
    EXPECT_EQ(copy.RareFields().flags, 7u);
    EXPECT_EQ(copy.RareFields().codecOption[5], 9u);
    copy.MakeRareFields()->flags = 8;
    EXPECT_EQ(image.RareFields().flags, 7u) << "a copy has its own";
    CBaseImage ghost, info;
    ghost.Ghost(image);
    EXPECT_EQ(ghost.RareFields().flags, 7u);
    EXPECT_EQ(CBaseImage(ghost).RareFields().flags, 7u);
    ghost.MakeRareFields()->frame = 3;
    EXPECT_EQ(ghost.RareFields().flags, 7u);
    EXPECT_EQ(image.RareFields().frame, 0) << "and so has a ghost";
    EXPECT_TRUE(info.CopyInfo(image));
    EXPECT_EQ(info.RareFields().flags, 7u);
    image.SetGrayPalette();
    EXPECT_EQ(image.RareFields().lastColorValid, 0) << "the palette is new";
    const CBaseImage moved = std::move(image);
    EXPECT_EQ(moved.RareFields().flags, 7u);
    CBaseImage plain = test::Filled(2, 2, 8, 0);
    copy = plain;
    EXPECT_EQ(copy.RareFields().flags, 0u) << "the defaults are copied too";
}

TEST(ImageResolution, ValueBelowOneSets96) {
    CBaseImage image = test::Filled(2, 2, 8, 0);
    image.SetXDpi(300);
    image.SetXDpi(0);
    EXPECT_EQ(image.GetXDpi(), 96);
    image.SetYDpi(-5);
    EXPECT_EQ(image.GetYDpi(), 96);
    EXPECT_EQ(image.GetHeader().xPixelsPerMeter, 3780);  // 3779.53
}

TEST(ImageResolution, SetsRoundedPixelsPerMeterInObjectAndBlock) {
    struct {
        int dpi, perMeter;
    } const cases[] = {{1, 39}, {72, 2835}, {150, 5906}, {300, 11811}, {600, 23622}};
    for (const auto& c : cases) {
        CBaseImage image = test::Filled(2, 2, 8, 0);
        image.SetXDpi(c.dpi);
        image.SetYDpi(c.dpi);
        BitmapHeader header;
        std::memcpy(&header, image.GetDib(), sizeof header);
        EXPECT_EQ(header.xPixelsPerMeter, c.perMeter);
        EXPECT_EQ(header.yPixelsPerMeter, c.perMeter);
        EXPECT_EQ(image.GetHeader().xPixelsPerMeter, c.perMeter);
    }
}

TEST(ImageResolution, HugeValueIsLimitedInTheHeader) {
    CBaseImage image;
    image.SetXDpi(INT_MAX);
    EXPECT_EQ(image.GetXDpi(), INT_MAX);
    EXPECT_EQ(image.GetHeader().xPixelsPerMeter, INT_MAX);
}

TEST(ImageRows, RowZeroIsTheBottomRowAndRowsOutsideAreNull) {
    CBaseImage image = test::FromRows({{1, 2}, {3, 4}, {5, 6}});
    EXPECT_EQ(image.GetBits(0)[0], 5);
    EXPECT_EQ(image.GetBits(2)[1], 2);
    EXPECT_EQ(image.GetBits(3), nullptr);
    EXPECT_EQ(image.GetBits(-1), nullptr);
    EXPECT_EQ(image.GetBits(INT_MAX), nullptr);
}

TEST(ImageRows, ViewsShowStoredRowsAndTheirUpsideDown) {
    CBaseImage image = test::FromRows({{1, 2, 3}, {4, 5, 6}});
    EXPECT_EQ(ViewOf(image).Row(0)[0], 4);
    EXPECT_EQ(TopDownViewOf(image).Row(0)[2], 3);
    EXPECT_EQ(TopDownViewOf(image).Row(1)[0], 4);
    const CBaseImage color = test::Filled(3, 2, 24, 9);
    EXPECT_EQ(ViewOf(color).channels, 3);
    EXPECT_EQ(ViewOf(color).Row(1).size(), 9u);
    EXPECT_EQ(ViewOf(test::Filled(3, 2, 1, 0)).height, 0);
    EXPECT_EQ(TopDownViewOf(CBaseImage()).height, 0);
}

TEST(ImagePalette, GrayRampStepsBy255OverCountLessOne) {
    struct {
        int bpp, step;
    } const cases[] = {{1, 255}, {4, 17}, {8, 1}};
    for (const auto& c : cases) {
        CBaseImage image;
        ASSERT_NE(image.Create(3, 3, c.bpp), nullptr);
        image.SetGrayPalette();
        for (int i = 0; i < image.GetPaletteCount(); ++i) {
            const auto level = static_cast<std::uint8_t>(i * c.step);
            EXPECT_EQ(image.GetPalette()[i], (PaletteEntry{level, level, level, 0}));
        }
    }
    CBaseImage empty;
    empty.SetGrayPalette();  // nothing to set
    EXPECT_FALSE(empty.IsValid());
}

TEST(ImagePalette, OneEntryOffTheRampIsNoGrayScale) {
    CBaseImage image = test::Filled(3, 3, 8, 1);
    EXPECT_TRUE(image.IsGrayScale());
    for (int at : {0, 17, 255})
        for (int channel = 0; channel < 3; ++channel) {
            CBaseImage other = image;
            PaletteEntry& entry = other.GetPalette()[at];
            (channel == 0 ? entry.blue : channel == 1 ? entry.green : entry.red) ^= 1;
            EXPECT_FALSE(other.IsGrayScale()) << at << ", channel " << channel;
        }
    EXPECT_FALSE(test::Filled(3, 3, 4, 1).IsGrayScale());
    EXPECT_FALSE(test::Filled(3, 3, 24, 1).IsGrayScale());
    EXPECT_FALSE(CBaseImage().IsGrayScale());
}

TEST(ImagePalette, BlackAndWhiteInEitherOrderIsBw) {
    CBaseImage image = test::Filled(3, 3, 1, 1);
    EXPECT_TRUE(image.IsBW());
    test::SetPalette(image, {{255, 255, 255}, {0, 0, 0}});
    EXPECT_TRUE(image.IsBW());
    test::SetPalette(image, {{255, 255, 255}, {0, 0, 1}});
    EXPECT_FALSE(image.IsBW());
    test::SetPalette(image, {{0, 0, 0}, {0, 0, 0}});
    EXPECT_FALSE(image.IsBW());
    EXPECT_FALSE(test::Filled(3, 3, 8, 1).IsBW());
    EXPECT_FALSE(CBaseImage().IsBW());
}

TEST(ImageClear, FillsEachDepthInItsOwnWay) {
    struct {
        int bpp;
        std::uint8_t value, byte;
    } const cases[] = {{1, 1, 255},     {1, 0, 0},     {1, 128, 255}, {4, 5, 0x55},
                       {4, 0xA3, 0x33}, {8, 200, 200}, {24, 17, 17}};
    for (const auto& c : cases) {
        CBaseImage image = test::Filled(8, 3, c.bpp, 0);
        image.Clear(c.value);
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 8 * c.bpp / 8; ++x)
                EXPECT_EQ(image.GetBits(y)[x], c.byte) << c.bpp << " bits";
    }
    CBaseImage empty;
    empty.Clear(1);
    EXPECT_FALSE(empty.IsValid());
}

TEST(ImageDestroy, FreesAllAndMayRunAgain) {
    CBaseImage image = test::Filled(3, 3, 8, 1);
    ASSERT_TRUE(image.CreateAlpha());
    ASSERT_TRUE(image.CreateSelection());
    ASSERT_TRUE(image.AddLayer(std::make_unique<CBaseImage>(image)));
    EXPECT_TRUE(image.Destroy());
    EXPECT_FALSE(image.IsValid());
    EXPECT_EQ(image.GetAlpha(), nullptr);
    EXPECT_EQ(image.GetSelection(), nullptr);
    EXPECT_EQ(image.GetLayerCount(), 0);
    EXPECT_EQ(image.GetWidth(), 0);
    EXPECT_TRUE(image.Destroy());
}

TEST(EmptyImage, EveryOperationRefusesAndChangesNothing) {
    CBaseImage image;
    EXPECT_FALSE(image.CropInPlace(0, 0, 0, 0));
    EXPECT_FALSE(image.CropInPlace(1, 1, 1, 1));
    EXPECT_FALSE(image.Rotate90(true));
    EXPECT_FALSE(image.Flip(FlipMode::kFlip));
    EXPECT_FALSE(image.IncreaseBpp24());
    EXPECT_FALSE(image.CreateAlpha());
    EXPECT_FALSE(image.CreateSelection());
    CBaseImage other;
    EXPECT_FALSE(image.TakePixels(other));
    EXPECT_FALSE(image.IsValid());
    EXPECT_EQ(image.GetWidth(), 0);
}

}  // namespace
}  // namespace velloran
