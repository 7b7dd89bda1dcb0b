#include "spfit/PolylineModelShape.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <stdexcept>
#include <utility>

namespace velloran::spfit {
namespace {

using QT::QPointF;

constexpr double kSlide = 0.02;  // of what a sample is held back across the polyline

/// Of length 1; upright where the direction is none.
QPointF normalOf(double dx, double dy) {
    const double length = std::sqrt(dx * dx + dy * dy);
    return length > 0 ? QPointF{-dy / length, dx / length} : QPointF{0, 1};
}

}  // namespace

PolylineModelShape::PolylineModelShape(std::vector<QPointF> polyline)
    : polyline_(std::move(polyline)) {
    if (polyline_.size() < 2)
        throw std::invalid_argument("PolylineModelShape: polyline must have at least 2 vertices");
    for (std::size_t i = 0; i < polyline_.size(); ++i) {
        const QPointF& before = polyline_[i == 0 ? 0 : i - 1];
        const QPointF& behind = polyline_[std::min(i + 1, polyline_.size() - 1)];
        normals_.push_back(normalOf(behind.x - before.x, behind.y - before.y));
    }
}

PolylineModelShape::Foot PolylineModelShape::footOf(const QPointF& point) const {
    Foot foot;
    double nearest = std::numeric_limits<double>::max();
    for (std::size_t i = 0; i + 1 < polyline_.size(); ++i) {
        const QPointF &a = polyline_[i], &b = polyline_[i + 1];
        const double dx = b.x - a.x, dy = b.y - a.y, square = dx * dx + dy * dy;
        const double along =
            square > 0 ? ((point.x - a.x) * dx + (point.y - a.y) * dy) / square : 0.0;
        const double share = std::clamp(along, 0.0, 1.0);
        const QPointF at{a.x + share * dx, a.y + share * dy};
        const double distance =
            (point.x - at.x) * (point.x - at.x) + (point.y - at.y) * (point.y - at.y);
        if (!(distance < nearest))
            continue;
        nearest = distance;
        const QPointF &n = normals_[i], &m = normals_[i + 1];
        const double nx = n.x + share * (m.x - n.x), ny = n.y + share * (m.y - n.y);
        foot = {at, normalOf(ny, -nx),
                (i == 0 && along < 0) || (i + 2 == polyline_.size() && along > 1)};
    }
    return foot;
}

SquaredDistance PolylineModelShape::distanceFrom(const QPointF& point, SampleFlags kind) const {
    if ((kind & kHeadSample) != 0)
        return {polyline_.front(), normals_.front(), 1, 1};
    if ((kind & kTailSample) != 0)
        return {polyline_.back(), normals_.back(), 1, 1};
    const Foot foot = footOf(point);
    return {foot.point, foot.normal, 1, foot.isBeyond ? 1 : kSlide};
}

}  // namespace velloran::spfit
