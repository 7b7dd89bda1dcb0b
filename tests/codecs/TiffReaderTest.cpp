#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "Mutations.h"
#include "PlainTiff.h"
#include "codecs/Cmyk.h"
#include "codecs/FileForms.h"
#include "codecs/Tiff.h"
#include "support/Images.h"
#include "support/SharedData.h"
#include "support/TempFolder.h"

namespace velloran {
namespace {

using test::BytesOf;
using test::PlainTiff;
using test::Rgb;

CDibImage Loaded(const PlainTiff& tiff) {
    CDibImage image;
    FileError error;
    EXPECT_TRUE(LoadTiffBytes(BytesOf(EncodeTiff(tiff)), image, &error)) << error.detail;
    return image;
}

ImageInfo InfoOf(const PlainTiff& tiff) {
    ImageInfo info;
    EXPECT_TRUE(ReadTiffInfo(BytesOf(EncodeTiff(tiff)), info, nullptr));
    return info;
}

int AlphaAt(const CDibImage& image, int x, int y) {
    return image.GetAlpha()[(image.GetHeight() - 1 - y) * image.GetWidth() + x];
}

/// The colour of a pixel by the meaning of the fields alone; not for alpha and orientations.
Rgb ColorOf(const PlainTiff& tiff, int x, int y) {
    const auto byteOf = [&](int channel) {
        const int sample = tiff.At(x, y, channel);
        return tiff.bits == 16 ? sample / 256 : sample;
    };
    if (tiff.photometric == PHOTOMETRIC_PALETTE) {
        const auto index = static_cast<std::size_t>(tiff.At(x, y));
        return {tiff.red[index] / 256, tiff.green[index] / 256, tiff.blue[index] / 256};
    }
    if (tiff.photometric == PHOTOMETRIC_RGB)
        return {byteOf(0), byteOf(1), byteOf(2)};
    if (tiff.photometric == PHOTOMETRIC_SEPARATED) {
        std::uint8_t inks[4], bgr[3];
        for (int c = 0; c < 4; ++c)
            inks[c] = static_cast<std::uint8_t>(byteOf(c));
        ConvertCmykRow(inks, bgr, 1, false);
        return {bgr[2], bgr[1], bgr[0]};
    }
    const int top = tiff.bits == 16 ? 255 : (1 << tiff.bits) - 1;
    int level = byteOf(0) * 255 / top;
    if (tiff.photometric == PHOTOMETRIC_MINISWHITE)
        level = 255 - level;
    return {level, level, level};
}

struct Kind {
    const char* name;
    int bits, channels, photometric, pageBits, sourceColours;
    bool identityGray;
};
void PrintTo(const Kind& kind, std::ostream* out) {
    *out << kind.name;
}
constexpr Kind kKinds[] = {
    {"BlackIsZero1", 1, 1, PHOTOMETRIC_MINISBLACK, 1, 1, false},
    {"WhiteIsZero1", 1, 1, PHOTOMETRIC_MINISWHITE, 1, 1, false},
    {"BlackIsZero2", 2, 1, PHOTOMETRIC_MINISBLACK, 4, 4, false},
    {"WhiteIsZero2", 2, 1, PHOTOMETRIC_MINISWHITE, 4, 4, false},
    {"BlackIsZero4", 4, 1, PHOTOMETRIC_MINISBLACK, 4, 4, false},
    {"WhiteIsZero4", 4, 1, PHOTOMETRIC_MINISWHITE, 4, 4, false},
    {"BlackIsZero8", 8, 1, PHOTOMETRIC_MINISBLACK, 8, 8, true},
    {"WhiteIsZero8", 8, 1, PHOTOMETRIC_MINISWHITE, 8, 8, true},
    {"BlackIsZero16", 16, 1, PHOTOMETRIC_MINISBLACK, 8, 16, true},
    {"WhiteIsZero16", 16, 1, PHOTOMETRIC_MINISWHITE, 8, 16, true},
    {"Palette1", 1, 1, PHOTOMETRIC_PALETTE, 1, 1, false},
    {"Palette2", 2, 1, PHOTOMETRIC_PALETTE, 4, 4, false},
    {"Palette4", 4, 1, PHOTOMETRIC_PALETTE, 4, 4, false},
    {"Palette8", 8, 1, PHOTOMETRIC_PALETTE, 8, 8, false},
    {"Rgb8", 8, 3, PHOTOMETRIC_RGB, 24, 24, false},
    {"Rgb16", 16, 3, PHOTOMETRIC_RGB, 24, 48, false},
    {"Cmyk8", 8, 4, PHOTOMETRIC_SEPARATED, 24, 32, false},
    {"Cmyk16", 16, 4, PHOTOMETRIC_SEPARATED, 24, 64, false},
};

class TiffKinds : public testing::TestWithParam<Kind> {
 protected:
    static PlainTiff Page(int width, int height) {
        const Kind& kind = GetParam();
        PlainTiff tiff =
            test::TiffOfNoise(width, height, kind.bits, kind.channels, kind.photometric, 5);
        if (kind.photometric == PHOTOMETRIC_PALETTE)
            test::AddPalette(tiff);
        return tiff;
    }
    static void ExpectLoads(const PlainTiff& tiff, const char* what) {
        const CDibImage image = Loaded(tiff);
        ASSERT_EQ(image.GetWidth(), tiff.width) << what;
        ASSERT_EQ(image.GetHeight(), tiff.height) << what;
        ASSERT_EQ(image.GetBpp(), GetParam().pageBits) << what;
        for (int y = 0; y < tiff.height; ++y)
            for (int x = 0; x < tiff.width; ++x)
                ASSERT_EQ(test::PixelAt(image, x, y), ColorOf(tiff, x, y))
                    << what << " at " << x << ", " << y << " of " << tiff.width;
    }
};
INSTANTIATE_TEST_SUITE_P(All, TiffKinds, testing::ValuesIn(kKinds),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_P(TiffKinds, KeepEveryPixelAtEveryWidth) {
    for (int width = 1; width <= 17; ++width)
        ExpectLoads(Page(width, 1 + width % 5), "plain");
}

TEST_P(TiffKinds, KeepEveryPixelInEachCodingAndByteOrder) {
    for (const int compression :
         {COMPRESSION_NONE, COMPRESSION_PACKBITS, COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE})
        for (const bool bigEndian : {false, true})
            for (const int rowsPerStrip : {0, 1, 7}) {
                PlainTiff tiff = Page(37, 23);
                tiff.compression = compression;
                tiff.bigEndian = bigEndian;
                tiff.rowsPerStrip = rowsPerStrip;
                tiff.predict = compression >= COMPRESSION_LZW && tiff.bits >= 8 &&
                               compression != COMPRESSION_PACKBITS && rowsPerStrip == 7;
                ExpectLoads(tiff, "coded");
            }
}

TEST_P(TiffKinds, KeepEveryPixelInTiles) {
    for (const int compression : {COMPRESSION_NONE, COMPRESSION_LZW})
        for (const int width : {1, 16, 17, 50}) {
            PlainTiff tiff = Page(width, 35);
            tiff.compression = compression;
            tiff.tileSize = 16;
            ExpectLoads(tiff, "tiled");
        }
}

TEST_P(TiffKinds, KeepEveryPixelInSeparatePlanes) {
    for (const int tileSize : {0, 16})
        for (const int rowsPerStrip : {0, 4}) {
            PlainTiff tiff = Page(21, 19);
            tiff.separate = true;
            tiff.compression = COMPRESSION_LZW;
            tiff.tileSize = tileSize;
            tiff.rowsPerStrip = rowsPerStrip;
            ExpectLoads(tiff, "separate");
        }
}

TEST_P(TiffKinds, TellTheirHead) {
    const Kind& kind = GetParam();
    PlainTiff tiff = Page(9, 4);
    tiff.resolutionUnit = RESUNIT_INCH;
    tiff.xResolution = 300;
    tiff.yResolution = 150;
    const CDibImage image = Loaded(tiff);
    EXPECT_EQ(image.Source().sourceColours, static_cast<unsigned>(kind.sourceColours));
    EXPECT_EQ(image.Source().sourceFlag, 300u);
    EXPECT_EQ(image.GetXDpi(), 300);
    EXPECT_EQ(image.GetYDpi(), 150);
    EXPECT_EQ(image.IsGrayScale(), kind.identityGray);
    const ImageInfo info = InfoOf(tiff);
    EXPECT_EQ(info.width, 9);
    EXPECT_EQ(info.height, 4);
    EXPECT_EQ(info.bitsPerPixel, kind.bits * kind.channels);
    EXPECT_EQ(info.colorsUsed, kind.photometric == PHOTOMETRIC_PALETTE ? 1 << kind.bits : 0);
    EXPECT_EQ(info.gray, kind.identityGray);
    EXPECT_EQ(info.xDpi, 300);
    EXPECT_EQ(info.yDpi, 150);
}

TEST(TiffFax, Group3And4KeepTheirMeaningWhicheverIsZero) {
    for (const int compression :
         {COMPRESSION_CCITTFAX4, COMPRESSION_CCITTFAX3, COMPRESSION_CCITTRLE})
        for (const int photometric : {PHOTOMETRIC_MINISWHITE, PHOTOMETRIC_MINISBLACK}) {
            PlainTiff tiff = test::TiffOfNoise(61, 40, 1, 1, photometric);
            tiff.compression = compression;
            const CDibImage image = Loaded(tiff);
            ASSERT_TRUE(image.IsBW());
            for (int y = 0; y < 40; ++y)
                for (int x = 0; x < 61; ++x)
                    ASSERT_EQ(test::PixelAt(image, x, y), ColorOf(tiff, x, y));
        }
}

TEST(TiffJpeg, GrayAndColorEqualThePlainDecoderAndStayNearTheirLevels) {
    for (const int photometric : {PHOTOMETRIC_MINISBLACK, PHOTOMETRIC_RGB, PHOTOMETRIC_YCBCR})
        for (const int tileSize : {0, 32}) {
            const int channels = photometric == PHOTOMETRIC_MINISBLACK ? 1 : 3;
            PlainTiff tiff = test::TiffOfNoise(50, 40, 8, channels, photometric);
            for (int y = 0; y < 40; ++y)
                for (int x = 0; x < 50; ++x)
                    for (int c = 0; c < channels; ++c)
                        tiff.At(x, y, c) = x * (c == 0 ? 2 : 1) + y + 30 * c;
            tiff.compression = COMPRESSION_JPEG;
            tiff.tileSize = tileSize;
            tiff.rowsPerStrip = 16;
            const CDibImage image = Loaded(tiff);
            PlainTiff decoded = tiff;
            if (tileSize == 0)
                decoded = test::DecodeTiff(EncodeTiff(tiff));
            ASSERT_EQ(image.GetBpp(), channels == 1 ? 8 : 24);
            for (int y = 0; y < 40; ++y)
                for (int x = 0; x < 50; ++x) {
                    const Rgb pixel = test::PixelAt(image, x, y);
                    const int levels[] = {pixel.red, pixel.green, pixel.blue};
                    for (int c = 0; c < channels; ++c) {
                        ASSERT_NEAR(levels[c], tiff.At(x, y, c), 24) << photometric;
                        if (tileSize == 0) {
                            ASSERT_EQ(levels[c], decoded.At(x, y, c)) << photometric;
                        }
                    }
                }
        }
}

TEST(TiffLab, GoesThroughTheLibrarysOwnConversion) {
    PlainTiff tiff = test::TiffOfNoise(20, 10, 8, 3, PHOTOMETRIC_CIELAB);
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 20; ++x) {
            tiff.At(x, y, 0) = y < 5 ? 255 : 0;  // white above black
            tiff.At(x, y, 1) = tiff.At(x, y, 2) = 0;
        }
    const CDibImage image = Loaded(tiff);
    ASSERT_EQ(image.GetBpp(), 24);
    EXPECT_GE(test::PixelAt(image, 3, 0).green, 245);
    EXPECT_GE(test::PixelAt(image, 3, 4).green, 245);
    EXPECT_LE(test::PixelAt(image, 3, 5).green, 5);
    EXPECT_LE(test::PixelAt(image, 3, 9).green, 5);
}

TEST(TiffAlpha, UnassociatedAlphaGoesToThePlane) {
    for (const int channels : {2, 4})
        for (const int bits : {8, 16})
            for (const bool separate : {false, true}) {
                PlainTiff tiff =
                    test::TiffOfNoise(11, 6, bits, channels,
                                      channels == 2 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
                tiff.extraSample = EXTRASAMPLE_UNASSALPHA;
                tiff.separate = separate;
                const CDibImage image = Loaded(tiff);
                ASSERT_EQ(image.GetBpp(), channels == 2 ? 8 : 24);
                ASSERT_NE(image.GetAlpha(), nullptr);
                for (int y = 0; y < 6; ++y)
                    for (int x = 0; x < 11; ++x) {
                        ASSERT_EQ(test::PixelAt(image, x, y), ColorOf(tiff, x, y));
                        const int alpha = tiff.At(x, y, channels - 1);
                        ASSERT_EQ(AlphaAt(image, x, y), bits == 16 ? alpha / 256 : alpha);
                    }
            }
}

TEST(TiffAlpha, AssociatedAlphaIsDividedOut) {
    PlainTiff tiff = test::TiffOfNoise(4, 1, 8, 4, PHOTOMETRIC_RGB);
    tiff.samples = {50, 100, 25, 100, 128, 0, 64, 128, 9, 8, 7, 0, 200, 255, 1, 255};
    tiff.extraSample = EXTRASAMPLE_ASSOCALPHA;
    const CDibImage image = Loaded(tiff);
    // 50 * 255 / 100 = 127.5, 25 * 255 / 100 = 63.75
    EXPECT_EQ(test::PixelAt(image, 0, 0), (Rgb{128, 255, 64}));
    EXPECT_EQ(test::PixelAt(image, 1, 0), (Rgb{255, 0, 128}));  // 127.5
    EXPECT_EQ(test::PixelAt(image, 2, 0), (Rgb{9, 8, 7}));
    EXPECT_EQ(test::PixelAt(image, 3, 0), (Rgb{200, 255, 1}));
    EXPECT_EQ(AlphaAt(image, 0, 0), 100);
    EXPECT_EQ(AlphaAt(image, 2, 0), 0);
}

TEST(TiffAlpha, SamplesOfUnknownMeaningAndOpaqueOnesAreDropped) {
    PlainTiff tiff = test::TiffOfNoise(4, 3, 8, 4, PHOTOMETRIC_RGB);
    tiff.extraSample = EXTRASAMPLE_UNSPECIFIED;
    EXPECT_EQ(Loaded(tiff).GetAlpha(), nullptr);
    tiff.extraSample = EXTRASAMPLE_UNASSALPHA;
    EXPECT_NE(Loaded(tiff).GetAlpha(), nullptr);
    for (int i = 3; i < 48; i += 4)
        tiff.samples[static_cast<std::size_t>(i)] = 255;
    EXPECT_EQ(Loaded(tiff).GetAlpha(), nullptr);
}

struct Upright {
    int orientation;
    bool sideways;
    /// The stored place of the picture's pixel (x, y); last column w, last row h as stored.
    int (*column)(int x, int y, int w);
    int (*row)(int x, int y, int h);
};
constexpr Upright kUpright[] = {
    {1, false, [](int x, int, int) { return x; }, [](int, int y, int) { return y; }},
    {2, false, [](int x, int, int w) { return w - x; }, [](int, int y, int) { return y; }},
    {3, false, [](int x, int, int w) { return w - x; }, [](int, int y, int h) { return h - y; }},
    {4, false, [](int x, int, int) { return x; }, [](int, int y, int h) { return h - y; }},
    {5, true, [](int, int y, int) { return y; }, [](int x, int, int) { return x; }},
    {6, true, [](int, int y, int) { return y; }, [](int x, int, int h) { return h - x; }},
    {7, true, [](int, int y, int w) { return w - y; }, [](int x, int, int h) { return h - x; }},
    {8, true, [](int, int y, int w) { return w - y; }, [](int x, int, int) { return x; }},
};

TEST(TiffOrientation, EveryOneStandsUpright) {
    for (const Upright& upright : kUpright)
        for (const int bits : {1, 8}) {
            PlainTiff tiff = test::TiffOfNoise(13, 6, bits, 1, PHOTOMETRIC_MINISBLACK);
            tiff.orientation = upright.orientation;
            tiff.resolutionUnit = RESUNIT_INCH;
            tiff.xResolution = 200;
            tiff.yResolution = 100;
            const CDibImage image = Loaded(tiff);
            const ImageInfo info = InfoOf(tiff);
            ASSERT_EQ(image.GetWidth(), upright.sideways ? 6 : 13);
            ASSERT_EQ(image.GetHeight(), upright.sideways ? 13 : 6);
            EXPECT_EQ(image.GetXDpi(), upright.sideways ? 100 : 200);
            EXPECT_EQ(image.GetYDpi(), upright.sideways ? 200 : 100);
            EXPECT_EQ(info.width, image.GetWidth());
            EXPECT_EQ(info.height, image.GetHeight());
            EXPECT_EQ(info.xDpi, image.GetXDpi());
            for (int y = 0; y < image.GetHeight(); ++y)
                for (int x = 0; x < image.GetWidth(); ++x)
                    ASSERT_EQ(test::IndexAt(image, x, y),
                              tiff.At(upright.column(x, y, 12), upright.row(x, y, 5)))
                        << "orientation " << upright.orientation << " at " << x << ", " << y;
        }
}

TEST(TiffOrientation, AlsoThroughTheLibrarysOwnConversion) {
    PlainTiff tiff = test::TiffOfNoise(20, 10, 8, 3, PHOTOMETRIC_CIELAB);
    tiff.samples.assign(tiff.samples.size(), 0);
    for (int y = 0; y < 10; ++y)
        tiff.At(0, y, 0) = 255;  // a white left column
    tiff.orientation = ORIENTATION_RIGHTTOP;
    const CDibImage image = Loaded(tiff);
    ASSERT_EQ(image.GetWidth(), 10);
    ASSERT_EQ(image.GetHeight(), 20);
    for (int x = 0; x < 10; ++x) {
        EXPECT_GE(test::PixelAt(image, x, 0).green, 245);
        EXPECT_LE(test::PixelAt(image, x, 1).green, 5);
    }
}

TEST(TiffResolution, CentimetersBecomeInchesRounded) {
    PlainTiff tiff = test::TiffOfNoise(3, 3, 8, 1, PHOTOMETRIC_MINISBLACK);
    EXPECT_EQ(Loaded(tiff).GetXDpi(), 96);
    tiff.resolutionUnit = RESUNIT_CENTIMETER;
    tiff.xResolution = 118;  // 299.72
    tiff.yResolution = 59;   // 149.86
    EXPECT_EQ(Loaded(tiff).GetXDpi(), 300);
    EXPECT_EQ(Loaded(tiff).GetYDpi(), 150);
    tiff.resolutionUnit = RESUNIT_NONE;
    EXPECT_EQ(Loaded(tiff).GetXDpi(), 96);
    tiff.resolutionUnit = RESUNIT_INCH;
    tiff.yResolution = 0;
    EXPECT_EQ(Loaded(tiff).GetYDpi(), 118);
}

TEST(TiffReader, PalettesOfEightBitLevelsAreTakenAsTheyAre) {
    PlainTiff tiff = test::TiffOfNoise(5, 5, 4, 1, PHOTOMETRIC_PALETTE);
    for (int i = 0; i < 16; ++i) {
        tiff.red.push_back(static_cast<std::uint16_t>(i * 3));
        tiff.green.push_back(static_cast<std::uint16_t>(i * 5));
        tiff.blue.push_back(static_cast<std::uint16_t>(255 - i));
    }
    const CDibImage image = Loaded(tiff);
    EXPECT_EQ(image.GetPalette()[7], (PaletteEntry{248, 35, 21, 0}));
}

TEST(TiffReader, SharedPicturesEqualThePlainDecoder) {
    const std::filesystem::path data = test::SharedData();
    if (data.empty())
        GTEST_SKIP() << "no shared pictures";
    int count = 0;
    for (const char* name :
         {"scans/feyn.tif", "scans/pageseg2.tif", "scans/table.15.tif", "scans/witten.tif",
          "scans/rgb16.tif", "depths/miniswhite.tif", "depths/minisblack.tif",
          "depths/checkerboard1.tif", "depths/jpeg-coded.tif"}) {
        const PlainTiff tiff = test::DecodeTiff(test::ReadAll(data / name));
        CDibImage image;
        ASSERT_TRUE(LoadTiff(data / name, image)) << name;
        ASSERT_EQ(image.GetWidth(), tiff.width) << name;
        ASSERT_EQ(image.GetHeight(), tiff.height) << name;
        if (tiff.xResolution > 0 && tiff.resolutionUnit == RESUNIT_INCH) {
            EXPECT_EQ(image.GetXDpi(), std::lround(tiff.xResolution)) << name;
        }
        int differing = 0;
        for (int y = 0; y < tiff.height; ++y)
            for (int x = 0; x < tiff.width; ++x)
                differing += test::PixelAt(image, x, y) == ColorOf(tiff, x, y) ? 0 : 1;
        EXPECT_EQ(differing, 0) << name;
        ++count;
    }
    EXPECT_EQ(count, 9);
}

}  // namespace
}  // namespace velloran
