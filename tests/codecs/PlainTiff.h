#pragma once

// TIFF files through plain library calls: any kind of page to read, and a second opinion on files
// that were written.

#include <tiffio.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/Images.h"

namespace velloran::test {

/// Samples as the file holds them: one number each, row after row.
struct PlainTiff {
    int width = 1, height = 1;
    int bits = 8, channels = 1;
    int photometric = PHOTOMETRIC_MINISBLACK, compression = COMPRESSION_NONE;
    bool separate = false, bigEndian = false;
    int tileSize = 0;      // 0: strips
    int rowsPerStrip = 0;  // 0: one strip
    int extraSample = -1;
    int orientation = 0;  // 0: no tag
    int resolutionUnit = 0;
    float xResolution = 0, yResolution = 0;
    bool predict = false;
    std::vector<std::uint16_t> red, green, blue;  // the palette, 16 bits a level
    std::vector<int> samples;

    int& At(int x, int y, int channel = 0) {
        return samples[static_cast<std::size_t>((y * width + x) * channels + channel)];
    }
    int At(int x, int y, int channel = 0) const {
        return const_cast<PlainTiff&>(*this).At(x, y, channel);
    }
};

/// Every sample from a fixed pseudo-random sequence.
PlainTiff TiffOfNoise(int width, int height, int bits, int channels, int photometric,
                      unsigned seed = 1);
/// Gives the page pseudo-random palette levels of 16 bits.
void AddPalette(PlainTiff& tiff, unsigned seed = 1);

std::string EncodeTiff(const PlainTiff& tiff);
/// Reads the first page of a file in strips; fails the test where it is no valid TIFF.
PlainTiff DecodeTiff(const std::string& file);

}  // namespace velloran::test
