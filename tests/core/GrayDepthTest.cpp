#include "core/GrayDepth.h"

#include <gtest/gtest.h>

#include <cstring>

#include "core/DibImage.h"
#include "core/GrayRows.h"
#include "support/EachForm.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"

namespace velloran {
namespace {

using test::Rgb;

/// Grey of a palette entry, from the weights as they are written down.
int PaletteGray(Rgb c) {
    return (601 * c.green + 306 * c.red + 117 * c.blue) / 1024;
}

void ExpectGray(const CBaseImage& image) {
    EXPECT_EQ(image.GetBpp(), 8);
    EXPECT_TRUE(image.IsGrayScale());
}

TEST(EnsureGrayOrRgb, RefusesAnEmptyImage) {
    CDibImage image;
    EXPECT_EQ(EnsureGrayOrRgb(image), 0);
    EXPECT_FALSE(image.IsValid());
}

TEST(EnsureGrayOrRgb, ColorAndGrayRampStayAsTheyAre) {
    for (int bpp : {8, 24}) {
        CDibImage image = test::Noise(9, 5, bpp);
        const CDibImage before = image;
        const std::uint8_t* block = image.GetDib();
        EXPECT_NE(EnsureGrayOrRgb(image), 0);
        EXPECT_EQ(image.GetDib(), block);
        test::ExpectSamePixels(image, before);
    }
}

TEST(EnsureGrayOrRgb, BlackAndWhiteBecomesZeroAnd255InEitherOrder) {
    for (bool blackFirst : {true, false})
        for (int width = 1; width <= 17; ++width) {
            CDibImage image = test::Noise(width, 5, 1);
            if (!blackFirst)
                test::SetPalette(image, {{255, 255, 255}, {0, 0, 0}});
            const CDibImage before = image;
            ASSERT_NE(EnsureGrayOrRgb(image), 0);
            ExpectGray(image);
            for (int y = 0; y < 5; ++y)
                for (int x = 0; x < width; ++x)
                    EXPECT_EQ(test::IndexAt(image, x, y),
                              (test::IndexAt(before, x, y) == 1) == blackFirst ? 255 : 0);
        }
}

TEST(EnsureGrayOrRgb, OneBitOfTwoNearGraysBecomesGray) {
    CDibImage image = test::Noise(10, 3, 1);
    test::SetPalette(image, {{20, 24, 22}, {200, 200, 204}});  // differences of 4 at most
    const CDibImage before = image;
    ASSERT_NE(EnsureGrayOrRgb(image), 0);
    ExpectGray(image);
    EXPECT_EQ(test::IndexAt(image, 0, 0), PaletteGray(test::PixelAt(before, 0, 0)));
}

TEST(EnsureGrayOrRgb, OneBitWithAColoredEntryBecomesColorEvenIfUnused) {
    CDibImage image = test::Filled(10, 3, 1, 0);
    test::SetPalette(image, {{20, 20, 20}, {200, 205, 200}});
    ASSERT_NE(EnsureGrayOrRgb(image), 0);
    EXPECT_EQ(image.GetBpp(), 24);
    EXPECT_EQ(test::PixelAt(image, 3, 1), (Rgb{20, 20, 20}));
}

struct ToleranceCase {
    const char* name;
    Rgb entry;
    bool gray;
};
void PrintTo(const ToleranceCase& c, std::ostream* out) {
    *out << c.name;
}
constexpr ToleranceCase kToleranceCases[] = {
    {"FourApartIsGray", {100, 104, 100}, true},
    {"GreenAgainstRedFiveApartIsNot", {100, 105, 102}, false},
    {"RedAgainstBlueFiveApartIsNot", {105, 102, 100}, false},
    {"GreenAgainstBlueFiveApartIsNot", {102, 100, 105}, false},
    {"NegativeDifferencesCountToo", {250, 246, 246}, true},
};
class EnsureGrayTolerance : public testing::TestWithParam<ToleranceCase> {};
TEST_P(EnsureGrayTolerance, DecidesOnUsedEntriesOnly) {
    for (int bpp : {4, 8}) {
        CDibImage image = test::Filled(7, 5, bpp, 3);
        image.GetPalette()[9] = {1, 200, 7, 0};  // coloured, and no pixel uses it
        const Rgb entry = GetParam().entry;
        image.GetPalette()[3] = {static_cast<std::uint8_t>(entry.blue),
                                 static_cast<std::uint8_t>(entry.green),
                                 static_cast<std::uint8_t>(entry.red), 0};
        ASSERT_NE(EnsureGrayOrRgb(image), 0);
        EXPECT_EQ(image.GetBpp(), GetParam().gray ? 8 : 24);
        if (GetParam().gray) {
            ExpectGray(image);
            EXPECT_EQ(test::IndexAt(image, 6, 4), PaletteGray(entry));
        } else {
            EXPECT_EQ(test::PixelAt(image, 6, 4), entry);
        }
    }
}
INSTANTIATE_TEST_SUITE_P(Entries, EnsureGrayTolerance, testing::ValuesIn(kToleranceCases),
                         [](const auto& c) { return std::string(c.param.name); });

TEST(EnsureGrayOrRgb, OneColoredPixelAnywhereMakesColor) {
    for (int bpp : {4, 8})
        for (int width = 1; width <= 17; ++width)
            for (int x : {0, width / 2, width - 1}) {
                CDibImage image = test::Filled(width, 3, bpp, 2);
                image.GetPalette()[9] = {1, 200, 7, 0};
                test::SetIndex(image, x, 1, 9);
                ASSERT_NE(EnsureGrayOrRgb(image), 0);
                EXPECT_EQ(image.GetBpp(), 24) << bpp << " bits, " << width << " wide, at " << x;
            }
}

TEST(EnsureGrayOrRgb, PaddingNibbleDoesNotCountAsAPixel) {
    CDibImage image = test::Filled(3, 1, 4, 2);
    image.GetPalette()[9] = {1, 200, 7, 0};
    image.GetBits(0)[1] = 0x29;  // pixel 2, then a nibble behind the row
    ASSERT_NE(EnsureGrayOrRgb(image), 0);
    ExpectGray(image);
}

TEST(EnsureGrayOrRgb, EveryWidthMapsEveryPixelThroughThePalette) {
    for (int bpp : {1, 4, 8})
        for (int width = 1; width <= 17; ++width) {
            CDibImage image = test::Noise(width, 3, bpp);
            for (int i = 0; i < image.GetPaletteCount(); ++i) {
                const auto level = static_cast<std::uint8_t>(250 - i * 3 % 250);
                image.GetPalette()[i] = {level, static_cast<std::uint8_t>(level + 4), level, 0};
            }
            const CDibImage before = image;
            ASSERT_NE(EnsureGrayOrRgb(image), 0);
            ExpectGray(image);
            for (int y = 0; y < 3; ++y)
                for (int x = 0; x < width; ++x)
                    EXPECT_EQ(test::IndexAt(image, x, y), PaletteGray(test::PixelAt(before, x, y)));
        }
}

TEST(EnsureGrayOrRgb, KeepsSourceRecordResolutionPlanesAndFields) {
    for (int bpp : {1, 4, 8}) {
        CDibImage image = test::Noise(9, 4, bpp);
        test::SetPalette(image, {{0, 0, 0}, {250, 250, 251}});
        ASSERT_TRUE(image.CreateAlpha());
        image.GetAlpha()[7] = 12;
        image.SetXDpi(300);
        image.SetYDpi(200);
        image.Fields().quality = 31;
        image.Source() = {4, 1, "a.bmp", 4};
        ASSERT_NE(EnsureGrayOrRgb(image), 0);
        ExpectGray(image);
        ASSERT_NE(image.GetAlpha(), nullptr);
        EXPECT_EQ(image.GetAlpha()[7], 12);
        EXPECT_EQ(image.GetXDpi(), 300);
        EXPECT_EQ(image.GetYDpi(), 200);
        EXPECT_EQ(image.GetHeader().yPixelsPerMeter, 7874);
        EXPECT_EQ(image.Fields().quality, 31);
        EXPECT_EQ(image.Source().sourceColours, 4u);
        EXPECT_EQ(image.Source().sourceName, "a.bmp");
    }
}

TEST(EnsureGrayOrRgb, TransparentIndexFollowsItsGray) {
    CDibImage image = test::FromRows({{0, 1, 2}});
    test::SetPalette(image, {{10, 10, 10}, {90, 90, 90}, {200, 200, 201}});
    image.Fields().backgroundIndex = 2;
    ASSERT_NE(EnsureGrayOrRgb(image), 0);
    EXPECT_EQ(image.Fields().backgroundIndex, 200);
    EXPECT_EQ(test::IndexAt(image, 2, 0), 200);
}

TEST(EnsureGrayOrRgb, TransparentIndexGoesWhereAnotherUsedEntryHasItsGray) {
    CDibImage image = test::FromRows({{0, 1, 2}});
    test::SetPalette(image, {{10, 10, 10}, {90, 90, 90}, {90, 90, 90}});
    image.Fields().backgroundIndex = 2;
    ASSERT_NE(EnsureGrayOrRgb(image), 0);
    EXPECT_EQ(image.Fields().backgroundIndex, -1);
    EXPECT_EQ(image.Fields().backgroundColor.red, 90);
}

TEST(EnsureGrayOrRgb, UnchangedWithoutMemory) {
    for (int bpp : {1, 4}) {
        CDibImage image = test::Noise(9, 4, bpp);
        const CDibImage before = image;
        int result;
        {
            const test::FailAllocation fail(1);
            result = EnsureGrayOrRgb(image);
        }
        EXPECT_EQ(result, 0);
        test::ExpectSamePixels(image, before);
    }
}

TEST(EnsureGrayOrRgb, RefusesAGhostThatWouldHaveToChange) {
    CDibImage owner = test::Noise(9, 4, 4), ghost;
    ghost.Ghost(owner);
    EXPECT_EQ(EnsureGrayOrRgb(ghost), 0);
    EXPECT_EQ(owner.GetBpp(), 4);
}

TEST(ConvertToGray, ColorTakesItsWeightsRoundedHalfUp) {
    CDibImage image = test::FromRows(
        {{255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255}, {0, 0, 0, 5, 0, 0, 0, 1, 0, 50, 60, 70}},
        3);
    ASSERT_NE(ConvertToGray(image), 0);
    ExpectGray(image);
    // 76.245, 149.685, 29.07, 255; 0, 1.495, 0.587, 58.15
    const int expected[2][4] = {{76, 150, 29, 255}, {0, 1, 1, 58}};
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 4; ++x)
            EXPECT_EQ(test::IndexAt(image, x, y), expected[y][x]);
}

TEST(ConvertToGray, ColorOfEverySizeAgreesWithThePlainSum) {
    for (int width : {1, 2, 3, 5, 16, 17, 400})
        for (int height : {1, 2, 301}) {
            const CDibImage before = test::Noise(width, height, 24);
            CDibImage image = before;
            ASSERT_NE(ConvertToGray(image), 0);
            int wrong = 0;
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x) {
                    const Rgb c = test::PixelAt(before, x, y);
                    const long thousands = 299L * c.red + 587L * c.green + 114L * c.blue;
                    const long expected = thousands / 1000 + (thousands % 1000 >= 500 ? 1 : 0);
                    wrong += test::IndexAt(image, x, y) != expected;
                }
            EXPECT_EQ(wrong, 0) << width << " x " << height;
        }
}

TEST(GrayOfColors, IsTheRoundedSumForEveryColorInEachForm) {
    test::InEachForm([](const std::string&) {
        std::vector<std::uint8_t> pixels(3 * 256 * 256), gray(256 * 256);
        long wrong = 0;
        for (int red = 0; red < 256; ++red) {
            for (int i = 0; i < 256 * 256; ++i) {
                pixels[std::size_t(3 * i)] = std::uint8_t(i);
                pixels[std::size_t(3 * i + 1)] = std::uint8_t(i >> 8);
                pixels[std::size_t(3 * i + 2)] = std::uint8_t(red);
            }
            GrayOfColors(pixels.data(), 256 * 256, gray.data());
            for (int i = 0; i < 256 * 256; ++i)
                wrong += gray[std::size_t(i)] !=
                         (299 * red + 587 * (i >> 8) + 114 * (i & 255) + 500) / 1000;
        }
        EXPECT_EQ(wrong, 0);
    });
}

TEST(GrayOfColors, AnyCountOfPixelsIsDoneAndNoMore) {
    const std::vector<std::uint8_t> pixels(3 * 70, 200);
    for (int count = 0; count <= 70; ++count) {
        std::vector<std::uint8_t> gray(71, 7);
        GrayOfColors(pixels.data(), count, gray.data());
        for (int i = 0; i <= 70; ++i)
            ASSERT_EQ(gray[std::size_t(i)], i < count ? 200 : 7) << count;
    }
}

TEST(ConvertToGray, UnchangedWithoutMemory) {
    CDibImage image = test::Noise(9, 4, 24);
    const CDibImage before = image;
    int result;
    {
        const test::FailAllocation fail(1);
        result = ConvertToGray(image);
    }
    EXPECT_EQ(result, 0);
    test::ExpectSamePixels(image, before);
    CDibImage empty;
    EXPECT_EQ(ConvertToGray(empty), 0);
    EXPECT_EQ(ConvertToRgb(empty), 0);
}

TEST(UsesOnlyGrayEntries, TellsBelowTheTolerance) {
    CDibImage image = test::Filled(3, 3, 8, 3);
    EXPECT_TRUE(UsesOnlyGrayEntries(image, 1));
    image.GetPalette()[3] = {10, 10, 15, 0};
    EXPECT_FALSE(UsesOnlyGrayEntries(image, 5));
    EXPECT_TRUE(UsesOnlyGrayEntries(image, 6));
    EXPECT_FALSE(UsesOnlyGrayEntries(test::Filled(3, 3, 24, 3), 6)) << "no palette";
}

}  // namespace
}  // namespace velloran
