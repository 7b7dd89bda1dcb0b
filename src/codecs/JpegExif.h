#pragma once

// The three things that a JPEG's EXIF data says of the page: resolution, its unit, and which way
// the picture lies. Internal to the codecs.

#include <cstdint>
#include <optional>
#include <span>

namespace velloran {

class CDibImage;

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

/// True for orientations that swap width and height.
bool SwapsSides(int orientation);

/// Turns an image of 8 or 24 bits that was stored in orientation 2..8 upright; others stay.
/// Row padding and DPI are not looked after. Throws std::bad_alloc.
void TurnUpright(CDibImage& image, int orientation);

}  // namespace velloran
