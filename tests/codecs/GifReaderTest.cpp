#include <gtest/gtest.h>

#include "Mutations.h"
#include "PlainGif.h"
#include "codecs/FileForms.h"
#include "codecs/Gif.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"
#include "support/TempFolder.h"

namespace velloran {
namespace {

using test::BytesOf;
using test::PlainGif;
using test::Rgb;

CDibImage Loaded(const PlainGif& gif) {
    CDibImage image;
    FileError error;
    EXPECT_TRUE(LoadGifBytes(BytesOf(EncodeGif(gif)), image, &error)) << error.detail;
    return image;
}

/// Patches the little-endian size of the screen, or of the first frame behind `marker`.
std::string WithScreen(std::string file, int width, int height) {
    file[6] = static_cast<char>(width);
    file[7] = static_cast<char>(width >> 8);
    file[8] = static_cast<char>(height);
    file[9] = static_cast<char>(height >> 8);
    return file;
}

TEST(GifReader, EveryTableSizeAndWidthKeepsItsPixelsInterlacedOrNot) {
    for (int colors = 2; colors <= 256; colors *= 2)
        for (int width = 1; width <= 17; ++width)
            for (const bool interlaced : {false, true}) {
                PlainGif gif = test::GifOfNoise(width, 1 + width % 11, colors);
                gif.frames[0].interlaced = interlaced;
                const CDibImage image = Loaded(gif);
                ASSERT_EQ(image.GetWidth(), width);
                ASSERT_EQ(image.GetHeight(), gif.height);
                ASSERT_EQ(image.GetBpp(), colors <= 2 ? 1 : (colors <= 16 ? 4 : 8));
                for (int y = 0; y < gif.height; ++y)
                    for (int x = 0; x < width; ++x) {
                        const int index = gif.frames[0].At(x, y);
                        ASSERT_EQ(test::IndexAt(image, x, y), index);
                        ASSERT_EQ(test::PixelAt(image, x, y),
                                  gif.palette[static_cast<std::size_t>(index)]);
                    }
            }
}

TEST(GifReader, TellsItsHead) {
    const PlainGif gif = test::GifOfNoise(7, 5, 8);
    const CDibImage image = Loaded(gif);
    EXPECT_EQ(image.GetXDpi(), 96);
    EXPECT_EQ(image.GetYDpi(), 96);
    EXPECT_EQ(image.Source().sourceColours, 4u);
    EXPECT_EQ(image.Source().sourceFlag, 96u);
    EXPECT_EQ(image.Fields().backgroundIndex, -1);
    ImageInfo info;
    ASSERT_TRUE(ReadGifInfo(BytesOf(EncodeGif(gif)), info, nullptr));
    EXPECT_EQ(info.width, 7);
    EXPECT_EQ(info.height, 5);
    EXPECT_EQ(info.bitsPerPixel, 3);
    EXPECT_EQ(info.colorsUsed, 8);
    EXPECT_FALSE(info.gray);
    EXPECT_EQ(info.xDpi, 96);
}

TEST(GifReader, TheIdentityRampCountsAsGray) {
    PlainGif gif = test::GifOfNoise(7, 5, 256);
    for (int i = 0; i < 256; ++i)
        gif.palette[static_cast<std::size_t>(i)] = {i, i, i};
    EXPECT_TRUE(Loaded(gif).IsGrayScale());
    ImageInfo info;
    ASSERT_TRUE(ReadGifInfo(BytesOf(EncodeGif(gif)), info, nullptr));
    EXPECT_TRUE(info.gray);
}

TEST(GifReader, TheTransparentIndexIsKept) {
    PlainGif gif = test::GifOfNoise(7, 5, 4);
    gif.frames[0].transparent = 3;
    EXPECT_EQ(Loaded(gif).Fields().backgroundIndex, 3);
    gif.frames[0].transparent = 200;  // beyond the table
    EXPECT_EQ(Loaded(gif).Fields().backgroundIndex, -1);
}

TEST(GifReader, ALocalPaletteWins) {
    PlainGif gif = test::GifOfNoise(7, 5, 4);
    gif.frames[0].localPalette = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}};
    const CDibImage image = Loaded(gif);
    const int index = gif.frames[0].At(2, 2);
    EXPECT_EQ(test::PixelAt(image, 2, 2),
              gif.frames[0].localPalette[static_cast<std::size_t>(index)]);
}

TEST(GifReader, OnlyTheFirstPictureIsRead) {
    PlainGif gif = test::GifOfNoise(7, 5, 4);
    const PlainGif other = test::GifOfNoise(7, 5, 4, 99);
    gif.frames.push_back(other.frames[0]);
    const CDibImage image = Loaded(gif);
    EXPECT_EQ(test::IndexAt(image, 6, 4), gif.frames[0].At(6, 4));
    // What stands behind it may be damaged.
    const std::string file = EncodeGif(gif);
    CDibImage cut;
    ASSERT_TRUE(LoadGifBytes(BytesOf(file.substr(0, file.size() - 10)), cut, nullptr));
    test::ExpectSamePixels(cut, image);
}

TEST(GifReader, ASmallerFrameLiesOnTheBackground) {
    PlainGif gif = test::GifOfNoise(3, 2, 4);
    gif.width = 10;
    gif.height = 8;
    gif.background = 2;
    gif.frames[0].left = 4;
    gif.frames[0].top = 5;
    const CDibImage image = Loaded(gif);
    ASSERT_EQ(image.GetWidth(), 10);
    ASSERT_EQ(image.GetHeight(), 8);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 10; ++x) {
            const bool inside = x >= 4 && x < 7 && y >= 5 && y < 7;
            EXPECT_EQ(test::IndexAt(image, x, y), inside ? gif.frames[0].At(x - 4, y - 5) : 2);
        }
}

TEST(GifReader, AroundATransparentFrameItIsTransparent) {
    PlainGif gif = test::GifOfNoise(3, 2, 4);
    gif.width = 10;
    gif.background = 2;
    gif.frames[0].transparent = 1;
    EXPECT_EQ(test::IndexAt(Loaded(gif), 9, 0), 1);
}

TEST(GifReader, TheBackgroundOfALocalPaletteIsAnEqualOrANewEntry) {
    PlainGif gif = test::GifOfNoise(3, 2, 4);
    gif.width = 10;
    gif.background = 2;
    gif.palette[2] = {20, 30, 40};
    gif.frames[0].localPalette = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {20, 30, 40}};
    EXPECT_EQ(test::IndexAt(Loaded(gif), 9, 0), 3);
    gif.frames[0].localPalette[3] = {0, 0, 0};
    const CDibImage image = Loaded(gif);
    EXPECT_EQ(test::IndexAt(image, 9, 0), 4);
    EXPECT_EQ(test::PixelAt(image, 9, 0), (Rgb{20, 30, 40}));
}

TEST(GifReader, AScreenSmallerThanItsFrameGrows) {
    const std::string file = WithScreen(EncodeGif(test::GifOfNoise(7, 5, 4)), 2, 2);
    CDibImage image;
    ASSERT_TRUE(LoadGifBytes(BytesOf(file), image, nullptr));
    EXPECT_EQ(image.GetWidth(), 7);
    EXPECT_EQ(image.GetHeight(), 5);
}

TEST(GifDamage, WhatATruncatedFileLacksIsWhite) {
    PlainGif gif = test::GifOfNoise(40, 60, 256);
    gif.palette[9] = {255, 255, 255};
    const std::string file = EncodeGif(gif);
    const std::size_t head = 13 + 3 * 256;
    CDibImage image;
    ASSERT_TRUE(
        LoadGifBytes(BytesOf(file.substr(0, head + (file.size() - head) / 2)), image, nullptr));
    EXPECT_EQ(test::IndexAt(image, 0, 59), 9);
    EXPECT_EQ(test::IndexAt(image, 39, 59), 9);
    int whole = 0;
    while (whole < 60 && test::IndexAt(image, 0, whole) == gif.frames[0].At(0, whole))
        ++whole;
    EXPECT_GE(whole, 20);
    EXPECT_LE(whole, 32);
}

TEST(GifDamage, TruncationsLoadOrLeaveTheImageAsItWas) {
    for (const bool interlaced : {false, true}) {
        PlainGif gif = test::GifOfNoise(40, 60, 16);
        gif.frames[0].interlaced = interlaced;
        int loaded = 0;
        for (const std::string& part : test::TruncationsOf(EncodeGif(gif))) {
            CDibImage image = test::Filled(3, 2, 8, 5);
            FileError error;
            if (LoadGifBytes(BytesOf(part), image, &error)) {
                EXPECT_EQ(image.GetWidth(), 40);
                ++loaded;
            } else {
                test::ExpectSamePixels(image, test::Filled(3, 2, 8, 5));
                EXPECT_EQ(error.cause, FileError::Cause::kContent);
            }
        }
        EXPECT_GT(loaded, 50);
    }
}

TEST(GifDamage, FilesOfNoneOneAndNineBytesFail) {
    const std::string file = EncodeGif(test::GifOfNoise(4, 4, 4));
    for (const std::size_t size : {0u, 1u, 9u}) {
        CDibImage image;
        FileError error;
        EXPECT_FALSE(LoadGifBytes(BytesOf(file.substr(0, size)), image, &error));
        EXPECT_EQ(error.cause, FileError::Cause::kContent);
        ImageInfo info;
        EXPECT_FALSE(ReadGifInfo(BytesOf(file.substr(0, size)), info, nullptr));
    }
}

TEST(GifDamage, LyingScreensAreRefusedAtOnce) {
    const std::string file = EncodeGif(test::GifOfNoise(4, 4, 4));
    for (const int height : {65535, 15000}) {
        CDibImage image;
        FileError error;
        EXPECT_FALSE(LoadGifBytes(BytesOf(WithScreen(file, 65535, height)), image, &error));
        EXPECT_EQ(error.cause, FileError::Cause::kContent);
    }
}

TEST(GifDamage, IndicesBeyondTheTableBecomeZero) {
    // Codes of 8 bits, but a table of two: the picture's own table is cut to two entries.
    PlainGif gif = test::GifOfNoise(16, 16, 256);
    std::string file = EncodeGif(gif);
    file[10] = static_cast<char>(file[10] & ~7);  // a table of 2
    file.erase(13 + 6, 3 * 254);
    CDibImage image;
    ASSERT_TRUE(LoadGifBytes(BytesOf(file), image, nullptr));
    EXPECT_EQ(image.GetBpp(), 1);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x)
            EXPECT_EQ(test::IndexAt(image, x, y), gif.frames[0].At(x, y) == 1 ? 1 : 0);
}

TEST(GifDamage, MutationsNeverCrash) {
    int visited = 0;
    for (const int colors : {2, 16, 256})
        for (const bool interlaced : {false, true}) {
            PlainGif gif = test::GifOfNoise(21, 13, colors);
            gif.frames[0].interlaced = interlaced;
            test::ForEachMutation(EncodeGif(gif), 150, 5, [&](const std::string& bytes) {
                ImageInfo info;
                CDibImage image;
                const bool head = ReadGifInfo(BytesOf(bytes), info, nullptr);
                if (LoadGifBytes(BytesOf(bytes), image, nullptr)) {
                    EXPECT_TRUE(head);
                    EXPECT_EQ(image.GetWidth(), info.width);
                }
                ++visited;
            });
        }
    EXPECT_EQ(visited, 900);
}

TEST(GifDamage, FailingAllocationsEndInFalse) {
    const std::string file = EncodeGif(test::GifOfNoise(21, 13, 16));
    int loaded = 0;
    test::SweepFailingAllocations([&](long) {
        CDibImage image;
        FileError error;
        if (LoadGifBytes(BytesOf(file), image, &error))
            ++loaded;
    });
    EXPECT_GE(loaded, 1);
}

}  // namespace
}  // namespace velloran
