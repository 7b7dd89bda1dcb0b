#pragma once

// Rotation about a centre. A target pixel is written where its place in the source, rounded, lies
// in the source; the others stay as they are, or take a pixel that is given. Rows count in the
// order of the views: with the bottom row first a positive angle turns the picture clockwise as it
// is seen.

#include <cstdint>

#include "core/PlaneView.h"

namespace velloran {

/// Source and target have equal sizes and channels (1 or 3), at most 2^30 pixels a side, and do not
/// overlap. The centre keeps its place. The angle is in degrees; any finite one is taken.
struct Rotation {
    double degrees = 0;
    int centerX = 0, centerY = 0;
    /// The bytes of a pixel for places outside the source; null: these pixels stay.
    const std::uint8_t* outside = nullptr;
};

/// The sample nearest to each place, the later one of two equally near.
void RotateNearest(ConstPlaneView source, const Rotation& rotation, PlaneView target);

/// Cubic convolution with a = -1/2 over 4 by 4 samples, borders replicated; places are taken to
/// 1/256 of a pixel, weights to 1/4096, results rounded. (R. Keys, "Cubic Convolution
/// Interpolation for Digital Image Processing", 1981.)
void RotateCubic(ConstPlaneView source, const Rotation& rotation, PlaneView target);

}  // namespace velloran
