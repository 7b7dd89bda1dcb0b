#pragma once

// Unsharp mask, and the Gaussian blur step that shares its routine.

#include <array>
#include <cstdint>

#include "filters/FitIntoBox.h"

namespace velloran {

class CDibImage;

/// `amount` in percent (limited to 1..500), `radius` in pixels (0.1..250), `threshold` (0..255,
/// halved), `times` (at most 3; below 1 refused). Large radii blur a reduced copy. With `blurOnly`
/// the blur itself is the result. Refuses sides below 6; 0 when refused, depth may be normalised.
int UnsharpMask(CDibImage& image, int amount, float radius, int threshold, int times,
                bool blurOnly);

/// The size that a blur of this radius works at.
BoxSize UsmWorkingSize(BoxSize size, float radius);

/// New sample by [source][blurred].
using UsmTable = std::array<std::array<std::uint8_t, 256>, 256>;
/// `amount` 1..500, `threshold` as compared (already halved).
void MakeUsmTable(int amount, int threshold, UsmTable& table);

}  // namespace velloran
