#pragma once

// Codes an image as PNG.

#include "io/FileError.h"

namespace velloran {

class AtomicFile;
class CDibImage;

/// Writes the image at its depth into the open file. Grey ramps and black and white are written
/// as grey, other palettes as far as they are used; an alpha plane makes it grey with alpha or
/// colour with alpha. With `grayTransparent` level 255 of an 8-bit grey image without a
/// transparent index becomes transparent.
bool WritePng(const CDibImage& image, bool grayTransparent, AtomicFile& file, FileError* error);

}  // namespace velloran
