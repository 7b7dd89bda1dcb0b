#pragma once

// One page out of a scan: what lies between two nearly upright lines.

#include <cstdint>

namespace velloran {

class CDibImage;

/// The page between the lines (packed, PackedLine.h): as wide as the four ends lie apart, its rest
/// in `fill` (0x00BBGGRR; grey images take its grey). The image becomes grey or 24-bit. 0, image
/// unchanged but for its depth, for sides below 10 pixels, equal lines and without memory.
int keepBetweenLines(CDibImage& image, std::int32_t lineA, std::int32_t lineB, std::uint32_t fill);

/// Marks in `mask` (8 bits, made in the size of `image` with 255 where it is empty) what lies
/// outside the lines by 0, once keepBetweenLines has cut the page. 0 without memory.
int maskBetweenLines(const CDibImage& image, CDibImage& mask, std::int32_t lineA,
                     std::int32_t lineB);

/// Darkens what lies outside the lines to 55 %, to show where a page would be cut. The image
/// becomes grey or 24-bit. 0 for sides below 10 pixels and without memory.
int shadeOutsideLines(CDibImage& image, std::int32_t lineA, std::int32_t lineB);

}  // namespace velloran
