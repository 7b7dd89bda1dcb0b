#include "spfit/XSpline.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "core/ExactMath.h"

namespace velloran {
namespace {

using QT::QPointF;
using spfit::LinearCombination;
using spfit::SampleFlags;
using spfit::SamplingParams;

/// The blend of positive tensions: 0 at u = 0, 1 at u = 1, with p = 2 d^2 for a reach of d.
double blendF(double u, double p) {
    return u * u * u * (10 - p + (2 * p - 15) * u + (6 - p) * u * u);
}
/// The blends of negative tensions, q = -s / 2.
double blendG(double u, double q) {
    return u * (q + u * (2 * q + u * (8 - 12 * q + u * (14 * q - 11 + u * (4 - 5 * q)))));
}
double blendH(double u, double q) {
    return u * (q + u * (2 * q - u * u * (2 * q + u * q)));
}

double positive(double distance, double reach) {
    const double u = distance / reach;
    return u <= 0 ? 0 : blendF(u, 2 * reach * reach);
}

/// The shares of the points around a segment: the one before it, its two ends, the one behind; at u
/// from 0 to 1, between ends of tensions s1 and s2. They add up to 1.
std::array<double, 4> blends(double u, double s1, double s2) {
    std::array<double, 4> a;
    if (s1 < 0) {
        a[0] = blendH(-u, -s1 / 2);
        a[2] = blendG(u, -s1 / 2);
    } else {
        a[0] = positive(s1 - u, 1 + s1);
        a[2] = positive(s1 + u, 1 + s1);
    }
    if (s2 < 0) {
        a[1] = blendG(1 - u, -s2 / 2);
        a[3] = blendH(u - 1, -s2 / 2);
    } else {
        a[1] = positive(s2 + 1 - u, 1 + s2);
        a[3] = positive(s2 + u - 1, 1 + s2);
    }
    const double sum = a[0] + a[1] + a[2] + a[3];
    for (double& share : a)
        share /= sum;
    return a;
}

double squareOf(const QPointF& a, const QPointF& b) {
    return (a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y);
}

/// How far `point` leaves the chord, squared.
double leavesChord(const QPointF& from, const QPointF& point, const QPointF& to) {
    const double length = squareOf(from, to);
    const double cross =
        (to.x - from.x) * (point.y - from.y) - (to.y - from.y) * (point.x - from.x);
    return length > 0 ? cross * cross / length : squareOf(from, point);
}

/// Halves a piece of the curve until the limits hold, and hands its points out in order.
class Sampler {
 public:
    Sampler(const XSpline& spline, const SamplingParams& params, XSpline::Sink& sink)
        : spline_(spline),
          sink_(sink),
          maxSquare_(params.maxDistance * params.maxDistance),
          minCosine_(params.maxAngleDegrees >= 180
                         ? -2.0
                         : Cos(std::max(params.maxAngleDegrees, 0.0) * kRadian)) {}

    /// The inner points of a piece; its ends are the caller's.
    void halve(double t1, const QPointF& p1, double t2, const QPointF& p2, int depth) {
        if (depth == 0)
            return;
        const double middle = (t1 + t2) / 2;
        const QPointF point = spline_.eval(middle);
        if (!isCrooked(p1, point, p2))
            return;
        halve(t1, p1, middle, point, depth - 1);
        sink_(point, middle, spfit::kPlainSample);
        halve(middle, point, t2, p2, depth - 1);
    }

 private:
    static constexpr double kRadian = 0.017453292519943295;

    bool isCrooked(const QPointF& from, const QPointF& point, const QPointF& to) const {
        if (leavesChord(from, point, to) > maxSquare_)
            return true;
        const double dot =
            (point.x - from.x) * (to.x - point.x) + (point.y - from.y) * (to.y - point.y);
        return dot < minCosine_ * std::sqrt(squareOf(from, point) * squareOf(point, to));
    }

    const XSpline& spline_;
    XSpline::Sink& sink_;
    double maxSquare_, minCosine_;
};

}  // namespace

void XSpline::appendControlPoint(const QPointF& position, double tension) {
    points_.push_back({position, std::clamp(tension, -1.0, 1.0)});
}

void XSpline::setControlPointTension(int index, double tension) {
    points_.at(static_cast<std::size_t>(index)).tension = std::clamp(tension, -1.0, 1.0);
}

double XSpline::controlPointTension(int index) const {
    return points_.at(static_cast<std::size_t>(index)).tension;
}

QPointF XSpline::controlPointPosition(int index) const {
    return points_.at(static_cast<std::size_t>(index)).position;
}

void XSpline::moveControlPoint(int index, const QPointF& position) {
    points_.at(static_cast<std::size_t>(index)).position = position;
}

LinearCombination XSpline::linearCombinationAt(double t) const {
    LinearCombination combination;
    const int segments = numSegments();
    if (segments < 1) {
        if (segments == 0)
            combination.add(0, 1);
        return combination;
    }
    const double at = std::clamp(t, 0.0, 1.0) * segments;
    const int segment = std::min(static_cast<int>(at), segments - 1);
    const std::array<double, 4> shares =
        blends(at - segment, controlPointTension(segment), controlPointTension(segment + 1));
    // Beyond the ends the end points stand for their missing neighbours.
    for (int i = 0; i < 4; ++i)
        if (shares[static_cast<std::size_t>(i)] != 0)
            combination.add(std::clamp(segment - 1 + i, 0, segments),
                            shares[static_cast<std::size_t>(i)]);
    return combination;
}

QPointF XSpline::eval(double t) const {
    QPointF point;
    for (const LinearCombination::Term& term : linearCombinationAt(t)) {
        const QPointF& position = points_[static_cast<std::size_t>(term.controlPoint)].position;
        point.x += term.share * position.x;
        point.y += term.share * position.y;
    }
    return point;
}

void XSpline::sample(Sink& sink, const SamplingParams& params, double fromT, double toT) const {
    // Each segment gives a few samples however straight it is: a fit needs them.
    constexpr int kPieces = 4, kDepth = 6;
    if (points_.empty())
        return;
    const int pieces = std::max(1, numSegments() * kPieces);
    Sampler sampler(*this, params, sink);
    double lastT = std::clamp(fromT, 0.0, 1.0);
    const double end = std::clamp(toT, lastT, 1.0);
    QPointF last = eval(lastT);
    sink(last, lastT, lastT == 0 ? spfit::kHeadSample : spfit::kPlainSample);
    for (int i = 1; i <= pieces && lastT < end; ++i) {
        const double t = std::min(static_cast<double>(i) / pieces, end);
        if (t <= lastT)
            continue;
        const QPointF point = eval(t);
        sampler.halve(lastT, last, t, point, kDepth);
        SampleFlags kind = spfit::kPlainSample;
        if (t == 1)
            kind = spfit::kTailSample;
        else if (i % kPieces == 0 && t < end)
            kind = spfit::kJunctionSample;
        sink(point, t, kind);
        last = point;
        lastT = t;
    }
}

std::vector<QPointF> XSpline::toPolyline(const SamplingParams& params, double fromT,
                                         double toT) const {
    std::vector<QPointF> polyline;
    const auto append = [&polyline](const QPointF& point, double, SampleFlags) {
        polyline.push_back(point);
    };
    ProxyFunction3<decltype(append), void, const QPointF&, double, SampleFlags> sink(append);
    sample(sink, params, fromT, toT);
    return polyline;
}

XSpline::Nearest XSpline::pointClosestTo(const QPointF& target, double accuracy) const {
    Nearest best{eval(0), 0};
    double bestSquare = squareOf(best.point, target);
    const auto take = [&](double t, double& ownSquare, double& ownT) {
        const QPointF point = eval(t);
        const double square = squareOf(point, target);
        if (square < ownSquare) {
            ownSquare = square;
            ownT = t;
        }
        if (square < bestSquare) {
            bestSquare = square;
            best = {point, t};
        }
    };
    const int segments = numSegments();
    for (int i = 0; i < segments; ++i) {
        const double first = static_cast<double>(i) / segments;
        const double last = static_cast<double>(i + 1) / segments;
        const QPointF a = eval(first), b = eval(last);
        const double length = squareOf(a, b);
        const double along =
            length > 0 ? ((target.x - a.x) * (b.x - a.x) + (target.y - a.y) * (b.y - a.y)) / length
                       : 0.0;
        double t = first + (last - first) * std::clamp(along, 0.0, 1.0);
        double square = squareOf(eval(t), target);
        take(t, square, t);
        if (square <= bestSquare) {
            bestSquare = square;
            best = {eval(t), t};
        }
        constexpr double kHalf = 0.5;
        for (double step = (last - first) * kHalf; step >= std::max(accuracy, 1e-12);
             step *= kHalf) {
            const double center = t;
            take(std::max(center - step, first), square, t);
            take(std::min(center + step, last), square, t);
        }
    }
    return best;
}

}  // namespace velloran
