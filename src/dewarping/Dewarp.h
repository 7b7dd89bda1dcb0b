#pragma once

// A curved page becomes flat: the two curves that tell its shape, and the picture through it.

#include <cstdint>
#include <optional>
#include <vector>

#include "dewarping/CylindricalSurfaceDewarper.h"

namespace velloran {
class CDibImage;
}

namespace velloran::dewarping {

/// The surface between the curves of n packed points each. Nothing where they tell none: fewer than
/// kLeastCurvePoints points, curves that are unset or flat, ends of a curve that are equal, curves
/// that cross or span no plane. Curves told from right to left are read from their other end, and
/// a top curve below the bottom one changes places with it.
std::optional<CylindricalSurfaceDewarper> surfaceOf(const std::int32_t* top,
                                                    const std::int32_t* bottom, int n);

/// Resamples the page between the curves onto a flat grid, in the size that they and the depth
/// give. `mode` as resample() takes it; `background` is 0x00BBGGRR. The image becomes grey or
/// 24-bit. Returns 1; 0, image unchanged but for its depth, for an image below 10 pixels in a
/// direction, where there is no surface, for a result above the limits of a picture, and without
/// memory.
int dewarp(int mode, CDibImage& image, const std::int32_t* top, const std::int32_t* bottom, int n,
           std::uint32_t background);

}  // namespace velloran::dewarping
