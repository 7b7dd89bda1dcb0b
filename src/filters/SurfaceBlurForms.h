#pragma once

// The forms of the surface blur. Images are valid, of 8 or 24 bits; radius is 1..15, threshold
// 2..50, times 1..3. All throw std::bad_alloc, with the image unchanged; the direct form with whole
// passes done.

#include <cstdint>

namespace velloran {

class CDibImage;

/// Radius 1..5. A window of (2 * radius + 1)^2 samples, border replicated; a neighbour that differs
/// by k from the centre weighs 1 - k / (2.5 * threshold), at least 0. Sums are 32-bit floats.
void BlurDirect(CDibImage& image, int radius, int threshold, int times);

/// Any radius up to 15, in integers; the border is mirrored without repeating the edge sample. The
/// time does not depend on the radius.
void BlurByHistograms(CDibImage& image, int radius, int threshold, int times);

/// The mean of the window's samples within `threshold` of the centre, by the same scheme.
void BlurSelectiveMean(CDibImage& image, int radius, int threshold, int times);

/// Sides of 3 and more. Kaiming He, Jian Sun, Xiaoou Tang, Guided Image Filtering, 2010, with the
/// picture as its own guide.
void BlurGuided(CDibImage& image, int radius, int threshold, int times);

/// Separable: 2 * radius - 1 integer taps of a Gaussian with sigma radius / 3, of which only those
/// on samples within `threshold` of the centre count; the window is cut at the border.
void BlurSelectiveGaussian(CDibImage& image, int radius, int threshold, int times);

}  // namespace velloran
