#pragma once

// What a curve must offer so that it can be fitted: control points that can be moved, and points
// that are linear combinations of them.

#include <array>

#include "core/QtTypes.h"
#include "spfit/VirtualFunction.h"

namespace velloran::spfit {

/// What kind a sample is of; a set of bits.
enum SampleFlags : unsigned {
    kPlainSample = 0,
    kHeadSample = 1,      // the curve's first point
    kTailSample = 2,      // its last
    kJunctionSample = 4,  // where two segments meet
};

/// Between two samples the curve leaves their chord by no more than the distance, and turns by no
/// more than the angle.
struct SamplingParams {
    double maxDistance = 0.2;
    double maxAngleDegrees = 180;
};

/// A point as shares of at most four control points.
struct LinearCombination {
    struct Term {
        int controlPoint = 0;
        double share = 0;
    };
    std::array<Term, 4> terms{};
    int count = 0;

    /// Shares of one control point are added up.
    void add(int controlPoint, double share) {
        for (int i = 0; i < count; ++i)
            if (terms[static_cast<std::size_t>(i)].controlPoint == controlPoint) {
                terms[static_cast<std::size_t>(i)].share += share;
                return;
            }
        terms[static_cast<std::size_t>(count++)] = {controlPoint, share};
    }
    const Term* begin() const { return terms.data(); }
    const Term* end() const { return terms.data() + count; }
};

class FittableSpline {
 public:
    /// Takes a point, its t and its kind.
    using Sink = VirtualFunction3<void, const QT::QPointF&, double, SampleFlags>;

    virtual ~FittableSpline() = default;
    virtual int numControlPoints() const = 0;
    virtual QT::QPointF controlPointPosition(int index) const = 0;
    virtual void moveControlPoint(int index, const QT::QPointF& position) = 0;
    /// At t from 0 to 1 over the whole curve.
    virtual LinearCombination linearCombinationAt(double t) const = 0;
    virtual void sample(Sink& sink, const SamplingParams& params, double fromT = 0,
                        double toT = 1) const = 0;
};

}  // namespace velloran::spfit
