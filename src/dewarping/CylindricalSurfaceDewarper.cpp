#include "dewarping/CylindricalSurfaceDewarper.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <stdexcept>

#include "mcalc/LinearSolver.h"

namespace velloran::dewarping {
namespace {

using QT::QPointF;

constexpr double kLeastGap = 0.01;  // between the curves, of their distance at the ends
constexpr double kPlaneBound = 4;   // how far beyond the plane's ends x may go
constexpr double kLeastPixels = 1e-3;

double distance(const QPointF& a, const QPointF& b) {
    return std::sqrt((a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y));
}

QPointF pointOf(const MapPoint& point) {
    return {point.x, point.y};
}

/// The place of a table at `at` nodes, going on straight beyond its ends.
double valueAt(const std::vector<double>& table, double at) {
    const double last = static_cast<double>(table.size() - 1);
    const auto i = static_cast<std::size_t>(std::clamp(at, 0.0, last - 1));
    return table[i] + (at - static_cast<double>(i)) * (table[i + 1] - table[i]);
}

}  // namespace

CylindricalSurfaceDewarper::CylindricalSurfaceDewarper(const std::vector<QPointF>& top,
                                                       const std::vector<QPointF>& bottom,
                                                       double depthPerception) {
    if (top.size() < 2 || bottom.size() < 2)
        throw std::runtime_error("CylindricalSurfaceDewarper: curve without length");
    const QPointF corners[] = {top.front(), top.back(), bottom.front(), bottom.back()};
    solvePlane(corners);
    top_ = tableOf(top, false);
    bottom_ = tableOf(bottom, true);
    for (std::size_t i = 0; i < top_.size(); ++i)
        if (!(bottom_[i] - top_[i] >= kLeastGap))
            throw std::runtime_error("CylindricalSurfaceDewarper: curves meet");
    measureLengths(corners, depthPerception);
}

void CylindricalSurfaceDewarper::solvePlane(const QPointF (&corners)[4]) {
    // Of the map from the unit square: eight unknowns, the ninth is 1.
    constexpr QPointF kSquare[] = {{0, 0}, {1, 0}, {0, 1}, {1, 1}};
    std::array<double, 64> a{};
    std::array<double, 8> b{}, x{};
    for (std::size_t i = 0; i < 4; ++i) {
        const QPointF from = kSquare[i], to = corners[i];
        const double rows[2][8] = {{from.x, from.y, 1, 0, 0, 0, -from.x * to.x, -from.y * to.x},
                                   {0, 0, 0, from.x, from.y, 1, -from.x * to.y, -from.y * to.y}};
        for (std::size_t row = 0; row < 2; ++row)
            std::copy(rows[row], rows[row] + 8, a.begin() + static_cast<long>((2 * i + row) * 8));
        b[2 * i] = to.x;
        b[2 * i + 1] = to.y;
    }
    mcalc::StaticPoolAllocator<double, 128, 9> pool;
    mcalc::LinearSolver(8, 8, 1).solve(a.data(), x.data(), b.data(), pool);
    const PerspectiveMap::Coefficients values{x[0], x[1], x[2], x[3], x[4], x[5], x[6], x[7], 1};
    constexpr std::array<double, 9> kUnit{1, 0, 0, 0, 1, 0, 0, 0, 1};
    PerspectiveMap::Coefficients inverse;
    mcalc::StaticPoolAllocator<double, 36, 3> inversePool;
    mcalc::LinearSolver(3, 3, 3).solve(values.data(), inverse.data(), kUnit.data(), inversePool);
    // The horizon of the plane must lie outside the figure.
    for (const QPointF& from : kSquare)
        if (!(values[6] * from.x + values[7] * from.y + 1 > 0))
            throw std::runtime_error("CylindricalSurfaceDewarper: ends do not span a plane");
    toImage_ = PerspectiveMap(values);
    toPlane_ = PerspectiveMap(inverse);
}

std::vector<double> CylindricalSurfaceDewarper::tableOf(const std::vector<QPointF>& curve,
                                                        bool isBottom) const {
    const double chord = isBottom ? 1 : 0;
    std::vector<double> table;
    table.reserve(kNodes);
    QPointF last{0, chord};
    std::size_t next = 1;
    QPointF ahead = last;
    for (int node = 0; node < kNodes; ++node) {
        const double x = static_cast<double>(node) / (kNodes - 1);
        // Points that go back are passed over, so that each x has one y.
        while (ahead.x <= x && next < curve.size()) {
            if (ahead.x >= last.x)
                last = ahead;
            ahead = next + 1 == curve.size() ? QPointF{1, chord}
                                             : pointOf(toPlane_({curve[next].x, curve[next].y}));
            ++next;
        }
        if (ahead.x > last.x)
            table.push_back(last.y + (x - last.x) / (ahead.x - last.x) * (ahead.y - last.y));
        else
            table.push_back(ahead.y);
        if (!std::isfinite(table.back()))
            throw std::runtime_error("CylindricalSurfaceDewarper: curve leaves the plane");
    }
    table.back() = chord;
    return table;
}

void CylindricalSurfaceDewarper::measureLengths(const QPointF (&corners)[4],
                                                double depthPerception) {
    const double width = (distance(corners[0], corners[1]) + distance(corners[2], corners[3])) / 2;
    height_ = (distance(corners[0], corners[2]) + distance(corners[1], corners[3])) / 2;
    lengths_.assign(1, 0.0);
    const double dx = width / (kNodes - 1), rise = depthPerception * height_;
    const auto step = [dx, rise](const std::vector<double>& table, std::size_t i) {
        const double dy = (table[i] - table[i - 1]) * rise;
        return std::sqrt(dx * dx + dy * dy);
    };
    for (std::size_t i = 1; i < top_.size(); ++i)
        lengths_.push_back(lengths_.back() + (step(top_, i) + step(bottom_, i)) / 2);
    if (!(lengths_.back() > kLeastPixels) || !(height_ > kLeastPixels))
        throw std::runtime_error("CylindricalSurfaceDewarper: curve without length");
}

CylindricalSurfaceDewarper::Rows CylindricalSurfaceDewarper::rowsAt(double planeX) const {
    const double at = std::clamp(planeX, -kPlaneBound, 1 + kPlaneBound) * (kNodes - 1);
    Rows rows{valueAt(top_, at), valueAt(bottom_, at)};
    rows.bottom = std::max(rows.bottom, rows.top + kLeastGap);
    return rows;
}

double CylindricalSurfaceDewarper::flatXOf(double planeX) const {
    return valueAt(lengths_, std::clamp(planeX, -kPlaneBound, 1 + kPlaneBound) * (kNodes - 1));
}

double CylindricalSurfaceDewarper::planeXOf(double flatX) const {
    const auto above = std::upper_bound(lengths_.begin() + 1, lengths_.end() - 1, flatX);
    const double length = *above, before = *(above - 1);
    const double node = static_cast<double>(above - lengths_.begin()) - 1;
    const double x = (node + (flatX - before) / (length - before)) / (kNodes - 1);
    return std::clamp(x, -kPlaneBound, 1 + kPlaneBound);
}

QPointF CylindricalSurfaceDewarper::toFlat(const QPointF& image) const {
    const MapPoint plane = toPlane_({image.x, image.y});
    const Rows rows = rowsAt(plane.x);
    return {flatXOf(plane.x), (plane.y - rows.top) / (rows.bottom - rows.top) * height_};
}

QPointF CylindricalSurfaceDewarper::toImage(const QPointF& flat) const {
    return columnAt(flat.x).at(flat.y / height_);
}

CylindricalSurfaceDewarper::Column CylindricalSurfaceDewarper::columnAt(double flatX) const {
    const double x = planeXOf(flatX);
    const Rows rows = rowsAt(x);
    const double dy = rows.bottom - rows.top;
    const PerspectiveMap::Coefficients& m = toImage_.Values();
    return {m[0] * x + m[1] * rows.top + m[2], m[1] * dy,
            m[3] * x + m[4] * rows.top + m[5], m[4] * dy,
            m[6] * x + m[7] * rows.top + m[8], m[7] * dy};
}

}  // namespace velloran::dewarping
