#pragma once

// Adjustable sharpening: a Gaussian high-pass with unit gain.

#include <span>

namespace velloran {

class CDibImage;

/// Strength `percent` from 1 on sets the width of the Gaussian, sigma (percent + 3) / 10, and the
/// side of the kernel, 3 to 25; `size` is the most that the side may be, 7 to 25 (an even one
/// counts as the odd one below). Borders are replicated, sums rounded to nearest and limited to
/// 0..255. Refuses other values and a size not below both sides of the image; normalises the
/// depth. 0, pixels unchanged, then and without memory.
///
/// The sum is taken along columns and then along rows. It is within 1/16 of a level of the sum over
/// the whole square, so that a sample differs, by one, only where that sum lies as near to the
/// middle between two levels.
int AdjustSharpen(CDibImage& image, int percent, int size);

/// Side of the kernel for a strength from 1 on, before `size` limits it.
int SharpenKernelSize(int percent);

/// `size` * `size` weights, row-major, size odd: minus exp(-(x^2 + y^2) / (2 sigma^2)), and in the
/// centre what makes the sum 1. Returns 0, nothing written, for a sigma that is not positive, an
/// even size or one below 1, or a kernel of another length.
int MakeSharpenKernel(float sigma, int size, std::span<float> kernel);

}  // namespace velloran
