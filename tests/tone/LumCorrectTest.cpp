#include "tone/LumCorrect.h"

#include <gtest/gtest.h>

#include <limits>

#include "core/DibImage.h"
#include "support/Images.h"
#include "tone/BlackWhiteText.h"
#include "tone/FrankleMcCann.h"
#include "tone/IlluminationFit.h"
#include "tone/MultiScaleRetinex.h"

namespace velloran {
namespace {

CDibImage After(int (*method)(CDibImage&)) {
    CDibImage image = test::Noise(80, 70, 24, 8);
    EXPECT_NE(method(image), 0);
    return image;
}

TEST(LumCorrect, EachValueIsItsMethod) {
    using Method = int (*)(CDibImage&);
    const Method methods[] = {
        IlluminationFit,
        [](CDibImage& image) { return MultiScaleRetinex(image, true, 210, 3, 4.0F); },
        [](CDibImage& image) { return MultiScaleRetinex(image, false, 210, 3, 4.0F); },
        [](CDibImage& image) { return FrankleMcCannRetinex(image, 1); },
        [](CDibImage& image) { return BlackWhiteText(image, false); },
        [](CDibImage& image) { return BlackWhiteText(image, true); },
    };
    for (int value = 1; value <= 6; ++value) {
        CDibImage image = test::Noise(80, 70, 24, 8);
        ASSERT_NE(LumCorrect(image, value), 0);
        test::ExpectSamePixels(image, After(methods[value - 1]));
    }
}

TEST(LumCorrect, OtherValuesAreRefused) {
    const CDibImage before = test::Noise(20, 20, 4);
    for (const int value :
         {0, -1, 7, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        CDibImage image = before;
        EXPECT_EQ(LumCorrect(image, value), 0);
        test::ExpectSamePixels(image, before);
    }
}

TEST(LumCorrect, AnEmptyImageIsRefusedByAllMethods) {
    for (int value = 1; value <= 6; ++value) {
        CDibImage empty;
        EXPECT_EQ(LumCorrect(empty, value), 0);
    }
}

TEST(LumCorrect, BlackAndWhiteTextLosesAllColorAndItsColorFormKeepsTheRedSeal) {
    CDibImage page = test::Filled(120, 90, 24, 220);
    for (int y = 30; y < 40; ++y)
        for (int x = 30; x < 40; ++x)
            test::SetPixel(page, x, y, {210, 40, 40});
    for (int x = 10; x < 110; ++x)  // the black by which the red is told
        test::SetPixel(page, x, 60, {20, 20, 20});
    CDibImage gray = page;
    ASSERT_NE(LumCorrect(gray, 5), 0);
    EXPECT_TRUE(gray.IsGrayScale());
    ASSERT_NE(LumCorrect(page, 6), 0);
    ASSERT_EQ(page.GetBpp(), 24);
    const test::Rgb seal = test::PixelAt(page, 34, 34);
    EXPECT_GT(seal.red - seal.green, 150);
}

}  // namespace
}  // namespace velloran
