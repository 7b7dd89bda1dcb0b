#include "dewarping/DistortionModelBuilder.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <exception>
#include <limits>
#include <random>
#include <stdexcept>
#include <utility>

#include "core/StepContext.h"
#include "dewarping/CylindricalSurfaceDewarper.h"

namespace velloran::dewarping {
namespace {

using QT::QLineF;
using QT::QPointF;

constexpr int kEnds = 5, kRandomPairs = 25;

struct TracedCurve {
    std::vector<QPointF> trimmed, extended;
    ModelCurve curve;
    double order = 0;
};

bool hasNoLength(const QLineF& line) {
    constexpr double kLeast = 1e-12;
    return std::fabs(line.p2.x - line.p1.x) < kLeast && std::fabs(line.p2.y - line.p1.y) < kLeast;
}

QPointF middleOf(const QLineF& line) {
    return {(line.p1.x + line.p2.x) / 2, (line.p1.y + line.p2.y) / 2};
}

double dot(const QPointF& a, const QPointF& b) {
    return a.x * b.x + a.y * b.y;
}

TracedCurve fitCurve(const std::vector<QPointF>& curve, const QLineF& left, const QLineF& right,
                     const QPointF& down) {
    TracedCurve traced;
    traced.trimmed = curve;
    traced.extended = extendToBounds(curve, left, right);
    traced.curve.spline = fitExtendedSpline(traced.extended, curve);
    traced.curve.polyline = traced.curve.spline.toPolyline();
    const QPointF a = middleOf(left), b = middleOf(right), middle = traced.curve.spline.eval(0.5);
    traced.order = dot(down, {middle.x - (a.x + b.x) / 2, middle.y - (a.y + b.y) / 2});
    return traced;
}

/// Those that can be fitted, in their order down the page; none after a cancel.
std::vector<TracedCurve> fitCurves(const std::deque<std::vector<QPointF>>& polylines,
                                   const QLineF& left, const QLineF& right, const QPointF& down) {
    std::vector<TracedCurve> curves;
    curves.reserve(polylines.size());  // nothing may throw while the list is locked
    std::exception_ptr failure;
    const CancelToken cancel = CurrentCancel();
    const int count = static_cast<int>(polylines.size());
#pragma omp parallel for schedule(static)
    for (int i = 0; i < count; ++i) {
        if (cancel.IsCancelled())
            continue;
        try {
            TracedCurve traced =
                fitCurve(polylines[static_cast<std::size_t>(i)], left, right, down);
#pragma omp critical(velloran_traced_curves)
            curves.push_back(std::move(traced));
        } catch (const BadCurve&) {
            // This curve is left out; the others may do.
        } catch (...) {
#pragma omp critical(velloran_traced_curves)
            failure = std::current_exception();
        }
    }
    if (failure)
        std::rethrow_exception(failure);
    if (cancel.IsCancelled())
        return {};
    // Threads finish in any order; curves of one height are told apart by where they begin.
    std::sort(curves.begin(), curves.end(), [](const TracedCurve& a, const TracedCurve& b) {
        if (a.order != b.order)
            return a.order < b.order;
        const QPointF &p = a.trimmed.front(), &q = b.trimmed.front();
        return p.x != q.x ? p.x < q.x : p.y < q.y;
    });
    return curves;
}

/// How far the curve is from a straight row in the flat page: its deviation from its mean, weighed
/// by its length. What one curve can add is limited, so that a wrong one does not decide.
double errorOf(const std::vector<QPointF>& curve, const CylindricalSurfaceDewarper& surface) {
    constexpr double kMost = 0.02;  // of the flat height
    double sum = 0, squares = 0;
    for (const QPointF& point : curve) {
        const double y = surface.toFlat(point).y / surface.flatHeight();
        sum += y;
        squares += y * y;
    }
    const double count = static_cast<double>(curve.size());
    const double variance = squares / count - sum / count * (sum / count);
    if (!std::isfinite(variance))
        return kMost;
    return std::min(std::sqrt(std::max(variance, 0.0)), kMost);
}

class PairSearch {
 public:
    PairSearch(const std::vector<TracedCurve>& curves, DewarpingDebug* debug)
        : curves_(curves), debug_(debug) {}

    void tryPair(std::size_t top, std::size_t bottom) {
        DistortionModel model{curves_[top].curve, curves_[bottom].curve};
        if (!model.isValid())
            return;
        double error = 0;
        try {
            const CylindricalSurfaceDewarper surface(model.top.polyline, model.bottom.polyline);
            for (const TracedCurve& curve : curves_)
                error += errorOf(curve.trimmed, surface);
        } catch (const std::runtime_error&) {
            return;  // the pair makes no page
        }
        if (debug_ != nullptr)
            debug_->tried.push_back({static_cast<int>(top), static_cast<int>(bottom), error});
        if (error >= least_)
            return;
        least_ = error;
        best_ = std::move(model);
    }

    DistortionModel best() && { return std::move(best_); }

 private:
    const std::vector<TracedCurve>& curves_;
    DewarpingDebug* debug_;
    double least_ = std::numeric_limits<double>::max();
    DistortionModel best_;
};

}  // namespace

DistortionModelBuilder::DistortionModelBuilder(const QPointF& downDirection)
    : down_(downDirection) {}

void DistortionModelBuilder::setVerticalBounds(const QLineF& left, const QLineF& right) {
    left_ = left;
    right_ = right;
}

void DistortionModelBuilder::addHorizontalCurve(std::vector<QPointF> polyline) {
    curves_.push_back(std::move(polyline));
}

void DistortionModelBuilder::transform(const QPointF& scale, const QPointF& offset) {
    const auto move = [&](QPointF& point) {
        point = {point.x * scale.x + offset.x, point.y * scale.y + offset.y};
    };
    for (auto& curve : curves_)
        std::for_each(curve.begin(), curve.end(), move);
    for (QLineF* bound : {&left_, &right_}) {
        move(bound->p1);
        move(bound->p2);
    }
}

DistortionModel DistortionModelBuilder::tryBuildModel(DewarpingDebug* dewarpingDebug) const {
    if (curves_.size() < 2 || hasNoLength(left_) || hasNoLength(right_))
        return {};
    const std::vector<TracedCurve> curves = fitCurves(curves_, left_, right_, down_);
    if (dewarpingDebug != nullptr)
        dewarpingDebug->fittedCurves = static_cast<int>(curves.size());
    PairSearch search(curves, dewarpingDebug);
    const CancelToken cancel = CurrentCancel();
    const std::size_t n = curves.size(), ends = std::min<std::size_t>(n, kEnds);
    for (std::size_t a = 0; a < ends; ++a)
        for (std::size_t b = n - ends; b < n; ++b)
            if (a < b && !cancel.IsCancelled())
                search.tryPair(a, b);
    if (n > kEnds) {
        std::minstd_rand random;  // the same numbers in every run and with every library
        for (int i = 0; i < kRandomPairs && !cancel.IsCancelled(); ++i) {
            const std::size_t p = random() % n, q = random() % n;
            if (p != q)
                search.tryPair(std::min(p, q), std::max(p, q));
        }
    }
    return std::move(search).best();
}

}  // namespace velloran::dewarping
