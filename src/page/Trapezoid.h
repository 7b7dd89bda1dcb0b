#pragma once

// Photographed pages: a figure of four corners becomes a rectangle.

#include <cstdint>

#include "page/Corners.h"

namespace velloran {

class CDibImage;

/// Size modes: the low byte of PARA_CRT_CROP; the next byte is the row of the ratio.
enum CorrectionSize : int {
    kMeasured = 0,
    kMeasuredByRatio = 1,
    kWidthByRatio = 2,
    kHeightByRatio = 3,
    kWidthByAspect = 4,
    kHeightByAspect = 5,
    kBothGiven = 6,
};

/// The size of the flat page and its corners in the picture. The measured size is the extent of the
/// corners; a given width or height (`size`, packed) of less than a quarter of it does not count. 0
/// for an empty image, four corners of 0 and four of -1.
int correctionOutputSize(int& outWidth, int& outHeight, TrueCorners& quad, const CDibImage& image,
                         const PackedCorners& corners, std::int32_t crop, std::int32_t size);

/// The corners tell where the picture's own corners go; the result is as large as they reach, with
/// `color` (0x00BBGGRR) where nothing comes to lie. The image becomes grey or 24-bit. `nearest` 1
/// takes the nearest pixel, 0 a cubic. 0, image unchanged but for its depth, for corners of 0, a
/// size below 2 or above the limits of a picture, corners that make no figure, without memory.
int warpToBoundingBox(CDibImage& image, const PackedCorners& corners, int nearest,
                      std::uint32_t color);

/// The corners are those of the page in the picture; the result is the page alone, in the size of
/// correctionOutputSize. Otherwise as above.
int warpToRectangle(CDibImage& image, const PackedCorners& corners, int nearest, std::int32_t crop,
                    std::int32_t size, std::uint32_t color);

/// Finds the corners of the page by its edges, between two packed lines (0 for none). With
/// `directOutput` 1 those of the page in the picture, as warpToRectangle takes them, with 0 the
/// places where the picture's corners must go, as warpToBoundingBox does. 0, corners unchanged,
/// when fewer than three are found, for small pages and without memory.
int findCorners(int directOutput, const CDibImage& image, PackedCorners& corners,
                std::int32_t leftLine, std::int32_t rightLine);

}  // namespace velloran
