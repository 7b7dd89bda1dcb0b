#pragma once

// Pixels into a palette: by nearest colour, by error diffusion, in appearance or for good. Each
// returns 0, and leaves the image, where it is empty or memory fails; else non-zero.

#include <array>
#include <cstdint>

#include "core/DibImage.h"
#include "reduce/Palette.h"

namespace velloran {

/// Nearest colour, squared distance, lowest index on ties; the image becomes 24-bit.
int ApplyPalette(CDibImage& image, const Palette& palette);

/// Floyd-Steinberg over any palette on a 24-bit image, stored rows in order, left to right, errors
/// in sixteenths. With `keepDepth` pixels take the entry's colour, else its index in all three
/// bytes. Images below 2 rows stay. (R. Floyd, L. Steinberg, "An Adaptive Algorithm for Spatial
/// Greyscale", 1976.)
int DiffusePalette(CDibImage& image, const Palette& palette, bool keepDepth);

enum BwDitherMethod : int { kJarvisJudiceNinke = 0, kFloydSteinberg = 1, kBayer = 2 };

/// 8-bit image to evenly spaced levels, as many as the palette has, at least 2: Floyd-Steinberg
/// for 3 and more, the method told for 2 (J. Jarvis, C. Judice, W. Ninke, "A Survey of Techniques
/// for the Display of Continuous Tone Pictures on Bilevel Displays", 1976; B. Bayer, "An Optimum
/// Method for Two-Level Rendition of Continuous-Tone Pictures", 1973; 8 x 8). Rows run top down.
/// Without `keepDepth` each level then becomes the index of the nearest entry.
int ReduceLevels(CDibImage& image, const Palette& palette, bool keepDepth, int bwDitherMethod);

/// Byte 0 of each pixel becomes a palette index at `bits` depth (1, 4 or 8).
int PackIndices(CDibImage& image, int bits, const Palette& palette);

/// Nearest colour at `bits` depth without dithering.
int PackNearest(CDibImage& image, int bits, const Palette& palette);

/// Keeps the bits of a 5-6-5 or 5-5-5 pixel in a 24-bit image, with or without error diffusion.
int Reduce16(CDibImage& image, bool dither, bool is565);

/// Index of the level nearest to `value` by the entries' blue bytes; exact match first, lowest
/// index on ties.
int NearestLevel(const Palette& palette, int value);
/// The same for every level.
std::array<std::uint8_t, 256> NearestLevels(const Palette& palette);

}  // namespace velloran
