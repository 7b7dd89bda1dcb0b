#pragma once

// Finds the curves that tell the shape of a page, and how well that shape explains the page.

#include <array>
#include <cstdint>

#include "dewarping/PageShape.h"

namespace velloran {
class CDibImage;
}

namespace velloran::dewarping {

inline constexpr int kCurvePoints = 8;

/// By what a page is traced: PARA_CRT_DEWARPING_TYPE; 4 more means only where the curves are unset.
enum CurveMethod : int {
    kExtendedTextLines = 0,
    kTextLines = 1,
    kPageEdges = 2,
    kCleanTextLines = 3,
    kOnlyWhenUnset = 4,
};

/// Curves of a page with what speaks for them.
struct CurveFinding {
    /// A curved shape was found that may be flattened; otherwise the curves are a flat grid.
    bool found = false;
    std::array<std::int32_t, kCurvePoints> top{}, bottom{};  // packed, see CurvePoints.h
    /// 0 to 1: how surely the curves (the flat ones, too) are those of the page. It is high where
    /// many lines over much of the page tell one shape, where the shape of every other line is
    /// that of the rest, and where what was found makes the lines straight.
    double sure = 0;
    ShapeEvidence evidence;
    /// How far lines leave straight ones, in line pitches: the usual line (rms, then median over
    /// the lines), as it was and as the curves leave it.
    double bentBefore = 0, bentAfter = 0;
};

/// Searches the curves of the page; `illum` is PARA_CRT_DEWARPING_ILLUM. Nothing is thrown but
/// std::bad_alloc. An image below 10 pixels in a direction has none.
CurveFinding measureCurves(int method, const CDibImage& image, int illum);

/// Searches the curves and writes n points of each; `top` and `bottom` hold the present ones, which
/// methods above 2 take for the sides of the page. 1 when it wrote the curves of a valid model, or
/// the flat grid of a page that it found flat; 0 when it found nothing, without memory, for n below
/// 5 and for an image below 10 pixels in a direction: the curves are the flat grid then (unchanged
/// where there is no image or n is below 1).
int findCurves(int method, const CDibImage& image, std::int32_t* top, std::int32_t* bottom, int n,
               int illum);

}  // namespace velloran::dewarping
