#include <gtest/gtest.h>

#include "FullDisk.h"
#include "PlainTiff.h"
#include "codecs/FileForms.h"
#include "codecs/Tiff.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"
#include "support/TempFolder.h"

namespace velloran {
namespace {

using test::PlainTiff;
using test::Rgb;

constexpr TiffCompression kLossless[] = {TiffCompression::kNone, TiffCompression::kLzw,
                                         TiffCompression::kDeflate};

PlainTiff Saved(CDibImage& image, TiffCompression compression, int dpi = 300) {
    const test::TempFolder folder;
    FileError error;
    EXPECT_TRUE(SaveTiff(folder / "a.tif", image, compression, dpi, &error)) << error.detail;
    return test::DecodeTiff(test::ReadAll(folder / "a.tif"));
}

CDibImage SavedAndLoaded(CDibImage& image, TiffCompression compression) {
    const test::TempFolder folder;
    CDibImage again;
    EXPECT_TRUE(SaveTiff(folder / "a.tif", image, compression, 300));
    EXPECT_TRUE(LoadTiff(folder / "a.tif", again));
    return again;
}

void Colorize(CDibImage& image) {
    for (int i = 0; i < image.GetPaletteCount(); ++i)
        image.GetPalette()[i] = {static_cast<std::uint8_t>(255 - i), static_cast<std::uint8_t>(i),
                                 static_cast<std::uint8_t>(i / 2), 0};
}

TEST(TiffWriter, EveryDepthWidthAndPaletteComesBackInEachCoding) {
    for (const TiffCompression compression : kLossless)
        for (const int bpp : {1, 4, 8, 24})
            for (int width = 1; width <= 17; width += 2)
                for (const bool colored : {false, true}) {
                    CDibImage image = test::Noise(width, 1 + width % 5, bpp, 3);
                    if (colored && bpp <= 8)
                        Colorize(image);
                    const CDibImage again = SavedAndLoaded(image, compression);
                    test::ExpectSamePixels(again, image);
                    EXPECT_EQ(again.GetXDpi(), 300);
                    EXPECT_EQ(again.GetYDpi(), 300);
                }
}

TEST(TiffWriter, TheFieldsTellWhatTheSamplesMean) {
    struct Case {
        int bpp;
        bool colored;
        int photometric, bits, channels;
    };
    const Case kCases[] = {
        {1, false, PHOTOMETRIC_MINISBLACK, 1, 1}, {1, true, PHOTOMETRIC_PALETTE, 1, 1},
        {4, false, PHOTOMETRIC_MINISBLACK, 4, 1}, {4, true, PHOTOMETRIC_PALETTE, 4, 1},
        {8, false, PHOTOMETRIC_MINISBLACK, 8, 1}, {8, true, PHOTOMETRIC_PALETTE, 8, 1},
        {24, false, PHOTOMETRIC_RGB, 8, 3},
    };
    for (const Case& expected : kCases)
        for (const TiffCompression compression : kLossless) {
            CDibImage image = test::Noise(19, 5, expected.bpp);
            if (expected.colored)
                Colorize(image);
            const PlainTiff tiff = Saved(image, compression, 600);
            EXPECT_EQ(tiff.photometric, expected.photometric);
            EXPECT_EQ(tiff.bits, expected.bits);
            EXPECT_EQ(tiff.channels, expected.channels);
            EXPECT_EQ(tiff.xResolution, 600.0f);
            EXPECT_EQ(tiff.yResolution, 600.0f);
            EXPECT_EQ(tiff.resolutionUnit, RESUNIT_INCH);
            EXPECT_EQ(tiff.orientation, ORIENTATION_TOPLEFT);
            for (int y = 0; y < 5; ++y)
                for (int x = 0; x < 19; ++x)
                    if (expected.bpp == 24) {
                        const Rgb pixel = test::PixelAt(image, x, y);
                        EXPECT_EQ(tiff.At(x, y, 0), pixel.red);
                        EXPECT_EQ(tiff.At(x, y, 1), pixel.green);
                        EXPECT_EQ(tiff.At(x, y, 2), pixel.blue);
                    } else {
                        EXPECT_EQ(tiff.At(x, y), test::IndexAt(image, x, y));
                    }
        }
}

TEST(TiffWriter, PaletteLevelsAreTimes257) {
    CDibImage image = test::Noise(5, 5, 8);
    Colorize(image);
    const PlainTiff tiff = Saved(image, TiffCompression::kLzw);
    for (std::size_t i = 0; i < 256; ++i) {
        EXPECT_EQ(tiff.blue[i], (255 - i) * 257);
        EXPECT_EQ(tiff.green[i], i * 257);
        EXPECT_EQ(tiff.red[i], i / 2 * 257);
    }
}

TEST(TiffWriter, Group4KeepsBlackAndWhiteInEitherOrder) {
    for (const bool whiteFirst : {false, true}) {
        CDibImage image = test::Noise(61, 40, 1);
        if (whiteFirst)
            test::SetPalette(image, {{255, 255, 255}, {0, 0, 0}});
        EXPECT_EQ(TiffCompressionFor(image), TiffCompression::kGroup4);
        const PlainTiff tiff = Saved(image, TiffCompression::kGroup4);
        EXPECT_EQ(tiff.compression, COMPRESSION_CCITTFAX4);
        EXPECT_EQ(tiff.photometric, whiteFirst ? PHOTOMETRIC_MINISWHITE : PHOTOMETRIC_MINISBLACK);
        EXPECT_EQ(tiff.rowsPerStrip, 40);
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 61; ++x)
                ASSERT_EQ(tiff.At(x, y), test::IndexAt(image, x, y));
        test::ExpectSamePixels(SavedAndLoaded(image, TiffCompression::kGroup4), image);
    }
}

TEST(TiffWriter, OnlyBlackAndWhiteTakesGroup4) {
    const test::TempFolder folder;
    for (const int bpp : {4, 8, 24}) {
        CDibImage image = test::Noise(5, 5, bpp);
        EXPECT_EQ(TiffCompressionFor(image), TiffCompression::kLzw);
        FileError error;
        EXPECT_FALSE(SaveTiff(folder / "a.tif", image, TiffCompression::kGroup4, 300, &error));
        EXPECT_EQ(error.cause, FileError::Cause::kContent);
    }
    CDibImage twoColors = test::Noise(5, 5, 1);
    Colorize(twoColors);
    EXPECT_EQ(TiffCompressionFor(twoColors), TiffCompression::kLzw);
    EXPECT_TRUE(folder.AllNames().empty());
}

TEST(TiffWriter, JpegStaysNearGrayAndColor) {
    for (const int bpp : {8, 24}) {
        CDibImage image = test::Filled(64, 48, bpp, 0);
        for (int y = 0; y < 48; ++y)
            for (int x = 0; x < 64; ++x)
                if (bpp == 8)
                    test::SetIndex(image, x, y, x * 2 + y);
                else
                    test::SetPixel(image, x, y, {x * 2 + y, x + y, 200 - x});
        const CDibImage again = SavedAndLoaded(image, TiffCompression::kJpeg);
        ASSERT_EQ(again.GetBpp(), bpp);
        for (int y = 0; y < 48; ++y)
            for (int x = 0; x < 64; ++x) {
                const Rgb a = test::PixelAt(again, x, y), e = test::PixelAt(image, x, y);
                ASSERT_NEAR(a.red, e.red, 12);
                ASSERT_NEAR(a.green, e.green, 12);
                ASSERT_NEAR(a.blue, e.blue, 12);
            }
        EXPECT_EQ(Saved(image, TiffCompression::kJpeg).compression, COMPRESSION_JPEG);
    }
    const test::TempFolder folder;
    CDibImage palette = test::Noise(5, 5, 8);
    Colorize(palette);
    FileError error;
    EXPECT_FALSE(SaveTiff(folder / "a.tif", palette, TiffCompression::kJpeg, 300, &error));
    EXPECT_EQ(error.cause, FileError::Cause::kContent);
}

TEST(TiffWriter, AlphaPlanesComeBack) {
    for (const int bpp : {8, 24}) {
        CDibImage image = test::Noise(9, 7, bpp);
        ASSERT_TRUE(image.CreateAlpha());
        for (int i = 0; i < 63; ++i)
            image.GetAlpha()[i] = static_cast<std::uint8_t>(i * 4);
        const PlainTiff tiff = Saved(image, TiffCompression::kLzw);
        EXPECT_EQ(tiff.channels, bpp == 8 ? 2 : 4);
        EXPECT_EQ(tiff.extraSample, EXTRASAMPLE_UNASSALPHA);
        const CDibImage again = SavedAndLoaded(image, TiffCompression::kLzw);
        test::ExpectSamePixels(again, image);
        ASSERT_NE(again.GetAlpha(), nullptr);
        for (int i = 0; i < 63; ++i)
            EXPECT_EQ(again.GetAlpha()[i], i * 4);
    }
}

TEST(TiffWriter, LargePagesAreCutIntoStrips) {
    CDibImage image = test::Noise(2000, 1200, 8);
    const PlainTiff tiff = Saved(image, TiffCompression::kLzw);
    EXPECT_TRUE(tiff.predict);
    EXPECT_GT(tiff.rowsPerStrip, 100);
    EXPECT_LT(tiff.rowsPerStrip, 1200);
    test::ExpectSamePixels(SavedAndLoaded(image, TiffCompression::kDeflate), image);
}

TEST(TiffWriter, BothDpiValuesOfTheImageAreSet) {
    CDibImage image = test::Noise(3, 3, 8);
    Saved(image, TiffCompression::kNone, 600);
    EXPECT_EQ(image.GetXDpi(), 600);
    EXPECT_EQ(image.GetYDpi(), 600);
    EXPECT_EQ(Saved(image, TiffCompression::kNone, 0).xResolution, 96.0f);
}

TEST(TiffWriter, AnEmptyImageIsRefusedBeforeTheFileIsTouched) {
    const test::TempFolder folder;
    test::WriteAll(folder / "a.tif", "old");
    CDibImage image;
    FileError error;
    EXPECT_FALSE(SaveTiff(folder / "a.tif", image, TiffCompression::kLzw, 300, &error));
    EXPECT_EQ(error.cause, FileError::Cause::kContent);
    EXPECT_EQ(test::ReadAll(folder / "a.tif"), "old");
}

TEST(TiffWriter, AFullDiskLeavesTheOldFileAndNothingElse) {
    const test::TempFolder folder;
    test::WriteAll(folder / "a.tif", "old");
    CDibImage image = test::Noise(700, 700, 24);
    for (const rlim_t limit : {4096, 100000, 1000000}) {
        FileError error;
        {
            const test::FullDisk full(limit);
            EXPECT_FALSE(SaveTiff(folder / "a.tif", image, TiffCompression::kNone, 300, &error));
        }
        EXPECT_EQ(error.cause, FileError::Cause::kStorage) << limit;
        EXPECT_EQ(test::ReadAll(folder / "a.tif"), "old");
        EXPECT_EQ(folder.AllNames(), std::vector<std::string>{"a.tif"});
    }
}

TEST(TiffWriter, FailingAllocationsEndInFalseAndNoFile) {
    const test::TempFolder folder;
    const std::filesystem::path file = folder / "a.tif";
    CDibImage image = test::Noise(30, 20, 8);
    int saved = 0;
    test::SweepFailingAllocations([&](long) {
        if (SaveTiff(file, image, TiffCompression::kLzw, 300, nullptr))
            ++saved;
    });
    EXPECT_GE(saved, 1);
    EXPECT_EQ(folder.AllNames(), std::vector<std::string>{"a.tif"});
}

}  // namespace
}  // namespace velloran
