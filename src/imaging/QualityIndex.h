#pragma once

// The universal image quality index: how much one picture is like another, from -1 to 1, by loss of
// correlation, by mean and by contrast. (Z. Wang, A. C. Bovik, "A universal image quality index",
// 2002.)

#include "core/PlaneView.h"

namespace velloran {

/// The mean of the index over all windows of 8 by 8 samples, one at each place (smaller pictures
/// are one window across or down), of one channel of two views of equal size:
///
///     4 cov(x, y) mean(x) mean(y) / ((var(x) + var(y)) (mean(x)^2 + mean(y)^2))
///
/// A window without contrast in either counts by its means alone, a black one in both is 1. The
/// same bits for every form of the processor and number of threads. Throws std::bad_alloc. 0 when
/// the work was cancelled.
double QualityIndex(ConstPlaneView a, ConstPlaneView b, int channel);

}  // namespace velloran
