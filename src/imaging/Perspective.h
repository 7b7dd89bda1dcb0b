#pragma once

// Perspective maps between a rectangle and a figure of four corners, and images through them. (P.
// Heckbert, "Fundamentals of Texture Mapping and Image Warping", 1989.)

#include <array>
#include <optional>

#include "core/PlaneView.h"

namespace velloran {

struct MapPoint {
    double x = 0, y = 0;
};

/// (x, y) goes to ((a x + b y + c) / w, (d x + e y + f) / w) with w = g x + h y + i.
class PerspectiveMap {
 public:
    /// a to i.
    using Coefficients = std::array<double, 9>;
    explicit PerspectiveMap(const Coefficients& coefficients) : m_(coefficients) {}

    /// The map that takes (0, 0), (width, 0), (width, height) and (0, height) to the corners, in
    /// this order. Nothing when three of them lie on a line.
    static std::optional<PerspectiveMap> ToQuad(double width, double height,
                                                const std::array<MapPoint, 4>& corners);

    /// Nothing for a map that has none.
    std::optional<PerspectiveMap> Inverse() const;

    /// Infinities where a point goes to the horizon.
    MapPoint operator()(MapPoint point) const {
        const double w = m_[6] * point.x + m_[7] * point.y + m_[8];
        return {(m_[0] * point.x + m_[1] * point.y + m_[2]) / w,
                (m_[3] * point.x + m_[4] * point.y + m_[5]) / w};
    }

    const Coefficients& Values() const { return m_; }

 private:
    Coefficients m_;
};

/// Each target pixel whose place in the source, by the map, rounds into the source is fetched from
/// there; the others stay. Equal channels, 1 or 3; the views do not overlap.
void WarpNearest(ConstPlaneView source, const PerspectiveMap& toSource, PlaneView target);
/// The same by cubic convolution, as RotateCubic.
void WarpCubic(ConstPlaneView source, const PerspectiveMap& toSource, PlaneView target);

}  // namespace velloran
