#pragma once

// Which entry of a palette is nearest to a colour.

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

#include "core/BaseImage.h"

namespace velloran {

/// Squared distance of two colours without weights, at most 3 * 255 * 255; the reserved bytes do
/// not count.
constexpr int SquaredDistance(const PaletteEntry& a, const PaletteEntry& b) {
    const int blue = a.blue - b.blue, green = a.green - b.green, red = a.red - b.red;
    return blue * blue + green * green + red * red;
}

/// Index of the nearest entry, the lowest of equals; 0 for an empty palette.
constexpr int NearestIndex(std::span<const PaletteEntry> palette, const PaletteEntry& color) {
    int nearest = 0, least = std::numeric_limits<int>::max();
    for (std::size_t i = 0; i < palette.size() && least > 0; ++i)
        if (const int distance = SquaredDistance(palette[i], color); distance < least) {
            nearest = static_cast<int>(i);
            least = distance;
        }
    return nearest;
}

/// The palette of an image; empty at 24 bits and for an empty image.
inline std::span<const PaletteEntry> PaletteOf(const CBaseImage& image) {
    return {image.GetPalette(), static_cast<std::size_t>(image.GetPaletteCount())};
}

}  // namespace velloran
