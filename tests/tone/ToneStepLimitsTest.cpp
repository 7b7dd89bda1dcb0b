// What every tone step has in common: any size, any number, any count of threads, little memory.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"
#include "support/Threads.h"
#include "tone/ToneSteps.h"

namespace velloran {
namespace {

TEST(ToneSteps, ThreadsChangeNoByte) {
    for (const test::ToneStep& step : test::AllToneSteps())
        for (const int bpp : {8, 24}) {
            SCOPED_TRACE(step.name + " of " + std::to_string(bpp) + " bits");
            const CDibImage before = test::Noise(530, 127, bpp, 3);
            CDibImage first;
            for (const int count : {1, 2, 7}) {
                const test::Threads threads(count);
                CDibImage image = before;
                step.run(image);
                if (count == 1)
                    first = image;
                test::ExpectSamePixels(image, first);
            }
        }
}

TEST(ToneSteps, ThatLookAtOnePixelTreatItAlikeInAPictureOfAnySize) {
    for (const test::ToneStep& step : test::AllToneSteps())
        for (const int bpp : {8, 24}) {
            if (!step.isPointwise)
                continue;
            const CDibImage before = test::Noise(40, 40, bpp, 8);
            CDibImage whole = before;
            step.run(whole);
            for (int width = step.smallestSide; width <= 17; ++width)
                for (const int height : {step.smallestSide, 2, 3, 8, 17}) {
                    SCOPED_TRACE(step.name + " of " + std::to_string(width) + " by " +
                                 std::to_string(height));
                    CDibImage part = test::CutOut(before, 11, 5, width, height);
                    step.run(part);
                    test::ExpectSamePixels(part, test::CutOut(whole, 11, 5, width, height));
                }
        }
}

TEST(ToneSteps, RunFromTheirSmallestSideOnAndRefuseBelow) {
    for (const test::ToneStep& step : test::AllToneSteps())
        for (const int width : {1, 2, 3, 7, 8, 13, 17})
            for (const int height : {1, 2, 5, 7, 8, 16}) {
                SCOPED_TRACE(step.name + " of " + std::to_string(width) + " by " +
                             std::to_string(height));
                const CDibImage before = test::Noise(width, height, 24);
                CDibImage image = before;
                const int done = step.run(image);
                if (std::min(width, height) < step.smallestSide) {
                    EXPECT_EQ(done, 0);
                    test::ExpectSamePixels(image, before);
                } else if (step.name.find("balance") == std::string::npos) {
                    EXPECT_NE(done, 0);  // a balance may hand on to levels that find nothing to do
                }
                EXPECT_EQ(image.GetWidth(), width);
                EXPECT_EQ(image.GetHeight(), height);
            }
}

TEST(ToneSteps, NeverTouchTheRowPadding) {
    for (const test::ToneStep& step : test::AllToneSteps())
        for (const int bpp : {8, 24}) {
            SCOPED_TRACE(step.name + " of " + std::to_string(bpp) + " bits");
            CDibImage image = test::Noise(19, 17, bpp);
            const auto used = static_cast<std::uint32_t>(19 * bpp / 8);
            for (int y = 0; y < 17; ++y)
                std::fill(image.GetBits(y) + used, image.GetBits(y) + image.GetEffWidth(),
                          std::uint8_t{99});
            step.run(image);
            if (image.GetBpp() != bpp || step.name == "combine 13")
                continue;  // it is another block then
            for (int y = 0; y < 17; ++y)
                for (std::uint32_t x = used; x < image.GetEffWidth(); ++x)
                    ASSERT_EQ(image.GetBits(y)[x], 99);
        }
}

TEST(ToneSteps, PicturesOfOneColorComeOutInOneColor) {
    for (const test::ToneStep& step : test::AllToneSteps())
        for (const int level : {0, 1, 7, 128, 254, 255})
            for (const int bpp : {8, 24}) {
                SCOPED_TRACE(step.name + " of level " + std::to_string(level));
                CDibImage image = test::Filled(21, 13, bpp, static_cast<std::uint8_t>(level));
                step.run(image);
                for (int y = 0; y < 13; ++y)
                    for (int x = 0; x < 21; ++x)
                        ASSERT_EQ(test::PixelAt(image, x, y), test::PixelAt(image, 0, 0));
            }
}

TEST(ToneSteps, StrongColorsAlonePassEveryStep) {
    for (const test::ToneStep& step : test::AllToneSteps())
        for (int corner = 0; corner < 8; ++corner) {
            SCOPED_TRACE(step.name + " of corner " + std::to_string(corner));
            CDibImage image = test::Filled(16, 16, 24, 0);
            for (int y = 0; y < 16; ++y)
                for (int x = 0; x < 16; ++x)
                    test::SetPixel(
                        image, x, y,
                        {255 * (corner & 1), 255 * (corner >> 1 & 1), 255 * (corner >> 2)});
            step.run(image);
            ASSERT_EQ(image.GetWidth(), 16);
            for (int x = 1; x < 16; ++x)
                ASSERT_EQ(test::PixelAt(image, x, 9), test::PixelAt(image, 0, 0));
        }
}

TEST(ToneSteps, TakeAnyNumberForAnyOfTheirValues) {
    for (const test::ToneStep& step : test::ExtremeToneSteps())
        for (const int bpp : {1, 4, 8, 24}) {
            SCOPED_TRACE(step.name);
            CDibImage image = test::Noise(19, 11, bpp, 2);
            step.run(image);
            EXPECT_TRUE(image.IsValid());
            EXPECT_EQ(image.GetWidth(), 19);
            EXPECT_EQ(image.GetHeight(), 11);
        }
}

TEST(ToneSteps, AnEmptyImageIsRefused) {
    for (const test::ToneStep& step : test::AllToneSteps()) {
        CDibImage empty;
        EXPECT_EQ(step.run(empty), 0) << step.name;
        EXPECT_FALSE(empty.IsValid());
    }
}

TEST(ToneSteps, APageWiderThanSixteenBitsReachToItsEnd) {
    // A strip repeated along the row: what looks at single pixels does the same to all of it.
    constexpr int kWidth = 40000, kPeriod = 500, kHeight = 9;
    for (const int bpp : {8, 24}) {
        const CDibImage strip = test::Noise(kPeriod, kHeight, bpp, 4);
        CDibImage before = test::Filled(kWidth, kHeight, bpp, 0);
        const int bytes = kPeriod * bpp / 8;
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth * bpp / 8; ++x)
                before.GetBits(y)[x] = strip.GetBits(y)[x % bytes];
        for (const test::ToneStep& step : test::AllToneSteps()) {
            SCOPED_TRACE(step.name + " of " + std::to_string(bpp) + " bits");
            CDibImage image = before, alone = strip;
            step.run(image);
            ASSERT_EQ(image.GetWidth(), kWidth);
            if (!step.isPointwise)
                continue;
            step.run(alone);
            test::ExpectSamePixels(test::CutOut(image, kWidth - kPeriod, 0, kPeriod, kHeight),
                                   alone);
        }
    }
}

/// As it was, or in the grey that the step makes of it first.
void ExpectLeft(const CDibImage& image, const CDibImage& before, const test::ToneStep& step) {
    CDibImage expected = before;
    if (step.depth == test::Depth::kGray && image.GetBpp() == 8 && before.GetBpp() == 24) {
        ASSERT_EQ(ConvertToGray(expected), 1);
    }
    test::ExpectSamePixels(image, expected);
}

TEST(ToneSteps, WithLittleMemoryTheyRefuseAndLeaveThePixelsOrDoAllTheirWork) {
    for (const test::ToneStep& step : test::AllToneSteps())
        for (const int bpp : {8, 24}) {
            SCOPED_TRACE(step.name + " of " + std::to_string(bpp) + " bits");
            const CDibImage before = test::Noise(26, 19, bpp, 6);
            CDibImage whole = before;
            const int result = step.run(whole);
            for (long n = 1; n < 2000; n += 1 + n / 16) {
                CDibImage image = before;
                int done = 0;
                bool happened = false;
                {
                    const test::FailAllocation failure(n);
                    done = step.run(image);
                    happened = failure.Happened();
                }
                if (done == 0 && result != 0)
                    ExpectLeft(image, before, step);
                else
                    test::ExpectSamePixels(image, whole);
                if (!happened)
                    break;
            }
        }
}

}  // namespace
}  // namespace velloran
