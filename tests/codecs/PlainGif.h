#pragma once

// GIF files through plain library calls: any kind of file to read, and a second opinion on files
// that were written.

#include <cstdint>
#include <string>
#include <vector>

#include "support/Images.h"

namespace velloran::test {

struct PlainGifFrame {
    int left = 0, top = 0, width = 1, height = 1;
    bool interlaced = false;
    std::vector<Rgb> localPalette;
    int transparent = -1;
    int disposal = 0, delay = 0;
    bool control = true;  // whether a graphic control extension stands before it
    std::vector<int> indices;
    int At(int x, int y) const { return indices[static_cast<std::size_t>(y * width + x)]; }
};

struct PlainGif {
    int width = 1, height = 1, background = 0;
    std::string version;  // of a file that was read
    std::vector<Rgb> palette;
    std::vector<PlainGifFrame> frames;
};

/// One frame over the whole screen, pseudo-random indices, 2 to 256 colours (a power of two).
PlainGif GifOfNoise(int width, int height, int colors, unsigned seed = 1);

std::string EncodeGif(const PlainGif& gif);
/// Fails the test where the file is no valid GIF.
PlainGif DecodeGif(const std::string& file);

}  // namespace velloran::test
