#pragma once

// Dilation, erosion and opening of binary images by a brick, in whole words.
// (J. Serra, "Image Analysis and Mathematical Morphology", 1982.)

#include "imageproc/BinaryImage.h"
#include "imageproc/Brick.h"

namespace velloran::imageproc {

/// Black where any of the offsets, taken back from the pixel, meets black. `dstArea` is in the
/// coordinates of `src` and may leave it; pixels beyond the edge count as `outside`. A null image
/// or an empty brick or area throws std::invalid_argument.
BinaryImage dilateBrick(const BinaryImage& src, const Brick& brick, const QT::QRect& dstArea,
                        BwColor outside = BwColor::kWhite);
BinaryImage dilateBrick(const BinaryImage& src, const Brick& brick,
                        BwColor outside = BwColor::kWhite);

/// Black where all of the offsets meet black.
BinaryImage erodeBrick(const BinaryImage& src, const Brick& brick, const QT::QRect& dstArea,
                       BwColor outside = BwColor::kBlack);
BinaryImage erodeBrick(const BinaryImage& src, const Brick& brick,
                       BwColor outside = BwColor::kBlack);

/// Removes what the brick does not fit into: erosion over the rectangle grown by the brick, then
/// dilation back. With black outside an object that touches the edge stays; with white outside a
/// brick larger than the image leaves a blank one.
BinaryImage openBrick(const BinaryImage& src, QT::QSize size, BwColor outside = BwColor::kWhite);

}  // namespace velloran::imageproc
