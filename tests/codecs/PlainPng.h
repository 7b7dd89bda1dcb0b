#pragma once

// PNG files through plain library calls: any kind of file to read, and a second opinion on files
// that were written.

#include <cstdint>
#include <string>
#include <vector>

#include "support/Images.h"

namespace velloran::test {

/// Samples as the file holds them: one number each, packed or not; row after row.
struct PlainPng {
    int width = 1, height = 1;
    int bitDepth = 8, colorType = 0;
    bool interlaced = false;
    std::vector<Rgb> palette;
    std::vector<int> paletteAlpha;
    std::vector<int> transparent;           // one grey level, or red, green and blue
    unsigned xPerMeter = 0, yPerMeter = 0;  // 0: no resolution
    bool meters = true;
    std::vector<int> samples;

    int Channels() const;
    int& At(int x, int y, int channel) {
        return samples[static_cast<std::size_t>((y * width + x) * Channels() + channel)];
    }
    int At(int x, int y, int channel) const {
        return const_cast<PlainPng&>(*this).At(x, y, channel);
    }
};

/// Every sample from a fixed pseudo-random sequence; palettes hold 2^depth colours.
PlainPng PngOfNoise(int width, int height, int bitDepth, int colorType, unsigned seed = 1);

std::string EncodePng(const PlainPng& png);
/// Fails the test where the file is no valid PNG.
PlainPng DecodePng(const std::string& file);

}  // namespace velloran::test
