#include "codecs/Cmyk.h"

#include <array>
#include <cstring>

namespace velloran {
namespace {

constexpr int kUnit = 10000;

using Corners = std::array<std::int64_t, 16>;

// Colours of the sixteen corners in units of 1 / 10000. Index bits from the highest: cyan,
// magenta, yellow, black.
constexpr Corners kRed = {10000, 1373, 10000, 1098, 9255, 1412, 9294, 1333,
                          0,     0,    0,     0,    1804, 0,    2118, 0};
constexpr Corners kGreen = {10000, 1216, 9490, 1020, 0,    0, 1098, 0,
                            6784,  588,  6510, 745,  1922, 0, 2119, 0};
constexpr Corners kBlue = {10000, 1255, 0,    0, 5490, 0,  1412, 0,
                           9373,  1412, 3137, 0, 5725, 78, 2235, 0};

struct Inks {
    std::int64_t cyan, magenta, yellow, black;  // 0..255
};

template <std::size_t kCount>
constexpr std::array<std::int64_t, kCount / 2> Blend(const std::array<std::int64_t, kCount>& from,
                                                     std::int64_t ink) {
    std::array<std::int64_t, kCount / 2> to{};
    for (std::size_t i = 0; i < kCount / 2; ++i)
        to[i] = from[2 * i] * 255 + (from[2 * i + 1] - from[2 * i]) * ink;
    return to;
}

template <const Corners& kCorners>
std::uint8_t Channel(const Inks& inks) {
    const auto blended =
        Blend(Blend(Blend(Blend(kCorners, inks.black), inks.yellow), inks.magenta), inks.cyan);
    // Whole numbers up to 255^4 * 10000 are exact in a double. The half keeps results that are
    // whole from falling below themselves, and is too small to lift any other over a whole number.
    constexpr double kScale = 1.0 / (255.0 * 255.0 * 255.0 * kUnit);
    return static_cast<std::uint8_t>((static_cast<double>(blended[0]) + 0.5) * kScale);
}

}  // namespace

void ConvertCmykRow(const std::uint8_t* cmyk, std::uint8_t* bgr, int width, bool invert) {
    const std::uint32_t flip = invert ? 0xFFFFFFFF : 0;
    std::uint32_t last = 0;
    std::array<std::uint8_t, 3> color = {255, 255, 255};  // of no ink
    for (int x = 0; x < width; ++x, bgr += 3) {
        std::uint32_t pixel;
        std::memcpy(&pixel, cmyk + 4 * static_cast<std::ptrdiff_t>(x), sizeof pixel);
        pixel ^= flip;
        if (pixel != last) {  // pages hold long runs of paper
            std::array<std::uint8_t, 4> ink;
            std::memcpy(ink.data(), &pixel, sizeof pixel);
            const Inks inks{ink[0], ink[1], ink[2], ink[3]};
            color = {Channel<kBlue>(inks), Channel<kGreen>(inks), Channel<kRed>(inks)};
            last = pixel;
        }
        std::memcpy(bgr, color.data(), color.size());
    }
}

}  // namespace velloran
