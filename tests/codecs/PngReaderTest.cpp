#include <gtest/gtest.h>
#include <png.h>

#include <cmath>
#include <filesystem>

#include "Mutations.h"
#include "PlainPng.h"
#include "codecs/FileForms.h"
#include "codecs/Png.h"
#include "support/Images.h"
#include "support/SharedData.h"
#include "support/TempFolder.h"

namespace velloran {
namespace {

using test::BytesOf;
using test::PlainPng;
using test::Rgb;

CDibImage Loaded(const PlainPng& png) {
    CDibImage image;
    FileError error;
    EXPECT_TRUE(LoadPngBytes(BytesOf(EncodePng(png)), image, &error)) << error.detail;
    return image;
}

/// The colour of a pixel by the rules of the format alone.
Rgb ColorOf(const PlainPng& png, int x, int y) {
    const int top = (1 << png.bitDepth) - 1;
    const auto level = [&](int channel) {
        const int sample = png.At(x, y, channel);
        return png.bitDepth == 16 ? sample / 256 : sample * 255 / top;
    };
    if (png.colorType == PNG_COLOR_TYPE_PALETTE)
        return png.palette[static_cast<std::size_t>(png.At(x, y, 0))];
    if (png.Channels() < 3)
        return {level(0), level(0), level(0)};
    return {level(0), level(1), level(2)};
}

int AlphaAt(const CDibImage& image, int x, int y) {
    return image.GetAlpha()[(image.GetHeight() - 1 - y) * image.GetWidth() + x];
}

struct Kind {
    const char* name;
    int bitDepth, colorType, pageBits, sourceColours, fileBits;
    bool identityGray, alpha;
};
void PrintTo(const Kind& kind, std::ostream* out) {
    *out << kind.name;
}
constexpr Kind kKinds[] = {
    {"Gray1", 1, PNG_COLOR_TYPE_GRAY, 1, 1, 1, false, false},
    {"Gray2", 2, PNG_COLOR_TYPE_GRAY, 4, 4, 2, false, false},
    {"Gray4", 4, PNG_COLOR_TYPE_GRAY, 4, 4, 4, false, false},
    {"Gray8", 8, PNG_COLOR_TYPE_GRAY, 8, 8, 8, true, false},
    {"Gray16", 16, PNG_COLOR_TYPE_GRAY, 8, 16, 16, true, false},
    {"Palette1", 1, PNG_COLOR_TYPE_PALETTE, 1, 1, 1, false, false},
    {"Palette2", 2, PNG_COLOR_TYPE_PALETTE, 4, 4, 2, false, false},
    {"Palette4", 4, PNG_COLOR_TYPE_PALETTE, 4, 4, 4, false, false},
    {"Palette8", 8, PNG_COLOR_TYPE_PALETTE, 8, 8, 8, false, false},
    {"Rgb8", 8, PNG_COLOR_TYPE_RGB, 24, 24, 24, false, false},
    {"Rgb16", 16, PNG_COLOR_TYPE_RGB, 24, 48, 48, false, false},
    {"GrayAlpha8", 8, PNG_COLOR_TYPE_GRAY_ALPHA, 8, 16, 16, true, true},
    {"GrayAlpha16", 16, PNG_COLOR_TYPE_GRAY_ALPHA, 8, 32, 32, true, true},
    {"Rgba8", 8, PNG_COLOR_TYPE_RGB_ALPHA, 24, 32, 32, false, true},
    {"Rgba16", 16, PNG_COLOR_TYPE_RGB_ALPHA, 24, 64, 64, false, true},
};

class PngKinds : public testing::TestWithParam<Kind> {};
INSTANTIATE_TEST_SUITE_P(All, PngKinds, testing::ValuesIn(kKinds),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_P(PngKinds, KeepEveryPixelAtEveryWidthInterlacedOrNot) {
    const Kind& kind = GetParam();
    for (int width = 1; width <= 17; ++width)
        for (const bool interlaced : {false, true}) {
            PlainPng png = test::PngOfNoise(width, 1 + width % 9, kind.bitDepth, kind.colorType, 7);
            png.interlaced = interlaced;
            if (kind.alpha)
                png.At(0, 0, png.Channels() - 1) = 0;  // never opaque throughout
            const CDibImage image = Loaded(png);
            ASSERT_EQ(image.GetWidth(), width);
            ASSERT_EQ(image.GetHeight(), png.height);
            ASSERT_EQ(image.GetBpp(), kind.pageBits);
            ASSERT_EQ(image.GetAlpha() != nullptr, kind.alpha);
            for (int y = 0; y < png.height; ++y)
                for (int x = 0; x < width; ++x) {
                    ASSERT_EQ(test::PixelAt(image, x, y), ColorOf(png, x, y))
                        << width << " interlaced " << interlaced << " at " << x << ", " << y;
                    const int alpha = png.At(x, y, png.Channels() - 1);
                    if (kind.alpha) {
                        ASSERT_EQ(AlphaAt(image, x, y), kind.bitDepth == 16 ? alpha / 256 : alpha);
                    }
                }
        }
}

TEST_P(PngKinds, TellDepthAndGrayness) {
    const Kind& kind = GetParam();
    PlainPng png = test::PngOfNoise(5, 4, kind.bitDepth, kind.colorType);
    png.xPerMeter = 11811;  // 300 DPI
    png.yPerMeter = 5906;   // 150 DPI
    const CDibImage image = Loaded(png);
    EXPECT_EQ(image.Source().sourceColours, static_cast<unsigned>(kind.sourceColours));
    EXPECT_EQ(image.Source().sourceFlag, 300u);
    EXPECT_EQ(image.IsGrayScale(), kind.identityGray);
    EXPECT_EQ(image.GetXDpi(), 300);
    EXPECT_EQ(image.GetYDpi(), 150);
    ImageInfo info;
    ASSERT_TRUE(ReadPngInfo(BytesOf(EncodePng(png)), info, nullptr));
    EXPECT_EQ(info.width, 5);
    EXPECT_EQ(info.height, 4);
    EXPECT_EQ(info.bitsPerPixel, kind.fileBits);
    EXPECT_EQ(info.colorsUsed, static_cast<int>(png.palette.size()));
    EXPECT_EQ(info.gray, kind.identityGray);
    EXPECT_EQ(info.xDpi, 300);
    EXPECT_EQ(info.yDpi, 150);
}

TEST(PngReader, OneBitGrayTakesABlackAndWhitePalette) {
    const CDibImage image = Loaded(test::PngOfNoise(9, 9, 1, PNG_COLOR_TYPE_GRAY));
    EXPECT_TRUE(image.IsBW());
    EXPECT_EQ(image.GetPalette()[0], (PaletteEntry{0, 0, 0, 0}));
}

TEST(PngReader, RowPaddingIsZero) {
    PlainPng png = test::PngOfNoise(3, 2, 1, PNG_COLOR_TYPE_GRAY);
    png.samples.assign(6, 1);
    const CDibImage image = Loaded(png);
    for (int y = 0; y < 2; ++y) {
        EXPECT_EQ(image.GetBits(y)[0], 0xE0);
        for (int i = 1; i < 4; ++i)
            EXPECT_EQ(image.GetBits(y)[i], 0);
    }
}

TEST(PngReader, AnEightBitPaletteThatIsTheIdentityRampCountsAsGray) {
    PlainPng png = test::PngOfNoise(4, 4, 8, PNG_COLOR_TYPE_PALETTE);
    for (int i = 0; i < 256; ++i)
        png.palette[static_cast<std::size_t>(i)] = {i, i, i};
    EXPECT_TRUE(Loaded(png).IsGrayScale());
    ImageInfo info;
    ASSERT_TRUE(ReadPngInfo(BytesOf(EncodePng(png)), info, nullptr));
    EXPECT_TRUE(info.gray);
    png.palette.pop_back();
    for (int& sample : png.samples)
        sample = sample % 255;
    EXPECT_FALSE(Loaded(png).IsGrayScale());
}

TEST(PngReader, ShortPalettesLeaveTheOtherEntriesBlack) {
    PlainPng png = test::PngOfNoise(4, 4, 4, PNG_COLOR_TYPE_PALETTE);
    png.palette.resize(3, {});
    for (int& sample : png.samples)
        sample %= 3;
    const CDibImage image = Loaded(png);
    EXPECT_EQ(image.GetPalette()[3], PaletteEntry{});
    ImageInfo info;
    ASSERT_TRUE(ReadPngInfo(BytesOf(EncodePng(png)), info, nullptr));
    EXPECT_EQ(info.colorsUsed, 3);
}

TEST(PngTransparency, OneClearEntryBecomesTheTransparentIndex) {
    PlainPng png = test::PngOfNoise(4, 4, 4, PNG_COLOR_TYPE_PALETTE);
    png.paletteAlpha = {255, 255, 0};
    const CDibImage image = Loaded(png);
    EXPECT_EQ(image.Fields().backgroundIndex, 2);
    EXPECT_EQ(image.Fields().alphaPaletteEnabled, 0);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(image.GetPalette()[i].reserved, 0);
}

TEST(PngTransparency, HalfClearEntriesStayInThePalette) {
    PlainPng png = test::PngOfNoise(4, 4, 4, PNG_COLOR_TYPE_PALETTE);
    png.paletteAlpha = {255, 128, 0};
    const CDibImage image = Loaded(png);
    EXPECT_EQ(image.Fields().backgroundIndex, 2);
    EXPECT_EQ(image.Fields().alphaPaletteEnabled, 1);
    EXPECT_EQ(image.GetPalette()[0].reserved, 255);
    EXPECT_EQ(image.GetPalette()[1].reserved, 128);
    EXPECT_EQ(image.GetPalette()[2].reserved, 0);
    EXPECT_EQ(image.GetPalette()[15].reserved, 255);
}

TEST(PngTransparency, TwoClearEntriesSetNoTransparentIndex) {
    PlainPng png = test::PngOfNoise(4, 4, 8, PNG_COLOR_TYPE_PALETTE);
    png.paletteAlpha = {0, 0};
    const CDibImage image = Loaded(png);
    EXPECT_EQ(image.Fields().backgroundIndex, -1);
    EXPECT_EQ(image.Fields().alphaPaletteEnabled, 1);
}

TEST(PngTransparency, AClearGrayLevelBecomesTheTransparentIndex) {
    for (const int depth : {1, 2, 4, 8}) {
        PlainPng png = test::PngOfNoise(6, 5, depth, PNG_COLOR_TYPE_GRAY);
        png.transparent = {1};
        const CDibImage image = Loaded(png);
        EXPECT_EQ(image.Fields().backgroundIndex, 1) << depth;
        EXPECT_EQ(image.GetAlpha(), nullptr) << depth;
    }
}

TEST(PngTransparency, AClearColorOrWideGrayBecomesAnAlphaPlane) {
    for (const int colorType : {PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_RGB})
        for (const int depth : {8, 16})
            for (const bool interlaced : {false, true}) {
                if (colorType == PNG_COLOR_TYPE_GRAY && depth == 8)
                    continue;
                PlainPng png = test::PngOfNoise(6, 5, depth, colorType);
                png.interlaced = interlaced;
                png.transparent = {png.At(2, 3, 0)};
                if (colorType == PNG_COLOR_TYPE_RGB)
                    png.transparent = {png.At(2, 3, 0), png.At(2, 3, 1), png.At(2, 3, 2)};
                const CDibImage image = Loaded(png);
                ASSERT_NE(image.GetAlpha(), nullptr);
                EXPECT_EQ(AlphaAt(image, 2, 3), 0);
                EXPECT_EQ(AlphaAt(image, 2, 2), 255);
                EXPECT_EQ(test::PixelAt(image, 1, 1), ColorOf(png, 1, 1));
            }
}

TEST(PngTransparency, AlphaThatIsOpaqueThroughoutIsDropped) {
    PlainPng png = test::PngOfNoise(4, 3, 8, PNG_COLOR_TYPE_RGB_ALPHA);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x)
            png.At(x, y, 3) = 255;
    const CDibImage image = Loaded(png);
    EXPECT_EQ(image.GetAlpha(), nullptr);
    EXPECT_EQ(image.GetBpp(), 24);
    EXPECT_EQ(image.Source().sourceColours, 32u);
}

TEST(PngResolution, UnknownUnitsAndSenselessValuesGive96) {
    PlainPng png = test::PngOfNoise(2, 2, 8, PNG_COLOR_TYPE_GRAY);
    EXPECT_EQ(Loaded(png).GetXDpi(), 96);
    png.xPerMeter = png.yPerMeter = 11811;
    png.meters = false;
    EXPECT_EQ(Loaded(png).GetXDpi(), 96);
    png.meters = true;
    png.xPerMeter = 0x7FFFFFFF;
    EXPECT_EQ(Loaded(png).GetXDpi(), 96);
    EXPECT_EQ(Loaded(png).GetYDpi(), 300);
    png.xPerMeter = 2835;  // 72.009
    EXPECT_EQ(Loaded(png).GetXDpi(), 72);
}

TEST(PngReader, FilesLoadAndTheSourceRecordKeepsItsName) {
    const test::TempFolder folder;
    const PlainPng png = test::PngOfNoise(20, 10, 8, PNG_COLOR_TYPE_RGB);
    test::WriteAll(folder / "a.png", EncodePng(png));
    CDibImage image;
    image.Source().sourceName = "kept";
    ASSERT_TRUE(LoadPng(folder / "a.png", image));
    EXPECT_EQ(image.Source().sourceName, "kept");
    EXPECT_EQ(test::PixelAt(image, 19, 9), ColorOf(png, 19, 9));
    FileError error;
    EXPECT_FALSE(LoadPng(folder / "none.png", image, &error));
    EXPECT_NE(error.cause, FileError::Cause::kNone);
    EXPECT_EQ(image.GetWidth(), 20);
}

TEST(PngReader, SharedPicturesEqualThePlainDecoder) {
    const std::filesystem::path data = test::SharedData();
    if (data.empty())
        GTEST_SKIP() << "no shared pictures";
    int count = 0;
    for (const char* sub : {"scans", "depths"})
        for (const auto& entry : std::filesystem::directory_iterator(data / sub)) {
            if (entry.path().extension() != ".png")
                continue;
            const PlainPng png = test::DecodePng(test::ReadAll(entry.path()));
            CDibImage image;
            ASSERT_TRUE(LoadPng(entry.path(), image)) << entry.path();
            ASSERT_EQ(image.GetWidth(), png.width) << entry.path();
            ASSERT_EQ(image.GetHeight(), png.height) << entry.path();
            if (png.xPerMeter != 0 && png.meters) {
                EXPECT_EQ(image.GetXDpi(), std::lround(png.xPerMeter * 0.0254)) << entry.path();
            }
            int differing = 0;
            for (int y = 0; y < png.height; ++y)
                for (int x = 0; x < png.width; ++x)
                    differing += test::PixelAt(image, x, y) == ColorOf(png, x, y) ? 0 : 1;
            EXPECT_EQ(differing, 0) << entry.path();
            ++count;
        }
    EXPECT_GE(count, 10);
}

}  // namespace
}  // namespace velloran
