#pragma once

// Unsharp mask, and the Gaussian blur step that shares its routine.

#include "filters/FitIntoBox.h"

namespace velloran {

class CDibImage;

/// `amount` in percent (limited to 1..500), `radius` in pixels (0.1..250), `threshold` (0..255,
/// halved), `times` (at most 3; below 1 refused). Large radii blur a reduced copy. With `blurOnly`
/// the blur itself is the result. Refuses sides below 6; 0 when refused, depth may be normalised.
int UnsharpMask(CDibImage& image, int amount, float radius, int threshold, int times,
                bool blurOnly);

/// The size that a blur of this radius works at; its sides are at least 1.
BoxSize UsmWorkingSize(BoxSize size, float radius);

}  // namespace velloran
