#pragma once

// Rows of pixels that come from places between those of a source: where each comes from, and its
// sample there.

#include <cstdint>

#include "core/PlaneView.h"

namespace velloran {

/// Places of a row's pixels, in 1/kCubicSteps of a pixel; x is kOutsideSource for those outside.
struct PixelPlaces {
    std::int32_t *x = nullptr, *y = nullptr;
};
inline constexpr std::int32_t kOutsideSource = -(1 << 30);
/// Of sources with longer sides places would not fit their numbers.
inline constexpr int kLongestPlacedSide = 1 << 21;

/// The places of one column of a ruled grid: at the share v of its height they are ((x0 + x1 v) /
/// w, (y0 + y1 v) / w) with w = w0 + w1 v. An array for each of them, so that loops become vectors.
struct ColumnTerms {
    const double *x0, *x1, *y0, *y1, *w0, *w1;
};

/// The places of `count` columns at v in a source of that size, rounded. What does not round into
/// the source, and what is no number, is outside.
void PlaceRow(const ColumnTerms& columns, int count, double v, int sourceWidth, int sourceHeight,
              PixelPlaces places);

/// Cubic samples as CubicSample gives them, borders replicated, of 1 or 3 channels. Pixels whose
/// place is outside stay.
void CubicPixels(ConstPlaneView source, PixelPlaces places, int count, std::uint8_t* out);

}  // namespace velloran
