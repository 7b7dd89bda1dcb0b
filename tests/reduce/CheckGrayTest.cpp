#include "reduce/CheckGray.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "core/DibImage.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"

namespace velloran {
namespace {

using test::Rgb;

constexpr int kAllModes[] = {kGrayTolerant, kGrayStrict, kGrayOff};

void ExpectGray(const CBaseImage& image) {
    EXPECT_EQ(image.GetBpp(), 8);
    EXPECT_TRUE(image.IsGrayScale());
}

void SetEntry(CBaseImage& image, int index, Rgb c) {
    image.GetPalette()[index] = {static_cast<std::uint8_t>(c.blue),
                                 static_cast<std::uint8_t>(c.green),
                                 static_cast<std::uint8_t>(c.red), 0};
}

TEST(CheckGray, AnEmptyImageIsRefused) {
    for (int mode : kAllModes) {
        CDibImage image;
        EXPECT_EQ(CheckGray(image, mode), 0);
        EXPECT_FALSE(image.IsValid());
    }
}

TEST(CheckGray, AColoredPaletteOfWhichOnlyGrayEntriesAreUsedCountsAsGray) {
    for (int mode : kAllModes) {
        CDibImage image = test::FromRows({{0, 1, 2}, {2, 1, 0}});
        for (int i = 3; i < 256; ++i)
            SetEntry(image, i, {255, i, 0});
        test::SetPalette(image, {{7, 7, 7}, {90, 90, 90}, {200, 200, 200}});
        EXPECT_NE(CheckGray(image, mode), 0);
        ExpectGray(image);
        EXPECT_EQ(test::IndexAt(image, 0, 0), 7);
        EXPECT_EQ(test::IndexAt(image, 1, 1), 90);
        EXPECT_EQ(test::IndexAt(image, 2, 0), 200);
    }
}

TEST(CheckGray, ModeOffLeavesAGrayScanOf24BitsAlone) {
    CDibImage image = test::Filled(40, 30, 24, 77);
    const CDibImage before = image;
    EXPECT_NE(CheckGray(image, kGrayOff), 0);
    test::ExpectSamePixels(image, before);
}

TEST(CheckGray, ModeOffTurnsABlackAndWhiteFileIntoEightBitGray) {
    for (int mode : kAllModes)
        for (bool blackFirst : {true, false}) {
            CDibImage image = test::Noise(13, 5, 1);
            if (!blackFirst)
                test::SetPalette(image, {{255, 255, 255}, {0, 0, 0}});
            const CDibImage before = image;
            EXPECT_NE(CheckGray(image, mode), 0);
            ExpectGray(image);
            for (int y = 0; y < 5; ++y)
                for (int x = 0; x < 13; ++x)
                    EXPECT_EQ(test::PixelAt(image, x, y), test::PixelAt(before, x, y));
        }
}

TEST(CheckGray, AGrayScanOf24BitsBecomesGray) {
    for (int mode : {kGrayTolerant, kGrayStrict}) {
        CDibImage image = test::Filled(40, 30, 24, 77);
        EXPECT_NE(CheckGray(image, mode), 0);
        ExpectGray(image);
        EXPECT_EQ(test::IndexAt(image, 39, 29), 77);
    }
}

TEST(CheckGray, AColorScanStays) {
    for (int mode : kAllModes) {
        CDibImage image = test::Noise(20, 20, 24);
        const CDibImage before = image;
        EXPECT_NE(CheckGray(image, mode), 0);
        test::ExpectSamePixels(image, before);
    }
}

TEST(CheckGray, AColoredPalettePictureIsWidenedTo24Bits) {
    for (int mode : kAllModes)
        for (int bpp : {1, 4, 8}) {
            CDibImage image = test::Noise(9, 6, bpp);
            for (int i = 0; i < image.GetPaletteCount(); ++i)
                SetEntry(image, i, {i, 255 - i, 30});
            const CDibImage before = image;
            EXPECT_NE(CheckGray(image, mode), 0);
            ASSERT_EQ(image.GetBpp(), 24);
            for (int y = 0; y < 6; ++y)
                for (int x = 0; x < 9; ++x)
                    EXPECT_EQ(test::PixelAt(image, x, y), test::PixelAt(before, x, y));
        }
}

TEST(CheckGray, AOneBitPictureThatUsesItsGrayEntryOnlyIsGray) {
    CDibImage image = test::Filled(9, 3, 1, 0);
    test::SetPalette(image, {{40, 40, 40}, {255, 0, 0}});
    EXPECT_NE(CheckGray(image, kGrayStrict), 0);
    ExpectGray(image);
    EXPECT_EQ(test::IndexAt(image, 4, 1), 40);
}

TEST(CheckGray, PaletteGraysTakeTheirOwnWeights) {
    CDibImage image = test::Filled(3, 3, 8, 5);
    SetEntry(image, 5, {100, 105, 103});
    EXPECT_NE(CheckGray(image, kGrayTolerant), 0);
    ExpectGray(image);
    // 306 * 100 + 601 * 105 + 117 * 103 = 105756, which is 103.27 * 1024
    EXPECT_EQ(test::IndexAt(image, 1, 1), 103);
}

TEST(CheckGray, TwentyFourBitGraysTakeTheirOwnWeights) {
    CDibImage image = test::FromRows({{100, 105, 103, 10, 5, 5}}, 3);
    EXPECT_NE(CheckGray(image, kGrayTolerant), 0);
    ExpectGray(image);
    EXPECT_EQ(test::IndexAt(image, 0, 0), 103);  // 29.9 + 61.635 + 11.742 = 103.277
    EXPECT_EQ(test::IndexAt(image, 1, 0), 6);    // 6.495
}

TEST(CheckGray, GrayRampStaysAsItIs) {
    for (int mode : kAllModes) {
        CDibImage image = test::Noise(17, 5, 8);
        const std::uint8_t* block = image.GetDib();
        const CDibImage before = image;
        EXPECT_NE(CheckGray(image, mode), 0);
        EXPECT_EQ(image.GetDib(), block);
        test::ExpectSamePixels(image, before);
    }
}

TEST(CheckGray, AModeOutsideTheListJudgesNothing) {
    for (int mode : {-1, 3, 1000}) {
        CDibImage image = test::Filled(4, 4, 24, 9);
        EXPECT_NE(CheckGray(image, mode), 0);
        EXPECT_EQ(image.GetBpp(), 24);
    }
}

TEST(CheckGray, KeepsSourceRecordAndResolution) {
    for (int bpp : {1, 8, 24}) {
        CDibImage image = test::Filled(6, 6, bpp, 1);
        if (bpp == 8)
            SetEntry(image, 1, {50, 52, 50});
        image.SetXDpi(300);
        image.SetYDpi(200);
        image.Source() = {24, 1, "scan.jpg", 1};
        ASSERT_TRUE(image.CreateAlpha());
        image.GetAlpha()[3] = 8;
        EXPECT_NE(CheckGray(image, kGrayTolerant), 0);
        ExpectGray(image);
        EXPECT_EQ(image.GetXDpi(), 300);
        EXPECT_EQ(image.GetYDpi(), 200);
        EXPECT_EQ(image.Source().sourceColours, 24u);
        EXPECT_EQ(image.Source().sourceName, "scan.jpg");
        ASSERT_NE(image.GetAlpha(), nullptr);
        EXPECT_EQ(image.GetAlpha()[3], 8);
    }
}

TEST(CheckGray, UnchangedWithoutMemory) {
    for (int bpp : {1, 4, 24}) {
        CDibImage image = test::Filled(6, 6, bpp, 1);
        const CDibImage before = image;
        int result;
        {
            const test::FailAllocation fail(1);
            result = CheckGray(image, kGrayTolerant);
        }
        EXPECT_EQ(result, 0) << bpp;
        test::ExpectSamePixels(image, before);
    }
}

struct PixelCase {
    const char* name;
    Rgb color;
    bool tolerant, strict;
};
void PrintTo(const PixelCase& c, std::ostream* out) {
    *out << c.name;
}
constexpr PixelCase kPixelCases[] = {
    {"EqualChannels", {90, 90, 90}, true, true},
    {"OneApart", {90, 91, 90}, true, false},
    {"RedFiveAbove", {95, 90, 90}, true, false},
    {"RedSixAbove", {96, 90, 90}, false, false},
    {"GreenFiveBelow", {90, 85, 90}, true, false},
    {"GreenSixBelow", {90, 84, 90}, false, false},
    {"BlueFiveAbove", {90, 90, 95}, true, false},
    {"BlueSixAbove", {90, 90, 96}, false, false},
    {"RedAgainstBlueSixApart", {87, 90, 93}, false, false},
    {"FarApart", {255, 0, 0}, false, false},
};
class GrayTest : public testing::TestWithParam<PixelCase> {};

TEST_P(GrayTest, FindsOnePixelAnywhereInARow) {
    for (int width : {1, 2, 3, 5, 16, 17, 63, 64, 65, 66, 128, 129, 200})
        for (int x : {0, 1, width / 2, width - 2, width - 1}) {
            if (x < 0 || x >= width)
                continue;
            CDibImage image = test::Filled(width, 3, 24, 200);
            test::SetPixel(image, x, 1, GetParam().color);
            EXPECT_EQ(IsGrayWithin(image, 5), GetParam().tolerant) << x << " of " << width;
            EXPECT_EQ(IsGrayWithin(image, 0), GetParam().strict) << x << " of " << width;
        }
}

TEST_P(GrayTest, FindsOnePaletteEntry) {
    for (int bpp : {1, 4, 8}) {
        CDibImage image = test::Filled(7, 3, bpp, 0);
        SetEntry(image, 1, GetParam().color);
        test::SetIndex(image, 6, 0, 1);
        EXPECT_EQ(IsGrayWithin(image, 5), GetParam().tolerant) << bpp;
        EXPECT_EQ(IsGrayWithin(image, 0), GetParam().strict) << bpp;
    }
}
INSTANTIATE_TEST_SUITE_P(Colors, GrayTest, testing::ValuesIn(kPixelCases),
                         [](const auto& c) { return std::string(c.param.name); });

TEST(GrayTest, NeighbouringPixelsAreNotCompared) {
    for (int width = 1; width <= 140; ++width) {
        CDibImage image = test::Filled(width, 1, 24, 0);
        for (int x = 1; x < width; x += 2)
            test::SetPixel(image, x, 0, {255, 255, 255});
        EXPECT_TRUE(IsGrayWithin(image, 0)) << width;
    }
}

TEST(GrayTest, AgreesWithThePlainTestOnNoise) {
    for (int amplitude : {4, 5, 6, 7, 8})
        for (std::uint32_t seed = 1; seed <= 20; ++seed) {
            CDibImage image = test::Noise(150, 2, 24, seed);
            bool gray = true;
            for (int y = 0; y < 2; ++y)
                for (int x = 0; x < 150; ++x) {
                    const Rgb noise = test::PixelAt(image, x, y);
                    const Rgb c{100 + noise.red * (amplitude) / 256,
                                100 + noise.green * amplitude / 256,
                                100 + noise.blue * amplitude / 256};
                    test::SetPixel(image, x, y, c);
                    gray = gray && std::abs(c.red - c.green) <= 5 &&
                           std::abs(c.green - c.blue) <= 5 && std::abs(c.blue - c.red) <= 5;
                }
            EXPECT_EQ(IsGrayWithin(image, 5), gray) << amplitude << ", " << seed;
        }
}

TEST(GrayTest, AllocatesNothing) {
    const CDibImage image = test::Filled(300, 20, 24, 200);
    const test::FailAllocation fail(1);
    EXPECT_TRUE(IsGrayWithin(image, 5));
    EXPECT_FALSE(fail.Happened());
}

}  // namespace
}  // namespace velloran
