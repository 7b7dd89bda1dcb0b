#include "reduce/DecreaseBpp.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <set>
#include <string>

#include "support/Images.h"

namespace velloran {
namespace {

using test::Rgb;

constexpr int kMakers[] = {0, 1, 2, 3, 4};

DecreaseBppRequest Request(int color) {
    DecreaseBppRequest request;
    request.color = color;
    return request;
}

/// A row-wise picture of `count` distinct colours, each at least once.
CDibImage ColoredPage(int width, int height, int count) {
    CDibImage image = test::Filled(width, height, 24, 0);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int i = (y * width + x) % count;
            test::SetPixel(image, x, y, {i * 7 % 256, 40 + i, 200 - i * 3 % 200});
        }
    return image;
}

Rgb EntryAt(const CBaseImage& image, int index) {
    const PaletteEntry& entry = image.GetPalette()[index];
    return {entry.red, entry.green, entry.blue};
}

std::set<int> UsedIndices(const CBaseImage& image) {
    std::set<int> used;
    for (int y = 0; y < image.GetHeight(); ++y)
        for (int x = 0; x < image.GetWidth(); ++x)
            used.insert(test::IndexAt(image, x, y));
    return used;
}

void ExpectSameColors(const CBaseImage& actual, const CBaseImage& expected) {
    ASSERT_EQ(actual.GetWidth(), expected.GetWidth());
    ASSERT_EQ(actual.GetHeight(), expected.GetHeight());
    for (int y = 0; y < actual.GetHeight(); ++y)
        for (int x = 0; x < actual.GetWidth(); ++x)
            ASSERT_EQ(test::PixelAt(actual, x, y), test::PixelAt(expected, x, y)) << x << ' ' << y;
}

TEST(DecreaseBpp, TrueColorLeavesThePageByteForByte) {
    for (const int bpp : {1, 4, 8, 24}) {
        CDibImage image = test::Noise(13, 11, bpp);
        const CDibImage before(image);
        for (const bool previewing : {false, true}) {
            EXPECT_TRUE(DecreaseBpp(image, previewing, Request(0)));
            test::ExpectSamePixels(image, before);
        }
    }
}

TEST(DecreaseBpp, APositionThatTheListLacksLeavesThePage) {
    for (const int color : {-1, 20, INT32_MAX, INT32_MIN}) {
        CDibImage image = test::Noise(13, 11, 24);
        const CDibImage before(image);
        EXPECT_TRUE(DecreaseBpp(image, false, Request(color)));
        test::ExpectSamePixels(image, before);
    }
}

TEST(DecreaseBpp, AnEmptyImageIsRefused) {
    for (int color = -1; color <= 20; ++color) {
        CDibImage image;
        EXPECT_FALSE(DecreaseBpp(image, false, Request(color)));
        EXPECT_FALSE(DecreaseBpp(image, true, Request(color)));
    }
}

struct SourceCase {
    const char* name;
    int sourceBpp, colors, expectedBpp;
};
void PrintTo(const SourceCase& c, std::ostream* out) {
    *out << c.name;
}

class AsSource : public testing::TestWithParam<SourceCase> {};

TEST_P(AsSource, ReturnsToTheDepthThatTheColorsStillFit) {
    const SourceCase& c = GetParam();
    CDibImage image = ColoredPage(23, 19, c.colors);
    const CDibImage before(image);
    DecreaseBppRequest request = Request(2);
    request.sourceBpp = c.sourceBpp;
    EXPECT_TRUE(DecreaseBpp(image, false, request));
    EXPECT_EQ(image.GetBpp(), c.expectedBpp);
    ExpectSameColors(image, before);
}

constexpr SourceCase kSourceCases[] = {
    {"FourBitsWith16ColorsWrites4Bits", 4, 16, 4},
    {"FourBitsWith17ColorsStays24Bits", 4, 17, 24},
    {"OneBitWith2ColorsWrites1Bit", 1, 2, 1},
    {"OneBitWith3ColorsStays24Bits", 1, 3, 24},
    {"EightBitsWith256ColorsWrites8Bits", 8, 256, 8},
    {"EightBitsWith257ColorsStays24Bits", 8, 257, 24},
    {"EightBitsWith16ColorsWritesThose16", 8, 16, 4},
    {"UnknownDepthStays", 0, 1, 24},
    {"TrueColorStays", 24, 2, 24},
    {"NegativeDepthStays", -3, 1, 24},
    {"AbsurdDepthStays", 2000000000, 1, 24},
};
INSTANTIATE_TEST_SUITE_P(DecreaseBpp, AsSource, testing::ValuesIn(kSourceCases),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(DecreaseBpp, AsSourceChangesNothingWhilePreviewing) {
    CDibImage image = ColoredPage(23, 19, 16);
    const CDibImage before(image);
    DecreaseBppRequest request = Request(2);
    request.sourceBpp = 4;
    EXPECT_TRUE(DecreaseBpp(image, true, request));
    test::ExpectSamePixels(image, before);
}

TEST(DecreaseBpp, AGrayPageOfManyLevelsFromAOneBitFileStaysGray) {
    CDibImage image = test::Noise(40, 40, 8);
    const CDibImage before(image);
    DecreaseBppRequest request = Request(2);
    request.sourceBpp = 1;
    EXPECT_TRUE(DecreaseBpp(image, false, request));
    test::ExpectSamePixels(image, before);
}

TEST(DecreaseBpp, FewerColorsThanAskedAreKeptExactlyWhicheverMaker) {
    for (const int maker : kMakers) {
        CDibImage image = ColoredPage(17, 9, 11);
        const CDibImage before(image);
        DecreaseBppRequest request = Request(11);
        request.quantize = maker;
        EXPECT_TRUE(DecreaseBpp(image, false, request));
        EXPECT_EQ(image.GetBpp(), 4);
        EXPECT_EQ(UsedIndices(image).size(), 11u);
        ExpectSameColors(image, before);
        for (int i = 1; i < 11; ++i) {  // ascending 0xRRGGBB
            const Rgb a = EntryAt(image, i - 1), b = EntryAt(image, i);
            EXPECT_LT(a.red << 16 | a.green << 8 | a.blue, b.red << 16 | b.green << 8 | b.blue);
        }
        for (int i = 11; i < 16; ++i)
            EXPECT_EQ(EntryAt(image, i), (Rgb{0, 0, 0}));
    }
}

TEST(DecreaseBpp, FewLevelsOfAGrayPageAreKeptExactlyWhicheverMaker) {
    for (const int maker : kMakers)
        for (const int levels : {1, 2, 3, 16, 17, 32}) {
            CDibImage image = test::Filled(21, 13, 8, 0);
            for (int y = 0; y < 13; ++y)
                for (int x = 0; x < 21; ++x)
                    test::SetIndex(image, x, y, 5 + 3 * ((21 * y + x) % levels));
            const CDibImage before(image);
            DecreaseBppRequest request = Request(17);  // 32 greys
            request.quantize = maker;
            EXPECT_TRUE(DecreaseBpp(image, false, request));
            EXPECT_EQ(image.GetBpp(), levels <= 2 ? 1 : levels <= 16 ? 4 : 8);
            ExpectSameColors(image, before);
        }
}

TEST(DecreaseBpp, TheAbsentFillColorComesLastBehind15MadeOnes) {
    for (const int maker : {0, 1, 2, 4}) {
        CDibImage image = test::Noise(40, 30, 24);
        for (int x = 0; x < 40; ++x)
            test::SetPixel(image, x, 3, {1, 2, 4});
        DecreaseBppRequest request = Request(11);
        request.quantize = maker;
        request.reservedColor = 0x030201;  // red 1, green 2, blue 3
        EXPECT_TRUE(DecreaseBpp(image, false, request));
        ASSERT_EQ(image.GetBpp(), 4);
        EXPECT_EQ(EntryAt(image, 15), (Rgb{1, 2, 3})) << maker;
        EXPECT_GT(UsedIndices(image).size(), 8u);
        EXPECT_EQ(UsedIndices(image).count(15), 1u);  // the row nearest to it
    }
}

TEST(DecreaseBpp, AFillColorThatThePageHoldsIsNotAppended) {
    CDibImage image = ColoredPage(20, 20, 16);
    const Rgb first = test::PixelAt(image, 0, 0);
    DecreaseBppRequest request = Request(11);
    request.reservedColor =
        static_cast<std::uint32_t>(first.blue << 16 | first.green << 8 | first.red);
    EXPECT_TRUE(DecreaseBpp(image, false, request));
    EXPECT_EQ(UsedIndices(image).size(), 16u);
}

TEST(DecreaseBpp, AFillColorMakesTheExactPaletteOneTooLong) {
    CDibImage image = ColoredPage(20, 20, 16);
    DecreaseBppRequest request = Request(11);
    request.reservedColor = 0x030201;
    EXPECT_TRUE(DecreaseBpp(image, false, request));
    EXPECT_EQ(EntryAt(image, 15), (Rgb{1, 2, 3}));
    EXPECT_LE(UsedIndices(image).size(), 15u);
}

TEST(DecreaseBpp, AnUnusualCountOfFixedColorsIsBlackButForTheFill) {
    CDibImage image = test::Noise(20, 20, 24);
    DecreaseBppRequest request = Request(11);
    request.quantize = 3;
    request.reservedColor = 0x806040;
    EXPECT_TRUE(DecreaseBpp(image, false, request));
    for (int i = 0; i < 15; ++i)
        EXPECT_EQ(EntryAt(image, i), (Rgb{0, 0, 0}));
    EXPECT_EQ(EntryAt(image, 15), (Rgb{0x40, 0x60, 0x80}));
}

TEST(DecreaseBpp, TwoColorsAndAFillFitOneBit) {
    for (const int maker : {0, 1, 2, 4}) {
        CDibImage image = test::Noise(30, 30, 24);
        DecreaseBppRequest request = Request(14);
        request.quantize = maker;
        request.reservedColor = 0xFFFFFE;
        EXPECT_TRUE(DecreaseBpp(image, false, request));
        ASSERT_EQ(image.GetBpp(), 1);
        EXPECT_EQ(EntryAt(image, 1), (Rgb{0xFE, 0xFF, 0xFF})) << maker;
        EXPECT_EQ(UsedIndices(image).size(), 2u) << maker;
    }
}

TEST(DecreaseBpp, TwoColorsByTheOctreeKeepTheFirstMadeOneBeforeTheAbsentFill) {
    // Three colours in three children of the root: the octree's two are black, and the mean of red
    // and white by their pixels. The fill is nearest to black, which stays all the same.
    CDibImage image = test::Filled(12, 10, 24, 255);
    for (int y = 0; y < 10; ++y) {
        test::SetPixel(image, 0, y, {0, 0, 0});
        test::SetPixel(image, 1, y, {200, 0, 0});
    }
    DecreaseBppRequest request = Request(14);
    request.quantize = 0;
    request.reservedColor = 0x101010;
    EXPECT_TRUE(DecreaseBpp(image, false, request));
    ASSERT_EQ(image.GetBpp(), 1);
    EXPECT_EQ(EntryAt(image, 0), (Rgb{0, 0, 0}));
    EXPECT_EQ(EntryAt(image, 1), (Rgb{0x10, 0x10, 0x10}));
}

TEST(DecreaseBpp, EightColorsOfAColorPageMakeA4BitImageOf8Entries) {
    for (const int maker : kMakers) {
        CDibImage image = test::Noise(40, 30, 24);
        DecreaseBppRequest request = Request(12);
        request.quantize = maker;
        EXPECT_TRUE(DecreaseBpp(image, false, request));
        EXPECT_EQ(image.GetBpp(), 4);
        const std::set<int> used = UsedIndices(image);
        EXPECT_EQ(used.size(), 8u) << maker;
        EXPECT_EQ(*used.rbegin(), 7) << maker;
    }
}

TEST(DecreaseBpp, TwoLevelsAskedAsTwoColorsMakeA1BitImageOfThem) {
    CDibImage image = test::FromRows({{30, 30, 200}, {200, 30, 30}});
    const CDibImage before(image);
    EXPECT_TRUE(DecreaseBpp(image, true, Request(14)));
    test::ExpectSamePixels(image, before);
    EXPECT_TRUE(DecreaseBpp(image, false, Request(14)));
    ASSERT_EQ(image.GetBpp(), 1);
    EXPECT_EQ(EntryAt(image, 0), (Rgb{30, 30, 30}));
    EXPECT_EQ(EntryAt(image, 1), (Rgb{200, 200, 200}));
    ExpectSameColors(image, before);
}

TEST(DecreaseBpp, OneLevelAskedAsTwoColorsLeavesTheBitsClear) {
    CDibImage image = test::Filled(9, 3, 8, 77);
    EXPECT_TRUE(DecreaseBpp(image, false, Request(14)));
    ASSERT_EQ(image.GetBpp(), 1);
    EXPECT_EQ(EntryAt(image, 0), (Rgb{77, 77, 77}));
    EXPECT_EQ(UsedIndices(image), std::set<int>{0});
}

TEST(DecreaseBpp, ThreeLevelsAskedAsTwoColorsBecomeBlackAndWhite) {
    CDibImage image = test::FromRows({{30, 31, 200}});
    EXPECT_TRUE(DecreaseBpp(image, false, Request(14)));
    EXPECT_TRUE(image.IsBW());
    EXPECT_EQ(test::PixelAt(image, 0, 0), (Rgb{0, 0, 0}));
    EXPECT_EQ(test::PixelAt(image, 1, 0), (Rgb{0, 0, 0}));
    EXPECT_EQ(test::PixelAt(image, 2, 0), (Rgb{255, 255, 255}));
}

TEST(DecreaseBpp, TwoFixedColorsOfAColorPageAreBlackAndWhite) {
    CDibImage image = test::Noise(20, 20, 24);
    DecreaseBppRequest request = Request(14);
    request.quantize = 3;
    EXPECT_TRUE(DecreaseBpp(image, false, request));
    EXPECT_TRUE(image.IsBW());
}

TEST(DecreaseBpp, TheLightestGrayOfAReducedPageIsWhite) {
    // 6 levels to 4: the cut leaves none at 255, the maker's lightest turns white.
    CDibImage image = test::FromRows({{10, 60, 110, 160, 210, 222}});
    for (const int maker : {0, 1, 2, 4}) {
        CDibImage page(image);
        DecreaseBppRequest request = Request(6);
        request.quantize = maker;
        EXPECT_TRUE(DecreaseBpp(page, false, request));
        ASSERT_EQ(page.GetBpp(), 4);
        EXPECT_EQ(test::PixelAt(page, 5, 0), (Rgb{255, 255, 255})) << maker;
        EXPECT_LT(test::PixelAt(page, 0, 0).red, 60) << maker;
    }
}

TEST(DecreaseBpp, ADitheredGrayPageAlwaysTakesTheEvenRamp) {
    for (const int maker : kMakers) {
        CDibImage image = test::Noise(40, 30, 8);
        DecreaseBppRequest request = Request(6);
        request.quantize = maker;
        request.dither = 1;
        EXPECT_TRUE(DecreaseBpp(image, false, request));
        ASSERT_EQ(image.GetBpp(), 4);
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(EntryAt(image, i), (Rgb{85 * i, 85 * i, 85 * i})) << maker;
    }
}

TEST(DecreaseBpp, AColorPageAskedForGrayTurnsGray) {
    CDibImage image = test::FromRows({{255, 0, 0, 0, 255, 0, 0, 0, 255}}, 3);
    EXPECT_TRUE(DecreaseBpp(image, false, Request(1)));
    EXPECT_TRUE(image.IsGrayScale());
    EXPECT_EQ(test::IndexAt(image, 0, 0), 76);   // 76.245
    EXPECT_EQ(test::IndexAt(image, 1, 0), 150);  // 149.685
    EXPECT_EQ(test::IndexAt(image, 2, 0), 29);   // 29.07
}

TEST(DecreaseBpp, HighColorOfAGrayPageIs256Grays) {
    for (const int color : {3, 18, 19}) {
        CDibImage image = test::Noise(9, 9, 8);
        const CDibImage before(image);
        EXPECT_TRUE(DecreaseBpp(image, false, Request(color)));
        test::ExpectSamePixels(image, before);
    }
}

TEST(DecreaseBpp, AColoredFillIsReservedAsItsGrayForGrayTargets) {
    CDibImage image = test::Noise(40, 40, 8);
    DecreaseBppRequest request = Request(17);
    request.reservedColor = 0x204080;  // (306 * 128 + 601 * 64 + 117 * 32) >> 10 = 79
    for (int x = 0; x < 40; ++x)
        for (int y = 0; y < 40; ++y)
            if (test::IndexAt(image, x, y) == 79)
                test::SetIndex(image, x, y, 80);
    EXPECT_TRUE(DecreaseBpp(image, false, request));
    ASSERT_EQ(image.GetBpp(), 8);
    EXPECT_EQ(EntryAt(image, 31), (Rgb{79, 79, 79}));
}

TEST(DecreaseBpp, TheEntryNearestToWhiteTurnsTransparentWhereAsked) {
    for (const int transparent : {0, 1}) {
        CDibImage image = test::FromRows({{0, 0, 0, 250, 250, 250, 9, 9, 9, 240, 250, 255}}, 3);
        DecreaseBppRequest request = Request(11);
        request.transparent = transparent;
        EXPECT_TRUE(DecreaseBpp(image, false, request));
        // Ascending: 000000, 090909, F0FAFF (distance 250), FAFAFA (distance 75).
        EXPECT_EQ(image.Fields().backgroundIndex, transparent != 0 ? 3 : -1);
    }
}

TEST(DecreaseBpp, TransparencyIsNotMarkedWhilePreviewing) {
    CDibImage image = test::Noise(9, 9, 24);
    DecreaseBppRequest request = Request(11);
    request.transparent = 1;
    EXPECT_TRUE(DecreaseBpp(image, true, request));
    EXPECT_EQ(image.Fields().backgroundIndex, -1);
}

TEST(DecreaseBpp, TheFirstEntryIsTransparentOnlyByDefault) {
    CDibImage one = test::Filled(4, 4, 24, 16);
    DecreaseBppRequest request = Request(14);
    request.transparent = 1;
    EXPECT_TRUE(DecreaseBpp(one, false, request));
    EXPECT_EQ(one.Fields().backgroundIndex, 0);
    CDibImage two = test::FromRows({{0, 0, 0, 1, 1, 1}}, 3);
    EXPECT_TRUE(DecreaseBpp(two, false, request));
    EXPECT_EQ(two.Fields().backgroundIndex, 1);
}

TEST(DecreaseBpp, ATransparentLevelGoesWithItsEntryOrIsDropped) {
    const CDibImage page = test::FromRows({{10, 60, 110, 160, 210, 220}});
    CDibImage exact(page), merged(page), two = test::FromRows({{9, 5}});
    exact.Fields().backgroundIndex = merged.Fields().backgroundIndex = 110;
    two.Fields().backgroundIndex = 9;
    EXPECT_TRUE(DecreaseBpp(exact, false, Request(5)));
    EXPECT_EQ(exact.Fields().backgroundIndex, 2);
    EXPECT_TRUE(DecreaseBpp(merged, false, Request(6)));
    EXPECT_EQ(merged.Fields().backgroundIndex, -1);
    EXPECT_TRUE(DecreaseBpp(two, false, Request(14)));
    EXPECT_EQ(two.Fields().backgroundIndex, 1);
}

TEST(DecreaseBpp, AttributesOfThePageStay) {
    for (const int bpp : {8, 24}) {
        CDibImage image = test::Noise(20, 20, bpp);
        image.SetXDpi(301);
        image.SetYDpi(299);
        image.Fields().quality = 77;
        image.Source().sourceName = "page.png";
        EXPECT_TRUE(DecreaseBpp(image, false, Request(11)));
        EXPECT_EQ(image.GetBpp(), 4);
        EXPECT_EQ(image.GetXDpi(), 301);
        EXPECT_EQ(image.GetYDpi(), 299);
        EXPECT_EQ(image.Fields().quality, 77);
        EXPECT_EQ(image.Source().sourceName, "page.png");
    }
}

TEST(DecreaseBpp, APreviewShowsWhatTheReductionGives) {
    for (const int maker : kMakers)
        for (const int color : {3, 8, 11, 12, 14}) {
            CDibImage page = test::Noise(31, 17, 24), preview(page);
            DecreaseBppRequest request = Request(color);
            request.quantize = maker == 3 && color == 14 ? 0 : maker;
            EXPECT_TRUE(DecreaseBpp(page, false, request));
            EXPECT_TRUE(DecreaseBpp(preview, true, request));
            EXPECT_EQ(preview.GetBpp(), 24);
            ExpectSameColors(preview, page);
        }
}

TEST(DecreaseBpp, SmallerDepthsThanEightBitsAreReducedToo) {
    for (const int bpp : {1, 4})
        for (const int color : {1, 7, 14}) {
            CDibImage image = test::Noise(33, 17, bpp);
            EXPECT_TRUE(DecreaseBpp(image, false, Request(color)));
            EXPECT_EQ(image.GetBpp(), color == 1 ? 8 : 1) << bpp << ' ' << color;
        }
}

}  // namespace
}  // namespace velloran
