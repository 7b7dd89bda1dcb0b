// Pictures from arrays of pixels, and palette pictures turned to colour.

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "core/DibImage.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"

namespace velloran {
namespace {

TEST(CreateFromArray, EveryDepthAndWidthKeepsItsBits) {
    for (int bpp : {1, 4, 8, 24})
        for (int width = 1; width <= 17; ++width)
            for (bool bottomUp : {false, true}) {
                const CDibImage expected = test::Noise(width, 3, bpp, 5);
                const std::size_t stride = static_cast<std::size_t>(width) * 3 + 5;
                std::vector<std::uint8_t> array(stride * 3);
                for (int y = 0; y < 3; ++y)
                    std::memcpy(&array[static_cast<std::size_t>(bottomUp ? y : 2 - y) * stride],
                                expected.GetBits(y), static_cast<std::size_t>(width * bpp + 7) / 8);
                CBaseImage image;
                ASSERT_TRUE(image.CreateFromArray(array.data(), width, 3, bpp,
                                                  static_cast<std::ptrdiff_t>(stride), bottomUp));
                test::ExpectSamePixels(image, expected);
                EXPECT_EQ(image.GetAlpha(), nullptr);
            }
}

TEST(CreateFromArray, ThirtyTwoBitsSetTheAlphaPlane) {
    const std::uint8_t array[] = {1, 2, 3, 40, 5, 6, 7, 80, 9, 10, 11, 120, 13, 14, 15, 160};
    CBaseImage image;
    ASSERT_TRUE(image.CreateFromArray(array, 2, 2, 32, 8, /*bottomUp=*/false));
    EXPECT_EQ(image.GetBpp(), 24);
    EXPECT_EQ(test::PixelAt(image, 0, 0), (test::Rgb{3, 2, 1}));
    EXPECT_EQ(test::PixelAt(image, 1, 1), (test::Rgb{15, 14, 13}));
    ASSERT_NE(image.GetAlpha(), nullptr);  // the bottom row first, as the pixels
    EXPECT_EQ(std::vector<int>(image.GetAlpha(), image.GetAlpha() + 4),
              (std::vector<int>{120, 160, 40, 80}));
}

TEST(CreateFromArray, RefusesOtherDepthsAndBadArrays) {
    const std::uint8_t array[64] = {};
    CDibImage image = test::Filled(3, 3, 8, 5);
    for (int bpp : {0, 2, 3, 5, 15, 16, 33, 48, -8})
        EXPECT_FALSE(image.CreateFromArray(array, 2, 2, bpp, 8, true)) << bpp;
    EXPECT_FALSE(image.CreateFromArray(nullptr, 2, 2, 8, 8, true));
    EXPECT_FALSE(image.CreateFromArray(array, 0, 2, 8, 8, true));
    EXPECT_FALSE(image.CreateFromArray(array, 2, -2, 8, 8, true));
    EXPECT_FALSE(image.CreateFromArray(array, 4, 2, 24, 8, true)) << "rows overlap";
    EXPECT_EQ(image.GetWidth(), 3) << "the image stays";
}

TEST(CreateFromArray, ANegativeStrideReadsBackwards) {
    const std::uint8_t array[] = {1, 2, 3, 4};
    CBaseImage image;
    ASSERT_TRUE(image.CreateFromArray(array + 2, 2, 2, 8, -2, /*bottomUp=*/true));
    EXPECT_EQ(image.GetBits(0)[0], 3);
    EXPECT_EQ(image.GetBits(1)[0], 1);
}

TEST(CreateFromArray, DropsAnOldAlphaPlane) {
    CBaseImage image = test::Filled(3, 3, 8, 5);
    ASSERT_TRUE(image.CreateAlpha());
    const std::uint8_t array[4] = {};
    ASSERT_TRUE(image.CreateFromArray(array, 2, 2, 8, 2, true));
    EXPECT_EQ(image.GetAlpha(), nullptr);
}

TEST(CreateFromArray, IsWholeOrEmptyWhenMemoryRunsOut) {
    const std::uint8_t array[64] = {};
    const int failures = test::SweepFailingAllocations([&](long) {
        CBaseImage image;
        const bool made = image.CreateFromArray(array, 2, 2, 32, 8, true);
        EXPECT_EQ(made, image.IsValid());
        EXPECT_EQ(made, image.GetAlpha() != nullptr);
    });
    EXPECT_EQ(failures, 2);
}

TEST(IncreaseBpp24, ShowsEveryPixelThroughThePalette) {
    for (int bpp : {1, 4, 8})
        for (int width = 1; width <= 17; ++width) {
            CDibImage before = test::Noise(width, 4, bpp);
            for (int i = 0; i < before.GetPaletteCount(); ++i)
                before.GetPalette()[i] = {static_cast<std::uint8_t>(i * 3),
                                          static_cast<std::uint8_t>(255 - i),
                                          static_cast<std::uint8_t>(i ^ 90), 77};
            CDibImage image = before;
            ASSERT_TRUE(image.IncreaseBpp24());
            ASSERT_EQ(image.GetBpp(), 24);
            EXPECT_EQ(image.GetPalette(), nullptr);
            for (int y = 0; y < 4; ++y)
                for (int x = 0; x < width; ++x)
                    EXPECT_EQ(test::PixelAt(image, x, y), test::PixelAt(before, x, y));
        }
}

TEST(IncreaseBpp24, KeepsFieldsPlanesAndResolution) {
    CDibImage image = test::Noise(6, 4, 8);
    ASSERT_TRUE(image.CreateAlpha());
    image.GetAlpha()[5] = 9;
    image.SetXDpi(300);
    image.Fields().type = 5;
    image.Source().sourceColours = 8;
    test::SetPalette(image, {{0, 0, 0}, {10, 20, 30}});
    image.Fields().backgroundIndex = 1;
    ASSERT_TRUE(image.IncreaseBpp24());
    ASSERT_NE(image.GetAlpha(), nullptr);
    EXPECT_EQ(image.GetAlpha()[5], 9);
    EXPECT_EQ(image.GetXDpi(), 300);
    EXPECT_EQ(image.GetHeader().xPixelsPerMeter, 11811);
    EXPECT_EQ(image.GetType(), 5u);
    EXPECT_EQ(image.Source().sourceColours, 8u);
    EXPECT_EQ(image.Fields().backgroundIndex, -1) << "there is no palette to point into";
    EXPECT_EQ(image.Fields().backgroundColor, (PaletteEntry{30, 20, 10, 0}));
}

TEST(IncreaseBpp24, LeavesAColorImageAlone) {
    CDibImage image = test::Noise(5, 5, 24);
    const std::uint8_t* block = image.GetDib();
    EXPECT_TRUE(image.IncreaseBpp24());
    EXPECT_EQ(image.GetDib(), block);
}

TEST(IncreaseBpp24, RefusesWithoutMemoryAndStays) {
    CDibImage image = test::Noise(5, 5, 8);
    const CDibImage before = image;
    {
        const test::FailAllocation fail(1);
        EXPECT_FALSE(image.IncreaseBpp24());
    }
    test::ExpectSamePixels(image, before);
}

}  // namespace
}  // namespace velloran
