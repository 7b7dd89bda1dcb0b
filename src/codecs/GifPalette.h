#pragma once

// Palettes of at most 256 colours for colour images that become GIF.

#include <cstdint>
#include <vector>

#include "core/DibImage.h"

namespace velloran {

/// The colours of a 24-bit image in the order of red, green and blue when there are at most 256,
/// else 256 averages: of boxes of the colour cube, each time the box with the largest squared
/// error cut at the mean of its widest axis (the measure of X. Wu, "Efficient Statistical
/// Computations for Optimal Color Quantization", 1991). Equal images give equal palettes.
std::vector<PaletteEntry> BuildGifPalette(const CDibImage& image);

/// Maps colours to the nearest entry by squared distance; ties keep the lower index.
class NearestEntry {
 public:
    /// 1 to 256 entries.
    explicit NearestEntry(std::vector<PaletteEntry> palette);
    std::uint8_t Of(std::uint8_t blue, std::uint8_t green, std::uint8_t red);

 private:
    struct Remembered {
        std::uint32_t color = 0xFFFFFFFF;  // no colour
        std::uint8_t index = 0;
    };

    std::vector<PaletteEntry> palette_;
    std::vector<Remembered> recent_;
};

}  // namespace velloran
