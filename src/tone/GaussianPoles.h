#pragma once

// The recursions that a Gaussian blur is made of. (R. Deriche, "Recursively Implementing the
// Gaussian and its Derivatives", 1993.)

#include <array>

namespace velloran {

/// The half kernel is the real part of amplitude * pole^k, summed over both. Each pole runs by
/// itself: in one recursion of fourth order the floats would not do for wide kernels.
struct Pole {
    float re, im;                    // the pole
    float amplitudeRe, amplitudeIm;  // scaled so that all weights add up to 1
    float steadyRe, steadyIm;        // state that a constant 1 leads to
};
using Poles = std::array<Pole, 2>;

/// Lines run side by side; position p of all of them lies in one row of `kLanes` floats.
constexpr int kLanes = 48;

struct LaneState {
    std::array<std::array<float, kLanes>, 2> re, im;
};

}  // namespace velloran
