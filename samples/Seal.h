#pragma once

// A round seal: ring, characters along it, a flower with a solid disc in the middle.

#include "samples/Sheet.h"

namespace velloran::samples {

/// Prints on the seal ink and notes it; for pages that are not projected or curled. `radius` in
/// pixels; `color` only for the truth.
void DrawSeal(Sheet& sheet, Point center, double radius, const Rgb& color);

}  // namespace velloran::samples
