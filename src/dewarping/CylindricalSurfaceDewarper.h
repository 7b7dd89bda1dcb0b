#pragma once

// A page bent like a cylinder and seen in perspective. Two curves tell its shape: lines across the
// page that lie over each other, each the image of one straight line. The straight lines between
// their corresponding points are those along which the page does not bend.
//
// The four ends of the curves span a plane; a homography brings it to the unit square. In it the
// unbent lines are parallel, and by the geometry of a cylinder over that plane places on them keep
// their proportions. Along the page, lengths are those of the curves, with what they rise counted
// `depthPerception` times: a page is seen obliquely, and bends deeper than its lines seem to.
// (M. Brown, Y.-C. Tsoi, "Geometric and Shading Correction for Images of Printed Materials Using
// Boundary", 2006, for ruled surfaces between curved boundaries.)

#include <vector>

#include "core/QtTypes.h"
#include "imaging/Perspective.h"

namespace velloran::dewarping {

class CylindricalSurfaceDewarper {
 public:
    static constexpr double kDepthPerception = 2.0;

    /// Each curve as a polyline of two points or more, from the same side. Throws
    /// std::runtime_error where the ends do not span a plane or the curves meet.
    CylindricalSurfaceDewarper(const std::vector<QT::QPointF>& top,
                               const std::vector<QT::QPointF>& bottom,
                               double depthPerception = kDepthPerception);

    /// The flat page between the curves: x from 0 to the width, y from 0 (top) to the height, in
    /// pixels as large as they are in the picture on the average.
    double flatWidth() const { return lengths_.back(); }
    double flatHeight() const { return height_; }

    /// Beyond the ends of the curves the page goes on as it was there.
    QT::QPointF toFlat(const QT::QPointF& image) const;
    QT::QPointF toImage(const QT::QPointF& flat) const;

    /// Where a column of the flat page comes from: its place at the share v of the height is
    /// ((x0 + x1 v) / w, (y0 + y1 v) / w) with w = w0 + w1 v.
    struct Column {
        double x0, x1, y0, y1, w0, w1;
        QT::QPointF at(double v) const {
            const double w = w0 + w1 * v;
            return {(x0 + x1 * v) / w, (y0 + y1 * v) / w};
        }
    };
    Column columnAt(double flatX) const;

 private:
    static constexpr int kNodes = 513;  // of the tables, evenly over the width of the plane

    struct Rows {
        double top, bottom;
    };
    void solvePlane(const QT::QPointF (&corners)[4]);
    std::vector<double> tableOf(const std::vector<QT::QPointF>& curve, bool isBottom) const;
    void measureLengths(const QT::QPointF (&corners)[4], double depthPerception);
    Rows rowsAt(double planeX) const;
    double planeXOf(double flatX) const;
    double flatXOf(double planeX) const;

    PerspectiveMap toPlane_{{}}, toImage_{{}};
    std::vector<double> top_, bottom_;  // y in the plane
    std::vector<double> lengths_;       // along the page from its left end
    double height_ = 0;
};

}  // namespace velloran::dewarping
