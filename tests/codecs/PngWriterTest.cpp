#include <gtest/gtest.h>
#include <png.h>

#include "FullDisk.h"
#include "PlainPng.h"
#include "codecs/FileForms.h"
#include "codecs/Png.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"
#include "support/TempFolder.h"

namespace velloran {
namespace {

using test::PlainPng;
using test::Rgb;

PlainPng Saved(CDibImage& image, int dpi = 300, bool grayTransparent = false) {
    const test::TempFolder folder;
    FileError error;
    EXPECT_TRUE(SavePng(folder / "a.png", image, dpi, grayTransparent, &error)) << error.detail;
    return test::DecodePng(test::ReadAll(folder / "a.png"));
}

CDibImage SavedAndLoaded(CDibImage& image) {
    const test::TempFolder folder;
    CDibImage again;
    EXPECT_TRUE(SavePng(folder / "a.png", image, 300, false));
    EXPECT_TRUE(LoadPng(folder / "a.png", again));
    return again;
}

/// A palette of different colours, none of them grey.
void Colorize(CDibImage& image) {
    for (int i = 0; i < image.GetPaletteCount(); ++i)
        image.GetPalette()[i] = {static_cast<std::uint8_t>(255 - i), static_cast<std::uint8_t>(i),
                                 static_cast<std::uint8_t>(i / 2), 0};
}

void MakeAlpha(CDibImage& image) {
    ASSERT_TRUE(image.CreateAlpha());
    for (int i = 0; i < image.GetWidth() * image.GetHeight(); ++i)
        image.GetAlpha()[i] = static_cast<std::uint8_t>(i * 5);
}

void ExpectSameAlpha(const CDibImage& actual, const CDibImage& expected) {
    ASSERT_NE(actual.GetAlpha(), nullptr);
    const int count = expected.GetWidth() * expected.GetHeight();
    EXPECT_EQ(std::vector<int>(actual.GetAlpha(), actual.GetAlpha() + count),
              std::vector<int>(expected.GetAlpha(), expected.GetAlpha() + count));
}

TEST(PngWriter, EveryDepthWidthAndPaletteComesBack) {
    for (const int bpp : {1, 4, 8, 24})
        for (int width = 1; width <= 17; ++width)
            for (const bool colored : {false, true}) {
                CDibImage image = test::Noise(width, 1 + width % 5, bpp, 3);
                if (colored && bpp <= 8)
                    Colorize(image);
                // Entries behind the last one in use are not written.
                if (colored && bpp <= 8)
                    test::SetIndex(image, 0, 0, (1 << bpp) - 1);
                const CDibImage again = SavedAndLoaded(image);
                test::ExpectSamePixels(again, image);
                EXPECT_EQ(again.GetXDpi(), 300);
                EXPECT_EQ(again.GetYDpi(), 300);
            }
}

TEST(PngWriter, EveryDpiUpTo8000ComesBack) {
    const test::TempFolder folder;
    CDibImage image = test::Filled(1, 1, 8, 9);
    for (int dpi = 1; dpi <= 8000; dpi += dpi < 100 ? 1 : 79) {
        CDibImage again;
        ASSERT_TRUE(SavePng(folder / "a.png", image, dpi, false));
        ASSERT_TRUE(LoadPng(folder / "a.png", again));
        ASSERT_EQ(again.GetXDpi(), dpi);
    }
}

TEST(PngWriter, BothDpiValuesOfTheImageAreSet) {
    CDibImage image = test::Filled(2, 2, 8, 9);
    const PlainPng png = Saved(image, 600);
    EXPECT_EQ(image.GetXDpi(), 600);
    EXPECT_EQ(image.GetYDpi(), 600);
    EXPECT_EQ(png.xPerMeter, 23622u);  // 600 / 0.0254
    EXPECT_EQ(png.yPerMeter, 23622u);
    EXPECT_TRUE(png.meters);
    Saved(image, 0);
    EXPECT_EQ(image.GetXDpi(), 96);
}

TEST(PngWriter, GrayRampsAreWrittenAsGray) {
    for (const int bpp : {1, 4, 8}) {
        CDibImage image = test::Noise(19, 3, bpp);
        const PlainPng png = Saved(image);
        EXPECT_EQ(png.colorType, PNG_COLOR_TYPE_GRAY);
        EXPECT_EQ(png.bitDepth, bpp);
        for (int x = 0; x < 19; ++x)
            EXPECT_EQ(png.At(x, 2, 0), test::IndexAt(image, x, 2));
    }
}

TEST(PngWriter, BlackAndWhiteWithWhiteFirstKeepsItsMeaningAsGray) {
    CDibImage image = test::Noise(19, 3, 1);
    test::SetPalette(image, {{255, 255, 255}, {0, 0, 0}});
    const PlainPng png = Saved(image);
    EXPECT_EQ(png.colorType, PNG_COLOR_TYPE_GRAY);
    EXPECT_EQ(png.bitDepth, 1);
    for (int x = 0; x < 19; ++x)
        EXPECT_EQ(png.At(x, 1, 0), 1 - test::IndexAt(image, x, 1));
    image.Fields().backgroundIndex = 0;  // white
    EXPECT_EQ(Saved(image).transparent, std::vector<int>{1});
}

TEST(PngWriter, PalettesEndWithTheLastEntryInUse) {
    CDibImage image = test::Filled(5, 5, 8, 0);
    Colorize(image);
    test::SetIndex(image, 4, 4, 20);
    PlainPng png = Saved(image);
    EXPECT_EQ(png.colorType, PNG_COLOR_TYPE_PALETTE);
    ASSERT_EQ(png.palette.size(), 21u);
    EXPECT_EQ(png.palette[20], (Rgb{10, 20, 235}));
    EXPECT_EQ(png.At(4, 4, 0), 20);
    // The transparent index stays, though no pixel uses it.
    image.Fields().backgroundIndex = 30;
    png = Saved(image);
    EXPECT_EQ(png.palette.size(), 31u);
    ASSERT_EQ(png.paletteAlpha.size(), 31u);
    EXPECT_EQ(png.paletteAlpha[30], 0);
    EXPECT_EQ(png.paletteAlpha[29], 255);
}

TEST(PngWriter, ColorGoesOutAsRedGreenBlue) {
    CDibImage image = test::FromRows({{1, 2, 3, 4, 5, 6}, {7, 8, 9, 10, 11, 12}}, 3);
    const PlainPng png = Saved(image);
    EXPECT_EQ(png.colorType, PNG_COLOR_TYPE_RGB);
    EXPECT_EQ(png.samples, (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
}

TEST(PngWriter, AlphaPlanesComeBackWithGrayAndColor) {
    for (const int bpp : {8, 24}) {
        CDibImage image = test::Noise(9, 7, bpp);
        MakeAlpha(image);
        EXPECT_EQ(Saved(image).colorType,
                  bpp == 8 ? PNG_COLOR_TYPE_GRAY_ALPHA : PNG_COLOR_TYPE_RGB_ALPHA);
        const CDibImage again = SavedAndLoaded(image);
        test::ExpectSamePixels(again, image);
        ExpectSameAlpha(again, image);
    }
}

TEST(PngWriter, PaletteImagesWithAnAlphaPlaneBecomeColorWithAlpha) {
    for (const int bpp : {1, 4, 8}) {
        CDibImage image = test::Noise(9, 7, bpp);
        Colorize(image);
        MakeAlpha(image);
        const CDibImage again = SavedAndLoaded(image);
        EXPECT_EQ(again.GetBpp(), 24);
        ExpectSameAlpha(again, image);
        for (int y = 0; y < 7; ++y)
            for (int x = 0; x < 9; ++x)
                EXPECT_EQ(test::PixelAt(again, x, y), test::PixelAt(image, x, y));
    }
}

TEST(PngWriter, PaletteAlphaComesBack) {
    CDibImage image = test::Noise(9, 7, 4);
    Colorize(image);
    for (int i = 0; i < 16; ++i)
        image.GetPalette()[i].reserved = static_cast<std::uint8_t>(i * 16);
    image.Fields().alphaPaletteEnabled = 1;
    test::SetIndex(image, 0, 0, 15);
    test::ExpectSamePixels(SavedAndLoaded(image), image);  // compares whole entries
    // A palette without any alpha is opaque, whatever the flag says.
    Colorize(image);
    EXPECT_TRUE(Saved(image).paletteAlpha.empty());
}

TEST(PngGrayTransparency, Level255BecomesTransparent) {
    CDibImage image = test::Noise(6, 6, 8);
    EXPECT_EQ(Saved(image, 300, true).transparent, std::vector<int>{255});
    EXPECT_TRUE(Saved(image, 300, false).transparent.empty());
}

TEST(PngGrayTransparency, AnIndexThatIsSetStays) {
    CDibImage image = test::Noise(6, 6, 8);
    image.Fields().backgroundIndex = 7;
    EXPECT_EQ(Saved(image, 300, true).transparent, std::vector<int>{7});
}

TEST(PngGrayTransparency, OnlyTheIdentityRampTakesIt) {
    CDibImage image = test::Noise(6, 6, 8);
    image.GetPalette()[9].red = 200;
    const PlainPng palette = Saved(image, 300, true);
    EXPECT_TRUE(palette.paletteAlpha.empty());
    CDibImage narrow = test::Noise(6, 6, 4);
    EXPECT_TRUE(Saved(narrow, 300, true).transparent.empty());
    CDibImage color = test::Noise(6, 6, 24);
    EXPECT_TRUE(Saved(color, 300, true).transparent.empty());
}

TEST(PngWriter, AnEmptyImageIsRefusedBeforeTheFileIsTouched) {
    const test::TempFolder folder;
    test::WriteAll(folder / "a.png", "old");
    CDibImage image;
    FileError error;
    EXPECT_FALSE(SavePng(folder / "a.png", image, 300, false, &error));
    EXPECT_EQ(error.cause, FileError::Cause::kContent);
    EXPECT_EQ(test::ReadAll(folder / "a.png"), "old");
    EXPECT_FALSE(SavePng(folder / "b.png", image, 300, false));
    EXPECT_EQ(folder.AllNames(), std::vector<std::string>{"a.png"});
}

TEST(PngWriter, AFolderThatDoesNotExistIsAStorageFailure) {
    const test::TempFolder folder;
    CDibImage image = test::Filled(2, 2, 8, 9);
    FileError error;
    EXPECT_FALSE(SavePng(folder / "none" / "a.png", image, 300, false, &error));
    EXPECT_EQ(error.cause, FileError::Cause::kStorage);
}

TEST(PngWriter, AFullDiskLeavesTheOldFileAndNothingElse) {
    const test::TempFolder folder;
    test::WriteAll(folder / "a.png", "old");
    CDibImage image = test::Noise(400, 400, 24);
    FileError error;
    {
        const test::FullDisk full(100000);
        EXPECT_FALSE(SavePng(folder / "a.png", image, 300, false, &error));
    }
    EXPECT_EQ(error.cause, FileError::Cause::kStorage);
    EXPECT_EQ(test::ReadAll(folder / "a.png"), "old");
    EXPECT_EQ(folder.AllNames(), std::vector<std::string>{"a.png"});
}

TEST(PngWriter, StrayBitsBehindTheLastPixelDoNotReachTheFile) {
    const test::TempFolder folder;
    CDibImage clean = test::Filled(3, 1, 1, 1);
    CDibImage stray = clean;
    stray.GetBits(0)[0] = 0xFF;
    ASSERT_TRUE(SavePng(folder / "a.png", clean, 300, false));
    ASSERT_TRUE(SavePng(folder / "b.png", stray, 300, false));
    EXPECT_EQ(test::ReadAll(folder / "a.png"), test::ReadAll(folder / "b.png"));
}

TEST(PngWriter, FailingAllocationsEndInFalseAndNoFile) {
    const test::TempFolder folder;
    CDibImage image = test::Noise(30, 20, 8);
    Colorize(image);
    const std::filesystem::path file = folder / "a.png";
    int saved = 0;
    test::SweepFailingAllocations([&](long) {
        if (SavePng(file, image, 300, false, nullptr))
            ++saved;
    });
    EXPECT_GE(saved, 1);
    EXPECT_EQ(folder.AllNames(), std::vector<std::string>{"a.png"});
}

}  // namespace
}  // namespace velloran
