#pragma once

// Mean over a square window of floats.

#include "imaging/FloatView.h"

namespace velloran {

/// Mean over (2 * radius + 1)^2 samples with replicated border; `target` may be `source`. Time is
/// independent of the radius. Throws std::bad_alloc.
void BoxMean(ConstFloatView source, int radius, FloatView target);

}  // namespace velloran
