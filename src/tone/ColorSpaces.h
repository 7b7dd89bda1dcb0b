#pragma once

// Colours as hue, lightness and saturation, and in the Lab space.

#include <cstdint>

namespace velloran {

struct Hls {
    std::uint8_t hue = 0, lightness = 0, saturation = 0;  // 0..240 each
};

/// Integer arithmetic; greys have hue 160.
Hls RgbToHls(int red, int green, int blue);

struct Lab {
    double l = 0, a = 0, b = 0;
};

/// Channels 0..255, linearised with the exponent 2.2. (CIE 1976 L*a*b*.)
Lab RgbToLab(int red, int green, int blue);

}  // namespace velloran
