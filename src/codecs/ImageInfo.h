#pragma once

// What a file says of its picture, read from its head without decoding pixels.

#include <cstdint>

#include "core/PictureLimits.h"

namespace velloran {

struct ImageInfo {
    int width = 0, height = 0;
    int bitsPerPixel = 0;  // as the file holds them: 16 for 565, 32 with alpha, 48 for 16-bit RGB
    int colorsUsed = 0;    // palette entries that the file holds, 0 without a palette
    int xDpi = 96, yDpi = 96;
    bool gray = false;  // loads as 8 bits with the identity grey ramp
};

/// Readers refuse larger pictures.
inline constexpr std::int64_t kMaxPixels = kMaxPicturePixels;
inline constexpr std::int64_t kMaxImageBytes = 0x7FFFFFFF;

/// Sides of at least 1, at most kMaxPixels pixels, and kMaxImageBytes at the depth.
bool IsAcceptableSize(std::int64_t width, std::int64_t height, int bitsPerPixel);

}  // namespace velloran
