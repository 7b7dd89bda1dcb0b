// Which depth each tone step takes, and which comes out.

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "support/Images.h"
#include "tone/ToneSteps.h"

namespace velloran {
namespace {

using test::Depth;
using test::Rgb;

struct DepthCase {
    const char* name;
    CDibImage image;
    bool isColored;  // or all its entries are grey
    bool IsBlackWhite() const { return image.GetBpp() == 1 && !isColored; }
};

std::vector<Rgb> Entries(int count, bool isColored) {
    std::vector<Rgb> entries;
    for (int i = 0; i < count; ++i) {
        const int level = 255 - i * 255 / (count - 1);
        entries.push_back(isColored ? Rgb{(70 + i * 53) % 256, (200 + i * 29) % 256, level}
                                    : Rgb{level, level, level});
    }
    return entries;
}

CDibImage WithEntries(int bpp, const std::vector<Rgb>& entries) {
    CDibImage image = test::Noise(37, 26, bpp, 5);
    test::SetPalette(image, entries);
    return image;
}

std::vector<DepthCase> DepthCases() {
    return {
        {"black and white", test::Noise(37, 26, 1, 5), false},
        {"white and black", WithEntries(1, {{255, 255, 255}, {0, 0, 0}}), false},
        {"two colors", WithEntries(1, Entries(2, true)), true},
        {"16 grays", WithEntries(4, Entries(16, false)), false},
        {"16 colors", WithEntries(4, Entries(16, true)), true},
        {"gray ramp", test::Noise(37, 26, 8, 5), false},
        {"256 grays", WithEntries(8, Entries(256, false)), false},  // light ones first: no ramp
        {"256 colors", WithEntries(8, Entries(256, true)), true},
        {"pixels", test::Noise(37, 26, 24, 5), true},
    };
}

/// The same picture without a palette, in grey where it is all grey.
CDibImage Expanded(const CDibImage& image, bool inColor) {
    CDibImage samples = test::Filled(image.GetWidth(), image.GetHeight(), inColor ? 24 : 8, 0);
    for (int y = 0; y < image.GetHeight(); ++y)
        for (int x = 0; x < image.GetWidth(); ++x) {
            const Rgb c = test::PixelAt(image, x, y);
            if (inColor)
                test::SetPixel(samples, x, y, c);
            else
                test::SetIndex(samples, x, y, c.green);
        }
    return samples;
}

void ExpectDepth(const CDibImage& image, const DepthCase& before, Depth depth) {
    const int bpp = before.image.GetBpp();
    const bool isRamp = before.image.IsGrayScale();
    bool isGray = false;
    switch (depth) {
        case Depth::kKept:
            EXPECT_EQ(image.GetBpp(), bpp);
            return;
        case Depth::kNormalised:
            isGray = !before.isColored;
            break;
        case Depth::kGray:
            isGray = true;
            break;
        case Depth::kColorKept:
            isGray = isRamp;
            break;
        case Depth::kGrayUnlessRgb:
            isGray = bpp != 24;
            break;
    }
    EXPECT_EQ(image.GetBpp(), isGray ? 8 : 24);
    EXPECT_EQ(image.IsGrayScale(), isGray);
}

TEST(ToneStepDepths, EachStepLeavesTheDepthThatItIsKnownFor) {
    for (const test::ToneStep& step : test::AllToneSteps())
        for (const DepthCase& before : DepthCases()) {
            if (step.name == "equalize" && before.IsBlackWhite())
                continue;  // stays as it is
            SCOPED_TRACE(step.name + " of " + before.name);
            CDibImage image = before.image;
            step.run(image);
            EXPECT_EQ(image.GetWidth(), 37);
            EXPECT_EQ(image.GetHeight(), 26);
            ExpectDepth(image, before, step.depth);
        }
}

bool StartsWith(const std::string& name, const char* start) {
    return name.rfind(start, 0) == 0;
}

void ExpectSameColors(const CDibImage& actual, const CDibImage& expected, int tolerance) {
    for (int y = 0; y < expected.GetHeight(); ++y)
        for (int x = 0; x < expected.GetWidth(); ++x) {
            const Rgb a = test::PixelAt(actual, x, y), e = test::PixelAt(expected, x, y);
            ASSERT_NEAR(a.red, e.red, tolerance) << x << ", " << y;
            ASSERT_NEAR(a.green, e.green, tolerance) << x << ", " << y;
            ASSERT_NEAR(a.blue, e.blue, tolerance) << x << ", " << y;
        }
}

/// Whether the step works on the colors behind a palette; others map indices, or leave palettes.
bool SeesThroughPalettes(const test::ToneStep& step, const CDibImage& image) {
    if (StartsWith(step.name, "levels") || StartsWith(step.name, "vibrance"))
        return false;
    if (StartsWith(step.name, "combine") && image.GetBpp() == 1)
        return false;
    if (step.name == "combine 13" && image.GetBpp() == 8)
        return false;
    return step.name != "equalize" || image.GetBpp() > 1;
}

TEST(ToneStepDepths, APaletteOfColorsComesOutAsItsPixelsWould) {
    for (const test::ToneStep& step : test::AllToneSteps())
        for (const DepthCase& before : DepthCases()) {
            if (!before.isColored || !SeesThroughPalettes(step, before.image))
                continue;
            SCOPED_TRACE(step.name + " of " + before.name);
            CDibImage image = before.image, pixels = Expanded(before.image, /*inColor=*/true);
            if (step.name == "illumination 1" && before.image.GetBpp() < 24)
                ConvertToGray(pixels);  // by the weights of pixels; only those keep their color
            EXPECT_EQ(step.run(image), step.run(pixels));
            // Grey by rounded weights, of whole colors here and of single bytes there.
            const bool isWeighted = step.name == "combine 11" || step.name == "combine 12";
            ExpectSameColors(image, pixels, isWeighted ? 1 : 0);
        }
}

TEST(ToneStepDepths, APaletteOfGraysComesOutAsTheGrayPictureWould) {
    for (const test::ToneStep& step : test::LightSteps())
        for (const DepthCase& before : DepthCases()) {
            if (before.isColored || !SeesThroughPalettes(step, before.image))
                continue;
            SCOPED_TRACE(step.name + " of " + before.name);
            CDibImage image = before.image, gray = Expanded(before.image, /*inColor=*/false);
            EXPECT_EQ(step.run(image), step.run(gray));
            ExpectSameColors(image, gray, 0);
        }
}

TEST(ToneStepDepths, LevelsKnowSamplesOnlyAndVibrancePixelsOnly) {
    for (const DepthCase& before : DepthCases())
        for (const test::ToneStep& step : test::LightSteps()) {
            const int bpp = before.image.GetBpp();
            const bool isTaken = StartsWith(step.name, "levels") ? bpp >= 8 : bpp == 24;
            if (SeesThroughPalettes(step, before.image) || isTaken || step.name == "equalize")
                continue;
            SCOPED_TRACE(step.name + " of " + before.name);
            CDibImage image = before.image;
            EXPECT_EQ(step.run(image), 0);
            test::ExpectSamePixels(image, before.image);
        }
}

TEST(ToneStepDepths, MixesOfOneBitPicturesTellTheBitsInEveryMode) {
    for (const DepthCase& before : DepthCases())
        for (int mode = 1; mode <= 13 && before.image.GetBpp() == 1; ++mode) {
            SCOPED_TRACE(before.name + (" in mode " + std::to_string(mode)));
            CDibImage image = before.image;
            EXPECT_EQ(CombineChannels(image, mode), 1);
            ASSERT_TRUE(image.IsGrayScale());
            for (int y = 0; y < 26; ++y)
                for (int x = 0; x < 37; ++x)
                    ASSERT_EQ(test::IndexAt(image, x, y), 255 * test::IndexAt(before.image, x, y));
        }
}

TEST(ToneStepDepths, SepiaTakesTheIndicesOfAnEightBitPaletteForSamples) {
    CDibImage ramp = test::Noise(37, 26, 8, 5), palette = WithEntries(8, Entries(256, true));
    ASSERT_EQ(CombineChannels(ramp, 13), 1);
    ASSERT_EQ(CombineChannels(palette, 13), 1);
    test::ExpectSamePixels(palette, ramp);
}

TEST(ToneStepDepths, AlphaAndResolutionOutliveEveryStep) {
    for (const test::ToneStep& step : test::AllToneSteps())
        for (const int bpp : {4, 8, 24}) {
            SCOPED_TRACE(step.name + " of " + std::to_string(bpp) + " bits");
            CDibImage image = test::Noise(37, 26, bpp, 5);
            if (bpp == 4)
                test::SetPalette(image, Entries(16, true));
            image.SetXDpi(300);
            image.SetYDpi(150);
            ASSERT_TRUE(image.CreateAlpha());
            image.GetAlpha()[100] = 7;
            step.run(image);
            EXPECT_EQ(image.GetXDpi(), 300);
            EXPECT_EQ(image.GetYDpi(), 150);
            ASSERT_NE(image.GetAlpha(), nullptr);
            EXPECT_EQ(image.GetAlpha()[100], 7);
        }
}

}  // namespace
}  // namespace velloran
