// Crop, quarter turns and mirrors against a picture that is a plain table of values.

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <functional>
#include <vector>

#ifdef _OPENMP
#include <omp.h>
#endif

#include "core/DibImage.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"

namespace velloran {
namespace {

/// Values of a picture, top row first: palette index, or colour, with alpha above it.
struct Table {
    int width = 0, height = 0;
    std::vector<std::uint64_t> values;
    std::uint64_t At(int x, int y) const {
        return values.at(static_cast<std::size_t>(y) * width + x);
    }
    bool operator==(const Table&) const = default;
};

Table TableOf(const CBaseImage& image) {
    Table table{image.GetWidth(), image.GetHeight(), {}};
    for (int y = 0; y < table.height; ++y)
        for (int x = 0; x < table.width; ++x) {
            std::uint64_t value;
            if (image.GetBpp() == 24) {
                const test::Rgb color = test::PixelAt(image, x, y);
                value = static_cast<std::uint64_t>(color.red << 16 | color.green << 8 | color.blue);
            } else {
                value = static_cast<std::uint64_t>(test::IndexAt(image, x, y));
            }
            const std::size_t at = static_cast<std::size_t>(table.height - 1 - y) * table.width + x;
            if (image.GetAlpha() != nullptr)
                value |= std::uint64_t{image.GetAlpha()[at]} << 32;
            if (image.GetSelection() != nullptr)
                value |= std::uint64_t{image.GetSelection()[at]} << 40;
            table.values.push_back(value);
        }
    return table;
}

Table Made(int width, int height, const std::function<std::uint64_t(int, int)>& value) {
    Table table{width, height, {}};
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            table.values.push_back(value(x, y));
    return table;
}

/// Noise with both planes, two resolutions and a palette of its own.
CDibImage Sample(int width, int height, int bpp) {
    CDibImage image = test::Noise(width, height, bpp, static_cast<std::uint32_t>(width * 31 + bpp));
    EXPECT_TRUE(image.CreateAlpha());
    EXPECT_TRUE(image.CreateSelection());
    for (int i = 0; i < width * height; ++i) {
        image.GetAlpha()[i] = static_cast<std::uint8_t>(i * 11 + 3);
        image.GetSelection()[i] = static_cast<std::uint8_t>(i * 5);
    }
    image.SetXDpi(300);
    image.SetYDpi(200);
    if (bpp <= 8)
        test::SetPalette(image, {{1, 2, 3}, {200, 100, 50}});
    return image;
}

void ExpectKeeps(const CBaseImage& image, const CBaseImage& before) {
    EXPECT_EQ(image.GetBpp(), before.GetBpp());
    EXPECT_EQ(image.GetXDpi(), before.GetXDpi());
    EXPECT_EQ(image.GetYDpi(), before.GetYDpi());
    for (int i = 0; i < before.GetPaletteCount(); ++i)
        EXPECT_EQ(image.GetPalette()[i], before.GetPalette()[i]);
    EXPECT_EQ(std::memcmp(image.GetDib(), &image.GetHeader(), 40), 0) << "header written back";
    EXPECT_EQ(image.GetHeader().imageSize,
              image.GetEffWidth() * static_cast<std::uint32_t>(image.GetHeight()));
    EXPECT_EQ(image.GetEffWidth(), EffectiveWidth(static_cast<std::uint64_t>(image.GetWidth()),
                                                  static_cast<std::uint64_t>(image.GetBpp())));
}

/// What a side margin is worth at a depth, worked out digit by digit.
int RoundedMargin(int bpp, int margin) {
    if (bpp == 1)
        return margin % 8 >= 4 ? margin - margin % 8 + 8 : margin - margin % 8;
    return bpp == 4 ? margin - margin % 2 : margin;
}

void CheckCrop(int width, int height, int bpp, int left, int top, int right, int bottom) {
    SCOPED_TRACE(testing::Message() << width << " x " << height << " at " << bpp << " bits: "
                                    << left << ", " << top << ", " << right << ", " << bottom);
    const CDibImage before = Sample(width, height, bpp);
    int l = RoundedMargin(bpp, left), r = RoundedMargin(bpp, right);
    if ((bpp == 1 && l + 8 + r > width) || (bpp == 4 && l + r + 4 > width))
        l = r = 0;
    const bool possible = l + r < width && top + bottom < height;
    CDibImage image = before;
    EXPECT_EQ(image.CropInPlace(left, top, right, bottom), possible);
    const Table old = TableOf(before);
    if (!possible) {
        EXPECT_EQ(TableOf(image), old);
        return;
    }
    EXPECT_EQ(TableOf(image), Made(width - l - r, height - top - bottom,
                                   [&](int x, int y) { return old.At(x + l, y + top); }));
    ExpectKeeps(image, before);
}

TEST(CropInPlace, EveryWidthAndDepthAgreesWithATableOfValues) {
    for (int bpp : {1, 4, 8, 24})
        for (int width = 1; width <= 34; ++width)
            for (int left : {0, 1, 2, 3, 4, 7, 8, 9, 12})
                for (int right : {0, 1, 3, 4, 5, 8, 13})
                    CheckCrop(width, 5, bpp, left, 1, right, 2);
}

TEST(CropInPlace, EveryCombinationOfRowsAgreesWithATableOfValues) {
    for (int bpp : {1, 4, 8, 24})
        for (int top = 0; top <= 4; ++top)
            for (int bottom = 0; bottom <= 4; ++bottom) {
                CheckCrop(19, 4, bpp, 0, top, 0, bottom);
                CheckCrop(19, 4, bpp, 8, top, 0, bottom);
            }
}

TEST(CropInPlace, OneBitLeftOf3KeepsItsLeftPixelsAnd4Cuts8) {
    CDibImage image = test::Noise(40, 2, 1);
    const Table old = TableOf(image);
    ASSERT_TRUE(image.CropInPlace(3, 0, 0, 0));
    EXPECT_EQ(TableOf(image), old);
    ASSERT_TRUE(image.CropInPlace(4, 0, 0, 0));
    EXPECT_EQ(TableOf(image), Made(32, 2, [&](int x, int y) { return old.At(x + 8, y); }));
}

TEST(CropInPlace, FourBitOneAndOneKeepsItsWidth) {
    CDibImage image = test::Noise(10, 2, 4);
    ASSERT_TRUE(image.CropInPlace(1, 0, 1, 0));
    EXPECT_EQ(image.GetWidth(), 10);
    ASSERT_TRUE(image.CropInPlace(3, 0, 2, 0));
    EXPECT_EQ(image.GetWidth(), 6);
}

TEST(CropInPlace, NarrowOneBitPictureLosesRowsOnly) {
    CDibImage image = test::Noise(16, 6, 1);
    ASSERT_TRUE(image.CropInPlace(8, 1, 8, 2));  // 8 + 8 + 8 passes the width
    EXPECT_EQ(image.GetWidth(), 16);
    EXPECT_EQ(image.GetHeight(), 3);
}

TEST(CropInPlace, AllocatesNothing) {
    CDibImage image = Sample(33, 9, 24);
    const std::uint8_t* block = image.GetDib();
    {
        const test::FailAllocation fail(1);
        EXPECT_TRUE(image.CropInPlace(3, 2, 1, 1));
        EXPECT_FALSE(fail.Happened());
    }
    EXPECT_EQ(image.GetDib(), block);
}

TEST(CropInPlace, RefusesNegativeAndHugeMargins) {
    for (int bpp : {1, 4, 8, 24}) {
        CDibImage image = Sample(20, 20, bpp);
        const Table old = TableOf(image);
        EXPECT_FALSE(image.CropInPlace(-1, 0, 0, 0));
        EXPECT_FALSE(image.CropInPlace(0, -1, 0, 0));
        EXPECT_FALSE(image.CropInPlace(0, 0, INT_MIN, 0));
        EXPECT_FALSE(image.CropInPlace(0, INT_MAX, 0, INT_MAX));
        EXPECT_FALSE(image.CropInPlace(0, 20, 0, 0));
        EXPECT_EQ(image.CropInPlace(INT_MAX, 0, INT_MAX, 0), bpp < 8) << "no side is cut";
        EXPECT_EQ(TableOf(image), old);
    }
}

TEST(CropInPlace, LeavesTheRestOfEachRowZero) {
    for (int bpp : {1, 4, 8, 24}) {
        CDibImage image = test::Filled(45, 3, bpp, 255);
        ASSERT_TRUE(image.CropInPlace(8, 0, 2, 0));
        const int bits = image.GetWidth() * bpp;
        for (int y = 0; y < 3; ++y)
            for (int at = bits; at < static_cast<int>(image.GetEffWidth()) * 8; ++at)
                EXPECT_EQ(image.GetBits(y)[at / 8] >> (7 - at % 8) & 1, 0) << bpp << " bits";
    }
}

class QuarterTurn : public testing::TestWithParam<int> {};

TEST_P(QuarterTurn, LeftAndRightAgreeWithATableOfValues) {
    const int bpp = GetParam();
    for (int width = 1; width <= 17; ++width)
        for (int height : {1, 2, 7, 8, 9, 16, 17, 33}) {
            SCOPED_TRACE(testing::Message() << width << " x " << height);
            const CDibImage before = Sample(width, height, bpp);
            const Table old = TableOf(before);
            CDibImage left = before, right = before;
            ASSERT_TRUE(left.Rotate90(/*left=*/true));
            ASSERT_TRUE(right.Rotate90(/*left=*/false));
            // The top right corner comes to the top left, or the bottom left one does.
            EXPECT_EQ(TableOf(left),
                      Made(height, width, [&](int x, int y) { return old.At(width - 1 - y, x); }));
            EXPECT_EQ(TableOf(right),
                      Made(height, width, [&](int x, int y) { return old.At(y, height - 1 - x); }));
            ExpectKeeps(left, before);
            ExpectKeeps(right, before);
        }
}

TEST_P(QuarterTurn, OfALargePictureIsUndoneByItsOpposite) {
    const CDibImage before = Sample(701, 467, GetParam());
    CDibImage image = before;
    ASSERT_TRUE(image.Rotate90(true));
    const Table old = TableOf(before);
    EXPECT_EQ(TableOf(image), Made(467, 701, [&](int x, int y) { return old.At(700 - y, x); }));
    ASSERT_TRUE(image.Rotate90(false));
    EXPECT_EQ(TableOf(image), old);
}

TEST_P(QuarterTurn, IsWholeOrRefusedWhenMemoryRunsOut) {
    const CDibImage before = Sample(13, 9, GetParam());
    const Table old = TableOf(before);
    CDibImage turned = before;
    ASSERT_TRUE(turned.Rotate90(true));
    const Table expected = TableOf(turned);
    CDibImage image;
    int refused = 0;
    for (long n = 1; n <= 4; ++n) {
        image = before;
        bool ran;
        {
            const test::FailAllocation fail(n);
            ran = image.Rotate90(true);
        }
        refused += !ran;
        EXPECT_EQ(TableOf(image), ran ? expected : old);
        EXPECT_EQ(std::memcmp(image.GetDib(), &image.GetHeader(), 40), 0);
    }
    EXPECT_EQ(refused, 3) << "block and two planes";
}

#ifdef _OPENMP
TEST_P(QuarterTurn, AndFlipAreTheSameWithOneThreadAndFour) {
    const CDibImage before = Sample(1201, 903, GetParam());
    CDibImage serial = before, parallel = before;
    const int threads = omp_get_max_threads();
    omp_set_num_threads(1);
    ASSERT_TRUE(serial.Rotate90(true) && serial.Flip(FlipMode::kMirror));
    omp_set_num_threads(4);
    ASSERT_TRUE(parallel.Rotate90(true) && parallel.Flip(FlipMode::kMirror));
    omp_set_num_threads(threads);
    ASSERT_EQ(serial.GetDibSize(), parallel.GetDibSize());
    EXPECT_EQ(std::memcmp(serial.GetDib(), parallel.GetDib(), serial.GetDibSize()), 0);
}
#endif

TEST_P(QuarterTurn, FlipModesAgreeWithATableOfValues) {
    const int bpp = GetParam();
    for (int width = 1; width <= 37; ++width)
        for (int height : {1, 2, 5, 8}) {
            SCOPED_TRACE(testing::Message() << width << " x " << height);
            const CDibImage before = Sample(width, height, bpp);
            const Table old = TableOf(before);
            const auto flipped = [&](FlipMode mode) {
                CDibImage image = before;
                EXPECT_TRUE(image.Flip(mode));
                ExpectKeeps(image, before);
                return TableOf(image);
            };
            EXPECT_EQ(flipped(FlipMode::kFlip),
                      Made(width, height, [&](int x, int y) { return old.At(x, height - 1 - y); }));
            EXPECT_EQ(flipped(FlipMode::kMirror),
                      Made(width, height, [&](int x, int y) { return old.At(width - 1 - x, y); }));
            EXPECT_EQ(flipped(FlipMode::kUpsideDown), Made(width, height, [&](int x, int y) {
                          return old.At(width - 1 - x, height - 1 - y);
                      }));
        }
}

INSTANTIATE_TEST_SUITE_P(Depths, QuarterTurn, testing::Values(1, 4, 8, 24),
                         [](const auto& c) { return std::to_string(c.param) + "Bits"; });

TEST(Flip, AllocatesNothing) {
    for (int bpp : {1, 4, 8, 24}) {
        CDibImage image = Sample(21, 9, bpp);
        const test::FailAllocation fail(1);
        EXPECT_TRUE(image.Flip(FlipMode::kUpsideDown));
        EXPECT_FALSE(fail.Happened());
    }
}

TEST(CropPerMille, CutsTenthsOfAPercent) {
    CDibImage image = test::Noise(1000, 500, 8);
    ASSERT_TRUE(image.CropPerMille(100, 20, 50, 10));
    EXPECT_EQ(image.GetWidth(), 850);
    EXPECT_EQ(image.GetHeight(), 485);
}

TEST(CropPerMille, DoesNothingForFourZerosOrAnEmptyImage) {
    CDibImage image = test::Noise(100, 50, 8), empty;
    EXPECT_FALSE(image.CropPerMille(0, 0, 0, 0));
    EXPECT_EQ(image.GetWidth(), 100);
    EXPECT_FALSE(empty.CropPerMille(10, 10, 10, 10));
    EXPECT_FALSE(image.CropPerMille(500, 0, 500, 0)) << "nothing would be left";
    EXPECT_EQ(image.GetWidth(), 100);
}

TEST(PerMilleToPixels, RoundsInIntegersAndDropsLessThanThree) {
    EXPECT_EQ(PerMilleToPixels(1000, 3), 3);
    EXPECT_EQ(PerMilleToPixels(1000, 2), 0);    // 2 pixels
    EXPECT_EQ(PerMilleToPixels(2480, 13), 32);  // 32.24
    EXPECT_EQ(PerMilleToPixels(999, 1000), 999);
    EXPECT_EQ(PerMilleToPixels(2000, 2), 4);
    EXPECT_EQ(PerMilleToPixels(INT_MAX, 1000), INT_MAX);
    EXPECT_EQ(PerMilleToPixels(100, 5000), 100);
    EXPECT_EQ(PerMilleToPixels(100, -5), 0);
    EXPECT_EQ(PerMilleToPixels(-100, 500), 0);
}

}  // namespace
}  // namespace velloran
