#pragma once

// Enlarging a binary image by whole factors.

#include "imageproc/BinaryImage.h"

namespace velloran::imageproc {

/// Each pixel becomes fx by fy pixels, fx and fy the whole quotients of the sizes; what is left
/// over at the right and bottom takes `color`, and so does the whole where a quotient is 0. A
/// negative size, or a null image, throws std::invalid_argument.
BinaryImage upscaleIntegerTimes(const BinaryImage& src, QT::QSize dstSize, BwColor color);

/// The same with the factors told; the destination must hold the scaled size.
BinaryImage upscaleIntegerTimes(const BinaryImage& src, int factorX, int factorY, QT::QSize dstSize,
                                BwColor color);

}  // namespace velloran::imageproc
