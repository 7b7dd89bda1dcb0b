#pragma once

// The picture that holds each of the 2^24 colors once.

#include <gtest/gtest.h>

#include <cstdint>

#include "core/DibImage.h"

namespace velloran::test {

/// 4096 x 4096 pixels of 24 bits.
inline CDibImage AllColors() {
    CDibImage image;
    EXPECT_NE(image.Create(4096, 4096, 24), nullptr);
    std::uint32_t color = 0;
    for (int y = 0; y < image.GetHeight(); ++y) {
        std::uint8_t* pixel = image.GetBits(y);
        for (int x = 0; x < image.GetWidth(); ++x, ++color, pixel += 3) {
            pixel[0] = static_cast<std::uint8_t>(color);
            pixel[1] = static_cast<std::uint8_t>(color >> 8);
            pixel[2] = static_cast<std::uint8_t>(color >> 16);
        }
    }
    return image;
}

}  // namespace velloran::test
