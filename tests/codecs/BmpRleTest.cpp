#include <gtest/gtest.h>

#include "codecs/Bmp.h"
#include "codecs/BmpFiles.h"
#include "codecs/FileForms.h"
#include "codecs/Mutations.h"
#include "core/DibImage.h"
#include "support/Images.h"

namespace velloran {
namespace {

using test::BmpParts;
using test::BuildBmp;
using test::IndexAt;
using test::Rgb;
using namespace std::string_literals;

std::vector<Rgb> Palette() {
    std::vector<Rgb> entries;
    for (int i = 0; i < 16; ++i)
        entries.push_back({i * 10, i * 10, i * 10});
    return entries;
}

BmpParts Rle(int bits, int width, int height, std::string codes) {
    return {.width = width,
            .height = height,
            .bits = bits,
            .compression = bits == 8 ? 1U : 2U,
            .colorsUsed = 16,
            .palette = Palette(),
            .pixels = std::move(codes)};
}

CDibImage Loaded(const BmpParts& parts) {
    CDibImage image;
    FileError error;
    EXPECT_TRUE(LoadBmpBytes(test::BytesOf(BuildBmp(parts)), image, &error)) << error.detail;
    return image;
}

/// Rows from the bottom of the picture, as the codes tell them.
void ExpectRows(const CDibImage& image, const std::vector<std::vector<int>>& rows) {
    ASSERT_EQ(image.GetHeight(), static_cast<int>(rows.size()));
    for (int y = 0; y < image.GetHeight(); ++y)
        for (int x = 0; x < image.GetWidth(); ++x)
            EXPECT_EQ(IndexAt(image, x, image.GetHeight() - 1 - y), rows[y][x])
                << x << ", " << y << " from below";
}

TEST(BmpRle, EightBitRunsLiteralsAndEnds) {
    ExpectRows(Loaded(Rle(8, 5, 2, "\x3\x7\x2\x1\0\0\0\x3\x4\x5\x6\0\x2\x9\0\1"s)),
               {{7, 7, 7, 1, 1}, {4, 5, 6, 9, 9}});
}

TEST(BmpRle, FourBitRunsAlternateAndLiteralsHoldTwoAByte) {
    // A run of 5 of 1 2, then 3 literals 3 4 5 in two bytes (already even).
    ExpectRows(Loaded(Rle(4, 8, 1, "\x5\x12\0\x3\x34\x50\0\1"s)), {{1, 2, 1, 2, 1, 3, 4, 5}});
}

TEST(BmpRle, SkippedPixelsAreIndexZero) {
    ExpectRows(Loaded(Rle(8, 4, 3, "\x1\x5\0\x2\x1\x1\x1\x6\0\1"s)),
               {{5, 0, 0, 0}, {0, 0, 6, 0}, {0, 0, 0, 0}});
}

TEST(BmpRle, RunsThatLeaveTheRowAreCut) {
    ExpectRows(Loaded(Rle(8, 3, 2, "\xFF\x5\0\0\x2\x6\0\1"s)), {{5, 5, 5}, {6, 6, 0}});
    ExpectRows(Loaded(Rle(8, 3, 2, "\0\x6\1\2\3\4\5\6\0\0\x1\x7\0\1"s)), {{1, 2, 3}, {7, 0, 0}});
    ExpectRows(Loaded(Rle(8, 3, 1, "\x1\x1\0\x2\xFF\xFF\x1\x2"s)), {{1, 0, 0}});
}

TEST(BmpRle, CodesThatBreakOffLeaveTheRestLight) {
    // Row 0 whole; row 1 begun and not kept; entry 15 is the lightest.
    ExpectRows(Loaded(Rle(8, 2, 3, "\x2\x1\0\0\x1\x2"s)), {{1, 1}, {15, 15}, {15, 15}});
}

TEST(BmpRle, TheLastRowNeedsNoEndCode) {
    ExpectRows(Loaded(Rle(8, 2, 2, "\x2\x1\0\0\x2\x2"s)), {{1, 1}, {2, 2}});
}

TEST(BmpRle, ATopDownPictureStartsAtItsTop) {
    const CDibImage image = Loaded(Rle(8, 2, -2, "\x2\x1\0\0\x2\x2\0\1"s));
    EXPECT_EQ(IndexAt(image, 0, 0), 1);
    EXPECT_EQ(IndexAt(image, 0, 1), 2);
}

TEST(BmpRle, TwentyFourBitRunsOfOldFiles) {
    const CDibImage image = Loaded({.headSize = 64,
                                    .width = 4,
                                    .height = 1,
                                    .bits = 24,
                                    .compression = 4,
                                    .pixels = "\x2\1\2\3\0\x3\4\5\6\7\x8\x9\xA\xB\xC\0\0\1"s});
    EXPECT_EQ(test::PixelAt(image, 0, 0), (Rgb{3, 2, 1}));
    EXPECT_EQ(test::PixelAt(image, 1, 0), (Rgb{3, 2, 1}));
    EXPECT_EQ(test::PixelAt(image, 2, 0), (Rgb{6, 5, 4}));
    EXPECT_EQ(test::PixelAt(image, 3, 0), (Rgb{9, 8, 7}));
}

TEST(BmpRle, NoTruncationOrMutationCrashes) {
    const std::string files[] = {
        BuildBmp(Rle(
            8, 40, 9,
            std::string(20, '\x9') + "\0\x5hello!\0\x2\x3\x1"s + std::string(40, '\x4') + "\0\1"s)),
        BuildBmp(Rle(
            4, 40, 9,
            std::string(20, '\x9') + "\0\x7wxyz\0\x2\x3\x1"s + std::string(40, '\x4') + "\0\1"s)),
        BuildBmp({.headSize = 64,
                  .width = 9,
                  .height = 4,
                  .bits = 24,
                  .compression = 4,
                  .pixels = "\x2\1\2\3\0\x3\4\5\6\7\x8\x9\xA\xB\xC\0\0\0\x5"
                            "abc\0\1"s}),
    };
    int shown = 0;
    for (const std::string& file : files) {
        const auto visit = [&](const std::string& damaged) {
            ImageInfo info;
            if (!ReadBmpInfo(test::BytesOf(damaged), info, nullptr) ||
                static_cast<std::int64_t>(info.width) * info.height > 1'000'000)
                return;
            CDibImage image;
            shown += LoadBmpBytes(test::BytesOf(damaged), image, nullptr) ? 1 : 0;
        };
        for (const std::string& cut : test::TruncationsOf(file))
            visit(cut);
        test::ForEachMutation(file, 300, 4, visit);
    }
    EXPECT_GT(shown, 200);
}

}  // namespace
}  // namespace velloran
