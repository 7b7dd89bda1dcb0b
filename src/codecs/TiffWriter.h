#pragma once

// Codes an image as a TIFF of one page.

#include "codecs/Tiff.h"

namespace velloran {

class AtomicFile;

/// Writes the image at its depth into the open file.
bool WriteTiff(const CDibImage& image, TiffCompression compression, AtomicFile& file,
               FileError* error);

}  // namespace velloran
