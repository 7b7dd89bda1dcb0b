#include "tone/ColorSpaces.h"

#include <algorithm>
#include <array>

#include "core/ExactMath.h"

namespace velloran {
namespace {

double Linear(int level) {
    const double c = level / 255.0;
    return c <= 0.04045 ? c / 12.92 : Pow((c + 0.055) / 1.055, 2.2);
}

std::array<double, 256> MakeLinearLevels() {
    std::array<double, 256> table{};
    for (int level = 0; level < 256; ++level)
        table[static_cast<std::size_t>(level)] = Linear(level);
    return table;
}

double LabCurve(double t) {
    return t > 0.008856 ? Cbrt(t) : 7.787 * t + 0.137931034482759;
}

}  // namespace

Hls RgbToHls(int red, int green, int blue) {
    const int most = std::max({red, green, blue}), least = std::min({red, green, blue});
    const int lightness = ((most + least) * 240 + 255) / 510;
    Hls hls{160, static_cast<std::uint8_t>(lightness), 0};
    if (most == least)
        return hls;
    const int d = most - least, half = d / 2;
    const int sum = lightness <= 120 ? most + least : 510 - most - least;
    hls.saturation = static_cast<std::uint8_t>((d * 240 + sum / 2) / sum);
    const int dr = ((most - red) * 40 + half) / d;
    const int dg = ((most - green) * 40 + half) / d;
    const int db = ((most - blue) * 40 + half) / d;
    int hue;
    if (red == most)
        hue = db - dg;
    else if (green == most)
        hue = 80 + dr - db;
    else
        hue = 160 + dg - dr;
    hue &= 255;
    hls.hue = static_cast<std::uint8_t>(hue > 240 ? hue + 16 : hue);
    return hls;
}

Lab RgbToLab(int red, int green, int blue) {
    static const std::array<double, 256> kLinear = MakeLinearLevels();
    const double r = kLinear[static_cast<std::size_t>(red)];
    const double g = kLinear[static_cast<std::size_t>(green)];
    const double b = kLinear[static_cast<std::size_t>(blue)];
    const double x = LabCurve((0.4124 * r + 0.3576 * g + 0.1805 * b) / 0.9505);
    const double y = LabCurve(0.2126 * r + 0.7152 * g + 0.0722 * b);
    const double z = LabCurve((0.0193 * r + 0.1192 * g + 0.9505 * b) / 1.089);
    return {116 * y - 16, 500 * (x - y), 200 * (y - z)};
}

}  // namespace velloran
