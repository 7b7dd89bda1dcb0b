#pragma once

// The two passes of Wolf's threshold over one row.

#include <cstdint>

namespace velloran {

/// Running sums of samples and of their squares: for the window of column x, last[x] - first[x]
/// times share[x] is the mean.
struct WolfRow {
    const std::uint64_t *first, *last, *firstSquares, *lastSquares;
    const double* share;
    int width;
};

/// What a threshold needs to know of the whole page.
struct WolfTone {
    float largestDeviation;  // 0 stands for a page without any
    float darkest;
    int lowBound, highBound;
};

double LargestVarianceOf(const WolfRow& row);

/// Samples become 0 or 255.
void ThresholdRow(const WolfRow& row, const WolfTone& tone, const std::uint8_t* in,
                  std::uint8_t* out);

}  // namespace velloran
