#include "codecs/Jpeg2000.h"

#include <gtest/gtest.h>

#include <cmath>

#include "codecs/FileForms.h"
#include "codecs/Mutations.h"
#include "codecs/PlainJp2.h"
#include "io/MemorySink.h"
#include "support/Images.h"

namespace velloran {
namespace {

using test::BigNumber;
using test::BytesOf;
using test::Jp2Box;
using test::PixelAt;
using test::PlainJ2k;

constexpr int kRgb = 16, kGray = 17, kYcc = 18, kCmyk = 12;

bool Load(const std::string& file, CDibImage& image, FileError* error = nullptr,
          LoadNotes* notes = nullptr) {
    MemorySource source(BytesOf(file));
    LoadNotes own;
    return LoadJpeg2000(source, image, notes != nullptr ? *notes : own, error);
}

CDibImage Loaded(const std::string& file) {
    CDibImage image;
    FileError error;
    EXPECT_TRUE(Load(file, image, &error)) << error.detail;
    return image;
}

std::string Saved(CDibImage& image, int rate, int dpi) {
    MemorySink sink;
    FileError error;
    EXPECT_TRUE(SaveJp2(sink, image, rate, dpi, &error)) << error.detail;
    return {sink.Bytes().begin(), sink.Bytes().end()};
}

/// A soft picture, which codes well, with a hard edge.
CDibImage Scene(int width, int height, int bpp) {
    CDibImage image = test::Filled(width, height, bpp, 0);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int grain = (x * 7919 + y * 104729) % 23;
            const int level = (x * 255 / width + (y > height / 2 ? 90 : 0) + grain) % 256;
            if (bpp == 8)
                test::SetIndex(image, x, y, level);
            else
                test::SetPixel(image, x, y, {level, 255 - level, y * 255 / height});
        }
    return image;
}

double PsnrOf(const CDibImage& a, const CDibImage& b) {
    double sum = 0;
    for (int y = 0; y < a.GetHeight(); ++y)
        for (int x = 0; x < a.GetWidth(); ++x) {
            const test::Rgb p = PixelAt(a, x, y), q = PixelAt(b, x, y);
            sum += std::pow(p.red - q.red, 2) + std::pow(p.green - q.green, 2) +
                   std::pow(p.blue - q.blue, 2);
        }
    return 10 * std::log10(255 * 255 * 3.0 * a.GetWidth() * a.GetHeight() / std::max(sum, 1e-9));
}

TEST(Jp2Writer, RateTenOnAThousandSquaredAsksForAHundredThousandBytes) {
    EXPECT_EQ(Jp2TargetBytes(1000, 1000, 10), 100000);
    EXPECT_EQ(Jp2TargetBytes(3, 1, 15), 0);   // 0.45
    EXPECT_EQ(Jp2TargetBytes(10, 1, 15), 2);  // 1.5 goes up
}

TEST(Jp2Writer, FilesReachTheirTargetAndNeverPassIt) {
    for (const int bpp : {8, 24})
        for (const int rate : {1, 5, 15, 40, 100}) {
            CDibImage image = test::Noise(300, 200, bpp);
            const std::string file = Saved(image, rate, 300);
            const auto target = static_cast<double>(Jp2TargetBytes(300, 200, rate));
            EXPECT_LE(static_cast<double>(file.size()), target) << bpp << " bits at " << rate;
            // Noise breaks into few large pieces, so a target of 600 bytes is not used up.
            if (rate >= 5) {
                EXPECT_GE(static_cast<double>(file.size()), target * 0.9) << bpp << " at " << rate;
            }
        }
}

TEST(Jp2Writer, MoreBytesGiveABetterPicture) {
    for (const int bpp : {8, 24}) {
        const CDibImage image = Scene(240, 160, bpp);
        double last = 0;
        for (const int rate : {4, 15, 50}) {
            CDibImage copy(image);
            const CDibImage read = Loaded(Saved(copy, rate, 300));
            ASSERT_EQ(read.GetBpp(), bpp);
            const double psnr = PsnrOf(image, read);
            EXPECT_GT(psnr, last) << bpp << " bits at " << rate;
            last = psnr;
        }
        EXPECT_GT(last, 40) << bpp;
    }
}

TEST(Jp2Writer, TellsSizeColourAndResolution) {
    CDibImage image = Scene(70, 50, 24);
    const std::string file = Saved(image, 80, 300);
    EXPECT_EQ(test::FindBox(file, "jp2h/ihdr"), BigNumber(50, 4) + BigNumber(70, 4) +
                                                    BigNumber(3, 2) + BigNumber(7, 1) +
                                                    BigNumber(7, 1) + BigNumber(0, 2));
    EXPECT_EQ(test::FindBox(file, "jp2h/colr"),
              BigNumber(1, 1) + BigNumber(0, 2) + BigNumber(kRgb, 4));
    // 300 / 254 * 10^4 pixels a metre, vertical and horizontal.
    const std::string dpi = BigNumber(300, 2) + BigNumber(254, 2);
    EXPECT_EQ(test::FindBox(file, "jp2h/res /resc"), dpi + dpi + BigNumber(0x0404, 2));
    EXPECT_EQ(test::FindBox(file, "jp2h/res /resd"), dpi + dpi + BigNumber(0x0404, 2));
    const PlainJ2k plain = test::DecodeJ2k(test::FindBox(file, "jp2c"));
    EXPECT_EQ(plain.width, 70);
    ASSERT_EQ(plain.components.size(), 3U);
    // The library's own reading of the top left pixel: red first.
    const test::Rgb first = PixelAt(image, 0, 0);
    EXPECT_NEAR(plain.components[0].samples[0], first.red, 8);
    EXPECT_NEAR(plain.components[1].samples[0], first.green, 8);
    EXPECT_NEAR(plain.components[2].samples[0], first.blue, 8);
}

TEST(Jp2Writer, GrayPagesHoldOneComponent) {
    CDibImage image = Scene(64, 64, 8);
    const std::string file = Saved(image, 50, 300);
    EXPECT_EQ(test::FindBox(file, "jp2h/colr").substr(3), BigNumber(kGray, 4));
    EXPECT_EQ(test::DecodeJ2k(test::FindBox(file, "jp2c")).components.size(), 1U);
}

TEST(Jp2Writer, TheVerticalResolutionGoesToTheHorizontalOne) {
    CDibImage image = Scene(20, 20, 8);
    image.SetXDpi(72);
    image.SetYDpi(144);
    Saved(image, 50, 600);
    EXPECT_EQ(image.GetXDpi(), 144);
    EXPECT_EQ(image.GetYDpi(), 600);
}

TEST(Jp2Writer, SmallPicturesAndBlackAndWhiteAreCoded) {
    for (const auto& [width, height] : {std::pair(1, 1), {1, 40}, {40, 1}, {2, 3}, {17, 5}}) {
        CDibImage image = test::Filled(width, height, 1, 255);
        const CDibImage read = Loaded(Saved(image, 100, 300));
        EXPECT_EQ(read.GetWidth(), width);
        EXPECT_EQ(read.GetHeight(), height);
        EXPECT_EQ(PixelAt(read, 0, 0), (test::Rgb{255, 255, 255}));
    }
}

TEST(Jp2Writer, AnEmptyImageWritesNothing) {
    CDibImage image;
    MemorySink sink;
    EXPECT_FALSE(SaveJp2(sink, image, 15, 300, nullptr));
    EXPECT_EQ(sink.Size(), 0U);
}

TEST(Jp2Writer, AFullDiskIsAFailureOfStorage) {
    CDibImage image = Scene(64, 64, 24);
    MemorySink sink(100);
    FileError error;
    EXPECT_FALSE(SaveJp2(sink, image, 50, 300, &error));
    EXPECT_EQ(error.cause, FileError::Cause::kStorage);
}

TEST(Jp2Reader, EveryDepthBecomesEightBitsByOneRule) {
    for (int bits = 1; bits <= 16; ++bits)
        for (const bool isSigned : {false, true}) {
            const PlainJ2k picture = test::J2kOfNoise(13, 9, 1, bits, isSigned);
            const CDibImage image = Loaded(test::EncodeJ2k(picture));
            ASSERT_EQ(image.GetBpp(), 8);
            for (int y = 0; y < 9; ++y)
                for (int x = 0; x < 13; ++x) {
                    const int most = (1 << bits) - 1;
                    const int level =
                        picture.components[0].samples[static_cast<std::size_t>(y * 13 + x)] +
                        (isSigned ? 1 << (bits - 1) : 0);
                    const int expected = bits > 8 ? level >> (bits - 8)
                                                  : static_cast<int>(level * 255.0 / most + 0.5);
                    ASSERT_EQ(PixelAt(image, x, y).red, expected)
                        << bits << " bits at " << x << ", " << y;
                }
        }
}

TEST(Jp2Reader, ColourInAnyNumberOfTilesIsExact) {
    for (const int tileSide : {0, 16, 7}) {
        PlainJ2k picture = test::J2kOfNoise(40, 30, 3, 8);
        picture.tileSide = tileSide;
        const std::string stream = test::EncodeJ2k(picture);
        for (const std::string& file :
             {stream, test::Jp2File(test::Jp2Header(picture, kRgb), "", stream)}) {
            const CDibImage image = Loaded(file);
            for (std::size_t i = 0; i < 1200; ++i)
                ASSERT_EQ(
                    PixelAt(image, static_cast<int>(i % 40), static_cast<int>(i / 40)),
                    (test::Rgb{picture.components[0].samples[i], picture.components[1].samples[i],
                               picture.components[2].samples[i]}))
                    << "tiles of " << tileSide;
        }
    }
}

TEST(Jp2Reader, SubsampledYccBecomesRgb) {
    PlainJ2k picture = test::J2kOfNoise(16, 12, 3, 8);
    for (std::size_t c = 1; c < 3; ++c) {
        picture.components[c].xStep = picture.components[c].yStep = 2;
        picture.components[c].samples.resize(8 * 6);
    }
    const std::string stream = test::EncodeJ2k(picture);
    const CDibImage image = Loaded(test::Jp2File(test::Jp2Header(picture, kYcc), "", stream));
    const CDibImage bare = Loaded(stream);
    for (int y = 0; y < 12; ++y)
        for (int x = 0; x < 16; ++x) {
            const double luma = picture.components[0].samples[static_cast<std::size_t>(y * 16 + x)];
            const auto at = static_cast<std::size_t>(y / 2 * 8 + x / 2);
            const double cb = picture.components[1].samples[at] - 128.0;
            const double cr = picture.components[2].samples[at] - 128.0;
            const test::Rgb pixel = PixelAt(image, x, y);
            ASSERT_NEAR(pixel.red, std::clamp(luma + 1.402 * cr, 0.0, 255.0), 0.6);
            ASSERT_NEAR(pixel.green, std::clamp(luma - 0.344136 * cb - 0.714136 * cr, 0.0, 255.0),
                        0.6);
            ASSERT_NEAR(pixel.blue, std::clamp(luma + 1.772 * cb, 0.0, 255.0), 0.6);
            ASSERT_EQ(PixelAt(bare, x, y), pixel);
        }
}

TEST(Jp2Reader, PalettesGiveTheirColours) {
    PlainJ2k picture = test::J2kOfNoise(9, 7, 1, 2);
    const std::string palette = BigNumber(4, 2) + BigNumber(3, 1) + std::string(3, '\x07') +
                                std::string("\x00\x00\x00\xFF\x01\x02\x03\xFE\x05\x09\x08\xFD", 12);
    const std::string mapping = BigNumber(0, 2) + BigNumber(0x0100, 2) + BigNumber(0, 2) +
                                BigNumber(0x0101, 2) + BigNumber(0, 2) + BigNumber(0x0102, 2);
    const std::string file = test::Jp2File(
        test::Jp2Header(picture, kRgb, 2) + Jp2Box("pclr", palette) + Jp2Box("cmap", mapping), "",
        test::EncodeJ2k(picture));
    const CDibImage image = Loaded(file);
    constexpr test::Rgb kColors[] = {{0, 0, 0}, {255, 1, 2}, {3, 254, 5}, {9, 8, 253}};
    for (std::size_t i = 0; i < 63; ++i)
        ASSERT_EQ(PixelAt(image, static_cast<int>(i % 9), static_cast<int>(i / 9)),
                  kColors[picture.components[0].samples[i]]);
    ImageInfo info;
    MemorySource source(BytesOf(file));
    ASSERT_TRUE(ReadJpeg2000Info(source, info, nullptr));
    EXPECT_EQ(info.colorsUsed, 4);
    EXPECT_EQ(info.bitsPerPixel, 2);
    EXPECT_FALSE(info.gray);
}

TEST(Jp2Reader, AnOpacityChannelGoesToTheAlphaPlane) {
    PlainJ2k picture = test::J2kOfNoise(9, 7, 4, 8);
    std::string channels = BigNumber(4, 2);
    for (int i = 0; i < 4; ++i)
        channels += BigNumber(static_cast<std::uint64_t>(i), 2) + BigNumber(i == 3 ? 1 : 0, 2) +
                    BigNumber(static_cast<std::uint64_t>(i == 3 ? 0 : i + 1), 2);
    const std::string stream = test::EncodeJ2k(picture);
    for (const std::string& file :
         {test::Jp2File(test::Jp2Header(picture, kRgb) + Jp2Box("cdef", channels), "", stream),
          stream}) {
        const CDibImage image = Loaded(file);
        ASSERT_NE(image.GetAlpha(), nullptr);
        for (int y = 0; y < 7; ++y)
            for (int x = 0; x < 9; ++x) {
                const auto i = static_cast<std::size_t>(y * 9 + x);
                ASSERT_EQ(image.GetAlpha()[(6 - y) * 9 + x], picture.components[3].samples[i]);
                ASSERT_EQ(PixelAt(image, x, y).green, picture.components[1].samples[i]);
            }
    }
}

TEST(Jp2Reader, FourInksAreMixed) {
    PlainJ2k picture = test::J2kOfNoise(2, 1, 4, 8);
    for (std::size_t c = 0; c < 4; ++c)
        picture.components[c].samples = {0, c == 3 ? 255 : 0};
    const CDibImage image =
        Loaded(test::Jp2File(test::Jp2Header(picture, kCmyk), "", test::EncodeJ2k(picture)));
    EXPECT_EQ(PixelAt(image, 0, 0), (test::Rgb{255, 255, 255}));
    EXPECT_EQ(PixelAt(image, 1, 0), (test::Rgb{35, 31, 32}));  // 0.1373, 0.1216, 0.1255 of 255
}

TEST(Jp2Reader, ResolutionComesFromTheCaptureBoxFirst) {
    const PlainJ2k picture = test::J2kOfNoise(5, 4, 1, 8);
    const std::string stream = test::EncodeJ2k(picture);
    const auto box = [](const char* name, int vertical, int horizontal) {
        return Jp2Box(name, BigNumber(static_cast<std::uint64_t>(vertical), 2) + BigNumber(1, 2) +
                                BigNumber(static_cast<std::uint64_t>(horizontal), 2) +
                                BigNumber(1, 2) + BigNumber(0, 1) + BigNumber(1, 1));
    };
    // 11811 and 5906 pixels a metre are 300 and 150 dpi; the horizontal one is told in tens.
    const std::string capture = box("resc", 11811, 591), display = box("resd", 3937, 394);
    struct Case {
        std::string boxes;
        int x, y;
    };
    for (const Case& c : {Case{capture, 150, 300},
                          {display + capture, 150, 300},
                          {capture + display, 150, 300},
                          {display, 100, 100},
                          {"", 96, 96}}) {
        const std::string file = test::Jp2File(
            test::Jp2Header(picture, kGray) + (c.boxes.empty() ? "" : Jp2Box("res ", c.boxes)), "",
            stream);
        const CDibImage image = Loaded(file);
        EXPECT_EQ(image.GetXDpi(), c.x);
        EXPECT_EQ(image.GetYDpi(), c.y);
    }
}

TEST(Jp2Reader, InfoTellsWhatLoads) {
    CDibImage image = Scene(70, 50, 24);
    const std::string file = Saved(image, 80, 300);
    ImageInfo info;
    MemorySource source(BytesOf(file));
    ASSERT_TRUE(ReadJpeg2000Info(source, info, nullptr));
    EXPECT_EQ(info.width, 70);
    EXPECT_EQ(info.height, 50);
    EXPECT_EQ(info.bitsPerPixel, 24);
    EXPECT_EQ(info.xDpi, 300);
    EXPECT_EQ(info.yDpi, 300);
    EXPECT_FALSE(info.gray);
}

TEST(Jp2Reader, AHeadBeyondTheLimitsIsRefusedByItself) {
    const PlainJ2k picture = test::J2kOfNoise(5, 4, 1, 8);
    std::string stream = test::EncodeJ2k(picture);
    // Sides stand 8 bytes behind the start; then the place of the tile's sides, 16 further on.
    stream.replace(8, 8, BigNumber(100000, 4) + BigNumber(100000, 4));
    FileError error;
    CDibImage image;
    EXPECT_FALSE(Load(stream, image, &error));
    EXPECT_EQ(error.reason, FileReason::kTooLarge);
    stream.replace(8, 8, BigNumber(30000, 4) + BigNumber(30000, 4));
    error = {};
    EXPECT_FALSE(Load(stream, image, &error));
    EXPECT_EQ(error.reason, FileReason::kDamaged);
    EXPECT_FALSE(image.IsValid());
}

TEST(Jp2Reader, ATileThatClaimsMoreThanTheFileHoldsIsReadAsFarAsItGoes) {
    const PlainJ2k picture = test::J2kOfNoise(30, 20, 1, 8);
    std::string stream = test::EncodeJ2k(picture);
    const std::size_t tile = stream.find("\xFF\x90");
    ASSERT_NE(tile, std::string::npos);
    stream.replace(tile + 6, 4, BigNumber(0x85000000, 4));
    CDibImage image;
    FileError error;
    ASSERT_TRUE(Load(stream, image, &error)) << error.detail;
    EXPECT_EQ(PixelAt(image, 7, 9).red, picture.components[0].samples[9 * 30 + 7]);
}

TEST(Jp2Reader, FilesThatBreakOffLoadInPartOrNotAtAll) {
    CDibImage image = Scene(120, 90, 24);
    const std::string file = Saved(image, 40, 300);
    int readable = 0;
    for (const std::string& cut : test::TruncationsOf(file)) {
        CDibImage read;
        LoadNotes notes;
        FileError error;
        if (Load(cut, read, &error, &notes)) {
            EXPECT_TRUE(notes.damaged) << cut.size();
            ++readable;
        } else {
            EXPECT_FALSE(read.IsValid());
            EXPECT_NE(error.cause, FileError::Cause::kNone) << cut.size();
        }
    }
    EXPECT_GT(readable, 20);
}

TEST(Jp2Reader, DamagedFilesEndInAMessageOrAPicture) {
    CDibImage image = Scene(40, 30, 24);
    const std::string file = Saved(image, 60, 300);
    for (const std::string& whole : {file, test::FindBox(file, "jp2c")})
        test::ForEachMutation(whole, 300, 7, [](const std::string& damaged) {
            CDibImage read;
            FileError error;
            const bool loaded = Load(damaged, read, &error);
            EXPECT_EQ(loaded, read.IsValid());
            EXPECT_TRUE(loaded || error.cause != FileError::Cause::kNone);
        });
}

}  // namespace
}  // namespace velloran
