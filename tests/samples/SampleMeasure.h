#pragma once

// Plain measurements on sample pages, made from their pixels alone.

#include <functional>
#include <vector>

#include "samples/SamplePage.h"

namespace velloran::test {

/// A small page, quick to make: 620 x 877 at `dpi`, two pages lying across.
samples::SamplePage SmallPage(samples::PageKind kind, std::uint64_t seed = 1, int dpi = 110,
                              std::optional<double> angle = std::nullopt);

/// 0 to 255, row 0 at the top; 0 outside the picture.
double GrayAt(const CBaseImage& image, double x, double y);

/// Middles of all pixels darker than `limit`.
std::vector<samples::Point> DarkPixels(const CBaseImage& image, double limit);

/// The box around pixels given by their middles; each pixel is 1 x 1.
samples::Box BoxAround(const std::vector<samples::Point>& middles);

/// Turned about `center`, positive clockwise as seen.
samples::Point Turned(samples::Point point, samples::Point center, double degrees);

void ExpectNear(const samples::Box& actual, const samples::Box& expected, double tolerance);

}  // namespace velloran::test
