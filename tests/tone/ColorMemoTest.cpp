#include "tone/ColorMemo.h"

#include <gtest/gtest.h>

#include "core/DibImage.h"
#include "support/Images.h"
#include "support/Threads.h"

namespace velloran {
namespace {

std::uint32_t Turned(const std::uint8_t* pixel) {
    return static_cast<std::uint32_t>(pixel[2] * 65536 + (255 - pixel[0]) * 256 + pixel[1]);
}

TEST(ColorMemo, AsksOnceForAColorAndAgainWhenItsCellWasTaken) {
    ColorMemo memo;
    int asked = 0;
    const auto look = [&](std::uint8_t blue, std::uint8_t green, std::uint8_t red) {
        const std::uint8_t pixel[3] = {blue, green, red};
        return memo(pixel, [&] {
            ++asked;
            return Turned(pixel);
        });
    };
    EXPECT_EQ(look(1, 2, 3), 0x03FE02U);
    EXPECT_EQ(look(1, 2, 3), 0x03FE02U);
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(look(0, 0, 0), 0x00FF00U);  // black is a colour like any other
    EXPECT_EQ(asked, 2);
    for (int i = 0; i < 70000; ++i)  // far more colours than cells
        look(static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(i >> 8), 9);
    asked = 0;
    EXPECT_EQ(look(1, 2, 3), 0x03FE02U);
    EXPECT_EQ(asked, 1);
}

TEST(MapColors, EveryPixelOfNoiseBecomesWhatTheWorkMakesOfIt) {
    const CDibImage before = test::Noise(501, 203, 24);
    for (const int count : {1, 2, 7}) {
        const test::Threads threads(count);
        CDibImage image = before;
        MapColors(ViewOf(image), Turned);
        int wrong = 0;
        for (int y = 0; y < 203; ++y)
            for (int x = 0; x < 501; ++x) {
                const test::Rgb was = test::PixelAt(before, x, y);
                const test::Rgb is = test::PixelAt(image, x, y);
                wrong +=
                    is.blue == was.green && is.green == 255 - was.blue && is.red == was.red ? 0 : 1;
            }
        EXPECT_EQ(wrong, 0) << count << " threads";
    }
}

}  // namespace
}  // namespace velloran
