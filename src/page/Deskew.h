#pragma once

// How crooked a page is, and turning it straight. The search looks for the angle at which the lines
// of text stand out most, on a small black-and-white copy without specks, edges and long rules.
// (W. Postl, "Detection of linear oblique structures and skew scan in digitized documents", 1986,
// for the principle.)

#include <array>
#include <cstdint>

namespace velloran {

class CDibImage;

/// Positions in the list of PARA_DESKEW.
enum DeskewMode : int {
    kNoDeskew = 0,
    kDeskewRows = 1,
    kDeskewColumns = 2,
    kDeskewBoth = 3,
    kDeskewManual = 4,
};

/// Positions in the list of PARA_DESKEW_EDGE: what the corners that a turn opens show.
enum DeskewEdge : int { kKeepEdge = 0, kFillEdge = 1, kExtendEdge = 2 };

/// Per mille of the page's size on each side.
struct SkewRegion {
    int left = 0, top = 0, right = 0, bottom = 0;
};

/// What a search found: degrees, within 5.5 of upright, and how far the best angle stands above the
/// mean of all (2 and more is worth a turn). A page without lines has confidence 0.
struct Skew {
    double angle = 0, confidence = 0;
    int mode = kDeskewRows;  // kDeskewRows or kDeskewColumns, whose angle it is
};

/// Pages below it in a direction are not measured.
inline constexpr int kSmallestSkewSide = 100;

/// Measures the page, which stays as it is. With all four sides of the region set only what lies
/// between them is looked at. 0 for an empty image, modes outside kDeskewRows to kDeskewBoth, and
/// without memory (angle and confidence are then 0); 1 otherwise, with angle and confidence 0 for a
/// page below 100 pixels in a direction.
int findSkew(const CDibImage& image, double& angle, double& confidence, const SkewRegion& region,
             int mode);

/// The best angle of a black-and-white 8-bit page: whole degrees on a quarter of its size, then
/// halving steps on half. With kDeskewBoth that of the columns unless the rows' is smaller. Throws
/// std::bad_alloc.
Skew searchAngle(const CDibImage& gray, int mode);

/// The turn that a search is worth, in hundredths of a degree as PARA_DESKEW_ANGLE counts them: 0
/// when the page is not sure to be crooked.
int turnOfSkew(const Skew& skew);

/// Turns about the middle; the size stays. The image becomes grey or 24-bit first. `interpolation`
/// 1 takes the nearest pixel, any other value a cubic. A positive angle turns clockwise. `color`
/// (0x00BBGGRR) fills opened corners in kFillEdge; an 8-bit image takes the byte of bits 16 to 23.
/// 0, image unchanged, strictly between -0.01 and 0.01 degrees, for an empty image and without
/// memory.
int rotateKeepSize(CDibImage& image, double degrees, int interpolation, int edgeMode,
                   std::uint32_t color);

}  // namespace velloran
