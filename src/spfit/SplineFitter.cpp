#include "spfit/SplineFitter.h"

#include "mcalc/LinearSolver.h"

namespace velloran::spfit {
namespace {

using QT::QPointF;

constexpr double kEndWeight = 20;  // ends are to stay where they belong
constexpr double kNoForce = 1e-6;
constexpr double kDamping = 1e-7;  // keeps the system of full rank where no sample sees a point

/// Adds a force for each sample.
class SampleProcessor : public FittableSpline::Sink {
 public:
    SampleProcessor(SplineFitter& fitter, const ModelShape& shape)
        : fitter_(fitter), shape_(shape) {}
    void operator()(const QPointF& point, double t, SampleFlags kind) override {
        const bool isEnd = (kind & (kHeadSample | kTailSample)) != 0;
        fitter_.addAttractionForce(t, shape_.distanceFrom(point, kind), isEnd ? kEndWeight : 1);
    }

 private:
    SplineFitter& fitter_;
    const ModelShape& shape_;
};

QPointF secondDifference(const std::vector<QPointF>& points, std::size_t i) {
    return {points[i - 1].x - 2 * points[i].x + points[i + 1].x,
            points[i - 1].y - 2 * points[i].y + points[i + 1].y};
}

}  // namespace

SplineFitter::SplineFitter(FittableSpline& spline) : spline_(spline) {
    splineModified();
}

void SplineFitter::setSamplingParams(const SamplingParams& params) {
    params_ = params;
}

void SplineFitter::splineModified() {
    positions_.clear();
    for (int i = 0; i < spline_.numControlPoints(); ++i)
        positions_.push_back(spline_.controlPointPosition(i));
    forces_.clear();
    hasInternal_ = false;
    attractionError_ = internalError_ = 0;
}

QPointF SplineFitter::pointOf(const LinearCombination& combination) const {
    QPointF point;
    for (const LinearCombination::Term& term : combination) {
        const QPointF& position = positions_[static_cast<std::size_t>(term.controlPoint)];
        point.x += term.share * position.x;
        point.y += term.share * position.y;
    }
    return point;
}

void SplineFitter::addAttractionForce(double t, const SquaredDistance& target, double weight) {
    forces_.push_back({spline_.linearCombinationAt(t), target, weight});
    attractionError_ += weight * target.at(pointOf(forces_.back().point));
}

void SplineFitter::addAttractionForces(const ModelShape& shape, double fromT, double toT) {
    SampleProcessor processor(*this, shape);
    spline_.sample(processor, params_, fromT, toT);
}

void SplineFitter::addExternalForce(int controlPoint, const QPointF& place, double weight) {
    Force force{{}, {place, {0, 1}, 1, 1}, weight};
    force.point.add(controlPoint, 1);
    forces_.push_back(force);
}

void SplineFitter::addInternalForce() {
    hasInternal_ = true;
    internalError_ = 0;
    for (std::size_t i = 1; i + 1 < positions_.size(); ++i) {
        const QPointF bend = secondDifference(positions_, i);
        internalError_ += bend.x * bend.x + bend.y * bend.y;
    }
}

double SplineFitter::internalForceWeight() const {
    return internalError_ <= kNoForce ? 0 : attractionError_ * balance_ / internalError_;
}

void SplineFitter::addTo(std::vector<double>& matrix, std::vector<double>& right,
                         const Force& force) const {
    const std::size_t n = unknowns();
    const QPointF point = pointOf(force.point);
    const SquaredDistance& target = force.target;
    const double x = point.x - target.foot.x, y = point.y - target.foot.y;
    const QPointF directions[] = {target.normal, {target.normal.y, -target.normal.x}};
    const double weights[] = {force.weight * target.across, force.weight * target.along};
    for (int d = 0; d < 2; ++d) {
        const QPointF& direction = directions[d];
        const double distance = x * direction.x + y * direction.y;
        for (const LinearCombination::Term& a : force.point) {
            const std::size_t row = 2 * static_cast<std::size_t>(a.controlPoint);
            const double gx = weights[d] * a.share * direction.x;
            const double gy = weights[d] * a.share * direction.y;
            right[row] -= gx * distance;
            right[row + 1] -= gy * distance;
            for (const LinearCombination::Term& b : force.point) {
                const std::size_t column = 2 * static_cast<std::size_t>(b.controlPoint);
                matrix[row * n + column] += gx * b.share * direction.x;
                matrix[row * n + column + 1] += gx * b.share * direction.y;
                matrix[(row + 1) * n + column] += gy * b.share * direction.x;
                matrix[(row + 1) * n + column + 1] += gy * b.share * direction.y;
            }
        }
    }
}

void SplineFitter::addBending(std::vector<double>& matrix, std::vector<double>& right,
                              double weight) const {
    constexpr double kShares[] = {1, -2, 1};
    const std::size_t n = unknowns();
    for (std::size_t i = 1; i + 1 < positions_.size(); ++i) {
        const QPointF bend = secondDifference(positions_, i);
        for (std::size_t a = 0; a < 3; ++a) {
            const std::size_t row = 2 * (i - 1 + a);
            right[row] -= weight * kShares[a] * bend.x;
            right[row + 1] -= weight * kShares[a] * bend.y;
            for (std::size_t b = 0; b < 3; ++b) {
                const std::size_t column = 2 * (i - 1 + b);
                matrix[row * n + column] += weight * kShares[a] * kShares[b];
                matrix[(row + 1) * n + column + 1] += weight * kShares[a] * kShares[b];
            }
        }
    }
}

void SplineFitter::optimize(double internalForceWeight) {
    const std::size_t n = unknowns();
    std::vector<double> matrix(n * n), right(n), moves(n);
    for (const Force& force : forces_)
        addTo(matrix, right, force);
    if (hasInternal_)
        addBending(matrix, right, internalForceWeight);
    double trace = 0;
    for (std::size_t i = 0; i < n; ++i)
        trace += matrix[i * n + i];
    for (std::size_t i = 0; i < n; ++i)
        matrix[i * n + i] += kDamping * trace / static_cast<double>(n);
    mcalc::DynamicPoolAllocator<double> pool;
    mcalc::LinearSolver(n, n, 1).solve(matrix.data(), moves.data(), right.data(), pool);
    before_ = positions_;
    for (std::size_t i = 0; i < before_.size(); ++i)
        spline_.moveControlPoint(static_cast<int>(i),
                                 {before_[i].x + moves[2 * i], before_[i].y + moves[2 * i + 1]});
    splineModified();
}

void SplineFitter::undoLastStep() {
    for (std::size_t i = 0; i < before_.size(); ++i)
        spline_.moveControlPoint(static_cast<int>(i), before_[i]);
    splineModified();
}

}  // namespace velloran::spfit
