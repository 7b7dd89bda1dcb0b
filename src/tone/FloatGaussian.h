#pragma once

// Gaussian blur of floats whose time does not hang on sigma: a sum of two damped oscillations each
// way. (R. Deriche, "Recursively Implementing the Gaussian and its Derivatives", 1993.)

#include "imaging/FloatView.h"

namespace velloran {

/// Sigma in pixels; 0 and less copies. Weights add up to 1 and the border is replicated. Views have
/// the same size; `target` may be `source`. Throws std::bad_alloc.
void FloatGaussian(ConstFloatView source, float sigma, FloatView target);

}  // namespace velloran
