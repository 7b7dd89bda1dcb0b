#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "FullDisk.h"
#include "PlainGif.h"
#include "codecs/FileForms.h"
#include "codecs/Gif.h"
#include "codecs/GifPalette.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"
#include "support/TempFolder.h"

namespace velloran {
namespace {

using test::PlainGif;
using test::PlainGifFrame;
using test::Rgb;

std::string SavedBytes(const CDibImage& image, bool transparent = false, bool tight = false) {
    const test::TempFolder folder;
    FileError error;
    EXPECT_TRUE(SaveGif(folder / "a.gif", image, transparent, tight, &error)) << error.detail;
    return test::ReadAll(folder / "a.gif");
}

PlainGif Saved(const CDibImage& image, bool transparent = false, bool tight = false) {
    return test::DecodeGif(SavedBytes(image, transparent, tight));
}

Rgb ColorAt(const PlainGif& gif, int x, int y) {
    return gif.palette[static_cast<std::size_t>(gif.frames[0].At(x, y))];
}

/// A white page of black and white with one black pixel.
CDibImage PageWithDot(int x, int y, int bpp) {
    CDibImage page = test::Filled(60, 40, bpp, 255);
    if (bpp == 24)
        test::SetPixel(page, x, y, {0, 0, 0});
    else
        test::SetIndex(page, x, y, 0);
    return page;
}

TEST(GifTightFrame, AWhitePageWithABlackDotHasAFrameOfTheDotsSize) {
    for (const int bpp : {1, 4, 8, 24}) {
        const PlainGif gif = Saved(PageWithDot(17, 9, bpp), false, true);
        EXPECT_EQ(gif.width, 60);
        EXPECT_EQ(gif.height, 40);
        ASSERT_EQ(gif.frames.size(), 1u);
        const PlainGifFrame& frame = gif.frames[0];
        EXPECT_EQ(frame.left, 17);
        EXPECT_EQ(frame.top, 9);
        EXPECT_EQ(frame.width, 1);
        EXPECT_EQ(frame.height, 1);
        EXPECT_EQ(ColorAt(gif, 0, 0), (Rgb{0, 0, 0}));
    }
}

TEST(GifTightFrame, TheFrameHoldsAllPixelsThatDifferFromTheTopLeftOne) {
    CDibImage page = PageWithDot(50, 3, 8);
    test::SetIndex(page, 12, 30, 7);
    test::SetIndex(page, 20, 10, 9);
    const PlainGif gif = Saved(page, false, true);
    const PlainGifFrame& frame = gif.frames[0];
    EXPECT_EQ(frame.left, 12);
    EXPECT_EQ(frame.top, 3);
    EXPECT_EQ(frame.width, 39);
    EXPECT_EQ(frame.height, 28);
    for (int y = 0; y < 28; ++y)
        for (int x = 0; x < 39; ++x)
            EXPECT_EQ(ColorAt(gif, x, y), test::PixelAt(page, 12 + x, 3 + y));
}

TEST(GifTightFrame, TheWholePageComesBackFromATightFrame) {
    const test::TempFolder folder;
    CDibImage page = PageWithDot(50, 3, 8);
    test::SetIndex(page, 12, 30, 7);
    for (const bool transparent : {false, true}) {
        CDibImage again;
        ASSERT_TRUE(SaveGif(folder / "a.gif", page, transparent, true));
        ASSERT_TRUE(LoadGif(folder / "a.gif", again));
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 60; ++x)
                EXPECT_EQ(test::PixelAt(again, x, y), test::PixelAt(page, x, y));
    }
}

TEST(GifTightFrame, AOneColorPictureHasAFrameOfOnePixelAndItsColorTwice) {
    const PlainGif gif = Saved(test::Filled(30, 20, 8, 80), false, true);
    EXPECT_EQ(gif.width, 30);
    EXPECT_EQ(gif.height, 20);
    const PlainGifFrame& frame = gif.frames[0];
    EXPECT_EQ(frame.left, 0);
    EXPECT_EQ(frame.top, 0);
    EXPECT_EQ(frame.width, 1);
    EXPECT_EQ(frame.height, 1);
    EXPECT_EQ(gif.palette, (std::vector<Rgb>{{80, 80, 80}, {80, 80, 80}}));
}

TEST(GifTightFrame, WithoutItTheFrameIsTheScreen) {
    const PlainGifFrame frame = Saved(PageWithDot(17, 9, 8)).frames[0];
    EXPECT_EQ(frame.left, 0);
    EXPECT_EQ(frame.top, 0);
    EXPECT_EQ(frame.width, 60);
    EXPECT_EQ(frame.height, 40);
    EXPECT_FALSE(frame.interlaced);
}

TEST(GifWriter, UsedIndicesAreListedInAscendingOrder) {
    CDibImage image = test::Filled(4, 1, 8, 200);
    test::SetIndex(image, 1, 0, 3);
    test::SetIndex(image, 2, 0, 90);
    const PlainGif gif = Saved(image);
    // Three colours take a table of four.
    EXPECT_EQ(gif.palette, (std::vector<Rgb>{{3, 3, 3}, {90, 90, 90}, {200, 200, 200}, {0, 0, 0}}));
    EXPECT_EQ(gif.frames[0].indices, (std::vector<int>{2, 0, 1, 2}));
}

TEST(GifWriter, EveryDepthAndWidthKeepsItsColors) {
    for (const int bpp : {1, 4, 8})
        for (int width = 1; width <= 17; ++width) {
            const CDibImage image = test::Noise(width, 1 + width % 7, bpp);
            const PlainGif gif = Saved(image);
            for (int y = 0; y < image.GetHeight(); ++y)
                for (int x = 0; x < width; ++x)
                    ASSERT_EQ(ColorAt(gif, x, y), test::PixelAt(image, x, y));
        }
}

TEST(GifWriter, TablesOf256ColorsAreWhole) {
    CDibImage image = test::Noise(16, 16, 8);
    for (int i = 0; i < 256; ++i)
        test::SetIndex(image, i % 16, i / 16, i);
    const PlainGif gif = Saved(image);
    EXPECT_EQ(gif.palette.size(), 256u);
    EXPECT_EQ(ColorAt(gif, 15, 15), (Rgb{255, 255, 255}));
}

TEST(GifWriter, AControlExtensionStandsBeforeThePicture) {
    CDibImage image = test::Filled(4, 1, 8, 200);
    test::SetIndex(image, 1, 0, 3);
    const std::string file = SavedBytes(image, true);
    EXPECT_EQ(file.substr(0, 6), "GIF89a");
    // Behind 13 bytes of head and a table of two: the extension, told by hand. Disposal 1 and the
    // transparency bit are 5; the first pixel has index 1.
    const std::string expected("\x21\xF9\x04\x05\x00\x00\x01\x00\x2C", 9);
    EXPECT_EQ(file.substr(13 + 6, 9), expected);
    const std::string opaque = SavedBytes(image, false);
    EXPECT_EQ(static_cast<int>(opaque[13 + 6 + 3]), 4);
    EXPECT_EQ(Saved(image, false).frames[0].transparent, -1);
    EXPECT_EQ(Saved(image, true).frames[0].delay, 0);
}

TEST(GifWriter, FewColorsOfAColorImageStayExact) {
    CDibImage image = test::Filled(30, 30, 24, 255);
    for (int i = 0; i < 255; ++i)
        test::SetPixel(image, 1 + i % 29, 1 + i / 29, {i, 255 - i, i * 7 % 256});
    const PlainGif gif = Saved(image);
    EXPECT_EQ(gif.palette.size(), 256u);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 30; ++x)
            ASSERT_EQ(ColorAt(gif, x, y), test::PixelAt(image, x, y));
}

TEST(GifWriter, ManyColorsTakeTheNearestEntryAndTheLowerOneOnATie) {
    CDibImage image = test::Noise(64, 64, 24);
    const PlainGif gif = Saved(image);
    ASSERT_EQ(gif.palette.size(), 256u);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x) {
            const Rgb pixel = test::PixelAt(image, x, y);
            int best = 0, bestDistance = 198147;
            for (int i = 0; i < 256; ++i) {
                const Rgb& entry = gif.palette[static_cast<std::size_t>(i)];
                const int red = entry.red - pixel.red, green = entry.green - pixel.green,
                          blue = entry.blue - pixel.blue;
                const int distance = red * red + green * green + blue * blue;
                if (distance < bestDistance) {
                    best = i;
                    bestDistance = distance;
                }
            }
            ASSERT_EQ(gif.frames[0].At(x, y), best) << x << ", " << y;
        }
}

TEST(GifPalette, ASmoothPageStaysNearItsColors) {
    CDibImage image = test::Filled(256, 256, 24, 0);
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 256; ++x)
            test::SetPixel(image, x, y, {x, y, (x + y) / 2});
    const std::vector<PaletteEntry> palette = BuildGifPalette(image);
    EXPECT_LE(palette.size(), 256u);
    NearestEntry nearest(palette);
    double error = 0;
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 256; ++x) {
            const Rgb pixel = test::PixelAt(image, x, y);
            const PaletteEntry& entry = palette[nearest.Of(static_cast<std::uint8_t>(pixel.blue),
                                                           static_cast<std::uint8_t>(pixel.green),
                                                           static_cast<std::uint8_t>(pixel.red))];
            const int red = entry.red - pixel.red, green = entry.green - pixel.green,
                      blue = entry.blue - pixel.blue;
            error += red * red + green * green + blue * blue;
        }
    // 256 squares of 16 by 16 levels would give 2 * (16^2 - 1) / 12 for red and green, and half
    // of one of them for blue: 53.
    EXPECT_LT(error / (256 * 256), 60);
}

TEST(GifPalette, EqualImagesGiveEqualPalettes) {
    const CDibImage image = test::Noise(90, 70, 24);
    EXPECT_EQ(BuildGifPalette(image), BuildGifPalette(image));
    const std::vector<PaletteEntry> palette = BuildGifPalette(image);
    EXPECT_EQ(palette.size(), 256u);
}

TEST(GifPalette, A257thColorMovesToAverages) {
    CDibImage image = test::Filled(257, 1, 24, 0);
    for (int x = 0; x < 257; ++x)
        test::SetPixel(image, x, 0, {x % 256, 0, x / 256});
    const std::vector<PaletteEntry> palette = BuildGifPalette(image);
    EXPECT_LT(palette.size(), 257u);
    EXPECT_GE(palette.size(), 32u);  // one for each 8 levels of red at least
}

TEST(GifWriter, AnEmptyImageIsRefusedBeforeTheFileIsTouched) {
    const test::TempFolder folder;
    test::WriteAll(folder / "a.gif", "old");
    FileError error;
    EXPECT_FALSE(SaveGif(folder / "a.gif", CDibImage(), false, false, &error));
    EXPECT_EQ(error.cause, FileError::Cause::kContent);
    EXPECT_EQ(test::ReadAll(folder / "a.gif"), "old");
}

TEST(GifWriter, SidesAbove65535AreRefused) {
    const test::TempFolder folder;
    FileError error;
    EXPECT_FALSE(SaveGif(folder / "a.gif", test::Filled(65536, 1, 1, 0), false, true, &error));
    EXPECT_EQ(error.cause, FileError::Cause::kContent);
    EXPECT_TRUE(folder.AllNames().empty());
    EXPECT_TRUE(SaveGif(folder / "a.gif", test::Filled(65535, 1, 1, 0), false, true));
}

TEST(GifWriter, AFullDiskLeavesTheOldFileAndNothingElse) {
    const test::TempFolder folder;
    test::WriteAll(folder / "a.gif", "old");
    const CDibImage image = test::Noise(500, 500, 8);
    FileError error;
    {
        const test::FullDisk full(50000);
        EXPECT_FALSE(SaveGif(folder / "a.gif", image, false, false, &error));
    }
    EXPECT_EQ(error.cause, FileError::Cause::kStorage);
    EXPECT_EQ(test::ReadAll(folder / "a.gif"), "old");
    EXPECT_EQ(folder.AllNames(), std::vector<std::string>{"a.gif"});
}

TEST(GifWriter, FailingAllocationsEndInFalseAndNoFile) {
    const test::TempFolder folder;
    const std::filesystem::path file = folder / "a.gif";
    const CDibImage image = test::Noise(40, 30, 24);
    int saved = 0;
    test::SweepFailingAllocations([&](long) {
        if (SaveGif(file, image, true, true, nullptr))
            ++saved;
    });
    EXPECT_GE(saved, 1);
    EXPECT_EQ(folder.AllNames(), std::vector<std::string>{"a.gif"});
}

}  // namespace
}  // namespace velloran
