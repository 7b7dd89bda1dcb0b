#pragma once

// Growing seeds within a mask, in time that grows with the pixels, whatever the mask. (L. Vincent,
// "Morphological Grayscale Reconstruction in Image Analysis", 1993, for the grey form.)

#include "core/DibImage.h"
#include "imageproc/BinaryImage.h"

namespace velloran::imageproc {

enum class Connectivity { k4 = 0, k8 = 1 };

/// The black pixels of `mask` that a path within it joins to a black pixel of `seed`. Unequal
/// sizes throw std::invalid_argument.
BinaryImage seedFill(const BinaryImage& seed, const BinaryImage& mask, Connectivity connectivity);

/// 8-bit images: the seed grows under the mask, samples only going up, until nothing changes.
/// Where the seed begins above the mask it is brought down to it.
void seedFillGrayInPlace(CDibImage& seed, const CDibImage& mask, Connectivity connectivity);

}  // namespace velloran::imageproc
