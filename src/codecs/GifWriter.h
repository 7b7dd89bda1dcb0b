#pragma once

// Codes an image as a GIF of one picture.

#include <cstdint>
#include <vector>

#include "core/BaseImage.h"
#include "io/FileError.h"

namespace velloran {

class ByteSink;
class CDibImage;

/// One byte a pixel, the top row first, with the colours that occur.
struct GifPicture {
    int width = 0, height = 0;
    std::vector<std::uint8_t> indices;
    std::vector<PaletteEntry> colors;
    int transparent = -1;  // index of the image's own transparent pixels
};

struct GifFrame {
    int left = 0, top = 0, width = 0, height = 0;
    bool operator==(const GifFrame&) const = default;
};

/// Palette images list the indices in use in ascending order; 24-bit images get a palette. Pixels
/// of the transparent index, or less than half opaque by the alpha plane, share one index.
GifPicture MakeGifPicture(const CDibImage& image);

/// The smallest rectangle of pixels that differ from the top left one; 1 x 1 at the top left when
/// none does.
GifFrame TightFrameOf(const GifPicture& picture);

/// Writes into the open file.
bool WriteGif(const GifPicture& picture, const GifFrame& frame, bool transparentBackground,
              ByteSink& sink, FileError* error);

}  // namespace velloran
