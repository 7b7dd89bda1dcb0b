#pragma once

// Light: shadows brightened or deepened and highlights toned, with a smoothed copy of the page as
// the mask of its dark parts.

#include <array>

namespace velloran {

class CDibImage;

/// -100..100 each, 0 is neutral. 0 where both are, for an invalid image and where the smoothed
/// copy cannot be made; the depth is normalised.
int AdjustLight(CDibImage& image, int low, int high);

using LightCurve = std::array<float, 256>;
/// How strongly each level counts as shadow, middle or highlight; bands `limit` levels wide. The
/// middle band has no strength.
void LightWeights(int limit, LightCurve& shadow, LightCurve& middle, LightCurve& highlight);

}  // namespace velloran
