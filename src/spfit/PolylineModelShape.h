#pragma once

// A polyline as the shape that a spline is drawn to.

#include <vector>

#include "spfit/ModelShape.h"

namespace velloran::spfit {

class PolylineModelShape : public ModelShape {
 public:
    /// Fewer than two vertices throw std::invalid_argument.
    explicit PolylineModelShape(std::vector<QT::QPointF> polyline);

    /// The spline's ends are drawn to the polyline's ends, all other samples to the nearest place
    /// on it, along which they slide nearly free.
    SquaredDistance distanceFrom(const QT::QPointF& point, SampleFlags kind) const override;

 protected:
    struct Foot {
        QT::QPointF point;
        QT::QPointF normal;     // between those of the vertices around
        bool isBeyond = false;  // the nearest place is an end of the polyline
    };
    Foot footOf(const QT::QPointF& point) const;
    const std::vector<QT::QPointF>& polyline() const { return polyline_; }

 private:
    std::vector<QT::QPointF> polyline_;
    std::vector<QT::QPointF> normals_;  // one a vertex
};

}  // namespace velloran::spfit
