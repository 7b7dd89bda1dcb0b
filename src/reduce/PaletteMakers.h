#pragma once

// The five palette makers. All are deterministic. Each takes the image as it is and the wanted
// count of colours, and returns at most that many entries; an empty palette where memory failed or
// the depth is not supported.

#include "core/DibImage.h"
#include "reduce/Palette.h"

namespace velloran {

enum PaletteMaker : int {
    kOctree = 0,
    kMedianCut = 1,
    kXiaolinWu = 2,
    kFixedPalette = 3,
    kNeuralNetwork = 4,
};

/// Octree that reduces while it is filled, at most max(colors, 16) leaves. (M. Gervautz, W.
/// Purgathofer, "A Simple Method for Color Quantization: Octree Quantization", 1988.) 1, 4, 8 and
/// 24 bits.
Palette OctreePalette(const CDibImage& image, int colors);

/// Boxes cut at the median of their longest side. (P. Heckbert, "Color Image Quantization for
/// Frame Buffer Display", 1982.) 8 bits repeat the pixel value, 24 bits.
Palette MedianCutPalette(const CDibImage& image, int colors);

/// Variance-minimising cuts of a 33 x 33 x 33 table. (X. Wu, "Efficient Statistical Computations
/// for Optimal Color Quantization", Graphics Gems II, 1991.) 8 bits repeat the value, 24 bits.
Palette WuPalette(const CDibImage& image, int colors);

/// Built-in palettes of 2, 4, 8, 16, 32, 64, 128 and 256 entries for 24 bits (another count is all
/// black; `bits` 1 is black and white), a grey ramp for other depths.
Palette FixedPalette(const CDibImage& image, int colors, int bits);

/// Self-organising map. (A. Dekker, "Kohonen Neural Networks for Optimal Colour Quantization",
/// Network 5, 1994.) Images that are not 24-bit are widened in a copy.
Palette NeuralPalette(const CDibImage& image, int colors);

/// By number; any other value is the octree. `bits` is the target depth.
Palette MakePalette(const CDibImage& image, int quantize, int colors, int bits);

}  // namespace velloran
