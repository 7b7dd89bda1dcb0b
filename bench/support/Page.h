#pragma once

// The page that benchmarks work on, and the floor that they are measured against.

#include <cstddef>
#include <cstdint>
#include <functional>

#include "core/DibImage.h"

namespace velloran::bench {

inline constexpr int kPageWidth = 2480, kPageHeight = 3508;  // A4 at 300 dpi
inline constexpr int kColorBits = 24, kGrayBits = 8;

/// A page-like picture: paper with uneven light, dark strokes and scanner noise; the same on every
/// call. `bpp` is 8 or 24.
CDibImage ScannedPage(int bpp, int width = kPageWidth, int height = kPageHeight);

/// Random pixels: the worst case of table and palette look-ups.
CDibImage NoisePage(int bpp, int width = kPageWidth, int height = kPageHeight);

/// Bytes of the rows, padding included.
std::size_t PageBytes(const CDibImage& page);

/// The pixels alone, into an image of the same size and depth: what every ratio in copies counts.
void CopyPixels(const CDibImage& from, CDibImage& to);

/// The most memory that `work` held beside what was there before, in bytes; -1 where the system
/// does not tell.
std::int64_t PeakBytes(const std::function<void()>& work);

}  // namespace velloran::bench
