#pragma once

// Where a point of the flat page lies in the scan. Outlines are warped before they are drawn, so
// that nothing is ever resampled and every told coordinate is exact.

#include <array>
#include <optional>

#include "samples/Shapes.h"

namespace velloran::samples {

/// The curl of a page that lies open. The spine is the page's left edge, or its right one. At the
/// share s of the width from the spine the upper edge lies `topRise` * b(s) higher than flat and
/// the lower edge `bottomRise` * b(s) higher, b(s) = 6.75 s (1 - s)^2 (1 at its peak, s = 1/3);
/// between the two edges columns stay straight. Near the spine columns are `squeeze` narrower.
struct PageCurl {
    double width = 1, height = 1;
    double topRise = 0, bottomRise = 0;
    double squeeze = 0;
    bool spineAtLeft = true;
};

class Warp {
 public:
    /// Nothing moves.
    Warp() = default;

    /// Steps are applied in the order in which they are added; the curl is the first of all.
    Warp& Curl(const PageCurl& curl);
    Warp& Move(double dx, double dy);
    /// About `center`; positive is clockwise as seen on the screen.
    Warp& Turn(double degrees, Point center);
    /// Left and right of the page (x from 0 to width) change places.
    Warp& Mirror(double width);
    /// Brings the corners of a width x height page (top left, top right, bottom right, bottom
    /// left) to `corners`.
    Warp& Project(double width, double height, const std::array<Point, 4>& corners);

    Point operator()(Point page) const;
    /// Straight lines are cut into short ones where the page is curled.
    Path operator()(const Path& path) const;
    bool IsCurled() const { return curl_.has_value(); }

 private:
    using Matrix = std::array<double, 9>;
    void Append(const Matrix& next);

    std::optional<PageCurl> curl_;
    Matrix matrix_{1, 0, 0, 0, 1, 0, 0, 0, 1};
};

}  // namespace velloran::samples
