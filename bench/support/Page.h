#pragma once

// The page that benchmarks work on, and the floor that they are measured against.

#include "core/DibImage.h"

namespace velloran::bench {

inline constexpr int kPageWidth = 2480, kPageHeight = 3508;  // A4 at 300 dpi

/// A page-like picture: paper with uneven light, dark strokes and scanner noise; the same on every
/// call. `bpp` is 8 or 24.
CDibImage ScannedPage(int bpp, int width = kPageWidth, int height = kPageHeight);

/// Random pixels: the worst case of table and palette look-ups.
CDibImage NoisePage(int bpp, int width = kPageWidth, int height = kPageHeight);

}  // namespace velloran::bench
