#pragma once

// Resampling. Pixel centres are aligned, borders replicated; channels are independent. Source and
// target are views of equal channel count and must not overlap. Throw std::bad_alloc.

#include "core/PlaneView.h"
#include "imaging/FloatView.h"

namespace velloran {

/// Three-lobe Lanczos (C. Lanczos, "Applied Analysis", 1956; K. Turkowski, "Filters for Common
/// Resampling Tasks", 1990): 6 taps each way, weights normalised per position, rounded to nearest.
void ResizeLanczos(ConstPlaneView source, PlaneView target);

/// Area averaging: each output sample is the mean of the source area that it covers. The target
/// must not be larger than the source in either direction.
void ResizeArea(ConstPlaneView source, PlaneView target);
void ResizeArea(ConstFloatView source, FloatView target);
void ResizeArea(ConstPlaneView source, FloatView target);  // not rounded

/// Bilinear between the two nearest samples each way.
void ResizeLinear(ConstPlaneView source, PlaneView target);
void ResizeLinear(ConstFloatView source, FloatView target);

}  // namespace velloran
