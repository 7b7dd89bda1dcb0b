#pragma once

// The three things that a JPEG's EXIF data says of the page: resolution, its unit, and which way
// the picture lies. Internal to the codecs.

#include <cstdint>
#include <optional>
#include <span>

namespace velloran {

struct ExifFacts {
    int resolutionUnit = 0;  // 2 inch, 3 centimetre
    std::optional<double> xResolution, yResolution;
    int orientation = 1;  // 1..8, as EXIF counts them
};

/// Reads an APP1 segment from its "Exif" mark on. What is missing or damaged keeps its default.
ExifFacts ReadExifFacts(std::span<const std::uint8_t> exif);

/// DPI of a page after its EXIF data had their say. Unit 2 sets both; unit 3 converts both by
/// 254 / 10000 as the head's rule does, and stores both to x: y stays.
struct PageDpi {
    int x = 0, y = 0;
};
PageDpi ApplyExifResolution(const ExifFacts& exif, PageDpi head);

}  // namespace velloran
