#include <array>
#include <cstdint>
#include <new>

#include "core/Rounding.h"
#include "core/StepContext.h"
#include "reduce/PaletteMakers.h"

namespace velloran {
namespace {

PaletteEntry Rgb(int red, int green, int blue) {
    return {static_cast<std::uint8_t>(blue), static_cast<std::uint8_t>(green),
            static_cast<std::uint8_t>(red), 0};
}

PaletteEntry Hex(std::uint32_t rrggbb) {
    return Rgb(static_cast<int>(rrggbb >> 16 & 255), static_cast<int>(rrggbb >> 8 & 255),
               static_cast<int>(rrggbb & 255));
}

template <std::size_t N>
Palette FromHex(const std::array<std::uint32_t, N>& colors) {
    Palette palette;
    for (const std::uint32_t color : colors)
        palette.push_back(Hex(color));
    return palette;
}

/// Red outermost, blue innermost; level v of n is v * 255 / (n - 1), truncated.
Palette ColorCube(int reds, int greens, int blues) {
    Palette palette;
    for (int r = 0; r < reds; ++r)
        for (int g = 0; g < greens; ++g)
            for (int b = 0; b < blues; ++b)
                palette.push_back(
                    Rgb(r * 255 / (reds - 1), g * 255 / (greens - 1), b * 255 / (blues - 1)));
    return palette;
}

constexpr std::array<std::uint32_t, 8> kEight = {0x000000, 0x0000FF, 0x00FF00, 0xFF0000,
                                                 0x00FFFF, 0xFF00FF, 0xFFFF00, 0xFFFFFF};
constexpr std::array<std::uint32_t, 16> kSixteen = {
    0x000000, 0x800000, 0x008000, 0x808000, 0x000080, 0x800080, 0x008080, 0xC0C0C0,
    0x808080, 0xFF0000, 0x00FF00, 0xFFFF00, 0x0000FF, 0xFF00FF, 0x00FFFF, 0xFFFFFF};

// Of the 256 entries: what stands before and behind the ramps and greys, blue, green, red.
constexpr std::array<PaletteEntry, 10> kFirstTen = {{{0, 0, 0, 0},
                                                     {0, 0, 128, 0},
                                                     {0, 128, 0, 0},
                                                     {0, 128, 128, 0},
                                                     {128, 0, 0, 0},
                                                     {128, 0, 128, 0},
                                                     {128, 128, 0, 0},
                                                     {192, 192, 192, 0},
                                                     {192, 220, 192, 0},
                                                     {240, 202, 166, 0}}};
constexpr std::array<PaletteEntry, 10> kLastTen = {{{240, 251, 255, 0},
                                                    {164, 160, 160, 0},
                                                    {128, 128, 128, 0},
                                                    {0, 0, 255, 0},
                                                    {0, 255, 0, 0},
                                                    {0, 255, 255, 0},
                                                    {255, 0, 0, 0},
                                                    {255, 0, 255, 0},
                                                    {255, 255, 0, 0},
                                                    {255, 255, 255, 0}}};

/// Hue of each of the 18 ramps: levels 0 to 3 stand for 0, 85, 170, 255; blue, green, red.
constexpr std::array<std::array<int, 3>, 18> kHues = {{{0, 2, 3},
                                                       {0, 1, 3},
                                                       {0, 0, 3},
                                                       {1, 0, 3},
                                                       {2, 0, 3},
                                                       {3, 0, 3},
                                                       {3, 0, 2},
                                                       {3, 0, 1},
                                                       {3, 0, 0},
                                                       {3, 1, 0},
                                                       {3, 2, 0},
                                                       {3, 3, 0},
                                                       {2, 3, 0},
                                                       {1, 3, 0},
                                                       {0, 3, 0},
                                                       {0, 3, 1},
                                                       {0, 3, 2},
                                                       {0, 3, 3}}};
/// Six tints toward the full hue, six shades from it on, by hue level.
constexpr std::array<std::array<int, 12>, 4> kRamps = {
    {{212, 177, 142, 107, 72, 37, 0, 0, 0, 0, 0, 0},
     {227, 199, 171, 143, 115, 87, 85, 73, 61, 49, 37, 25},
     {240, 226, 212, 198, 184, 170, 170, 146, 122, 98, 74, 50},
     {255, 255, 255, 255, 255, 255, 255, 220, 185, 150, 115, 80}}};

bool IsPureHue(const std::array<int, 3>& hue) {
    for (const int level : hue)
        if (level != 0 && level != 3)
            return false;
    return true;
}

Palette TwoHundredFiftySix() {
    Palette palette(kFirstTen.begin(), kFirstTen.end());
    for (const auto& hue : kHues)
        for (std::size_t position = 0; position < 12; ++position) {
            std::array<int, 3> value{};
            for (std::size_t c = 0; c < 3; ++c) {
                value[c] = kRamps[static_cast<std::size_t>(hue[c])][position];
                // The full hue of the six pure ramps stands among the last ten; here it is 254.
                if (position == 6 && value[c] == 255 && IsPureHue(hue))
                    value[c] = 254;
            }
            palette.push_back(Rgb(value[2], value[1], value[0]));
        }
    for (int gray = 242; gray >= 14; gray -= 12)
        palette.push_back(Rgb(gray, gray, gray));
    palette.insert(palette.end(), kLastTen.begin(), kLastTen.end());
    return palette;
}

Palette GrayRamp(int count) {
    Palette palette;
    const float step = 255.0F / static_cast<float>(count - 1);
    float level = 0;
    for (int i = 0; i < count; ++i) {
        const int gray = ClampToByte(TruncToInt(static_cast<double>(level + 0.5F)));
        palette.push_back(Rgb(gray, gray, gray));
        level += step;
    }
    return palette;
}

Palette ColorPalette(int colors) {
    switch (colors) {
        case 2:
            return FromHex(std::array<std::uint32_t, 2>{0x000000, 0xFFFFFF});
        case 4:
            return FromHex(std::array<std::uint32_t, 4>{0x000000, 0x555555, 0xAAAAAA, 0xFFFFFF});
        case 8:
            return FromHex(kEight);
        case 16:
            return FromHex(kSixteen);
        case 32:
            return ColorCube(4, 4, 2);
        case 64:
            return ColorCube(4, 4, 4);
        case 128:
            return ColorCube(4, 8, 4);
        case 256:
            return TwoHundredFiftySix();
        default:
            return Palette(static_cast<std::size_t>(colors));
    }
}

}  // namespace

Palette FixedPalette(const CDibImage& image, int colors, int bits) {
    if (!image.IsValid() || colors < 1 || colors > 256)
        return {};
    try {
        if (bits == 1)
            return ColorPalette(2);
        if (image.GetBpp() == 24)
            return ColorPalette(colors);
        return colors < 2 ? Palette(1) : GrayRamp(colors);
    } catch (const std::bad_alloc&) {
        NoteOutOfMemory();
        return {};
    }
}

}  // namespace velloran
