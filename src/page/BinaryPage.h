#pragma once

// Between the working image and the binary images of the toolkit.

#include "core/DibImage.h"
#include "imageproc/BinaryImage.h"

namespace velloran {

/// Black where an 8-bit image is below 128; the top row first. Throws std::bad_alloc, and
/// std::invalid_argument for an image that is empty or not 8-bit.
imageproc::BinaryImage BinaryOf(const CDibImage& gray);

/// Black as 0 and white as 255 into an 8-bit image of the same size, which takes the grey palette;
/// throws std::invalid_argument when the sizes differ.
void PaintBinary(const imageproc::BinaryImage& binary, CDibImage& gray);

}  // namespace velloran
