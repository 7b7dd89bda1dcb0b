#pragma once

// Moves the control points of a spline so that forces on it come to rest: squared distances of its
// points from a shape against the bending of its control polygon. One linear system a step.

#include <cstddef>
#include <vector>

#include "spfit/FittableSpline.h"
#include "spfit/ModelShape.h"

namespace velloran::spfit {

class SplineFitter {
 public:
    /// The spline must outlive the fitter.
    explicit SplineFitter(FittableSpline& spline);

    void setSamplingParams(const SamplingParams& params);
    /// How strong the internal force is beside the attraction, 0 and up.
    void setLinearForceBalance(double balance) { balance_ = balance; }
    /// To be called when somebody else moved control points: all forces are gone.
    void splineModified();

    /// Draws the point at t.
    void addAttractionForce(double t, const SquaredDistance& target, double weight);
    /// Draws all samples of a part of the curve.
    void addAttractionForces(const ModelShape& shape, double fromT = 0, double toT = 1);
    /// Holds a control point near a place.
    void addExternalForce(int controlPoint, const QT::QPointF& place, double weight);
    /// Resists the bending of the control polygon.
    void addInternalForce();

    /// Weighed squared distances of the forces added since the last step, before it.
    double attractionError() const { return attractionError_; }
    double internalError() const { return internalError_; }
    /// attractionError * balance / internalError; 0 for nothing to resist.
    double internalForceWeight() const;

    /// Moves the control points to where the forces are least and forgets the forces. Throws
    /// std::runtime_error where they do not hold the points.
    void optimize(double internalForceWeight);
    /// Puts the control points back to where they were before the last optimize().
    void undoLastStep();

 private:
    struct Force {
        LinearCombination point;
        SquaredDistance target;
        double weight = 1;
    };
    std::size_t unknowns() const { return 2 * positions_.size(); }
    QT::QPointF pointOf(const LinearCombination& combination) const;
    void addTo(std::vector<double>& matrix, std::vector<double>& right, const Force& force) const;
    void addBending(std::vector<double>& matrix, std::vector<double>& right, double weight) const;

    FittableSpline& spline_;
    SamplingParams params_;
    double balance_ = 1;
    std::vector<QT::QPointF> positions_, before_;
    std::vector<Force> forces_;
    bool hasInternal_ = false;
    double attractionError_ = 0, internalError_ = 0;
};

}  // namespace velloran::spfit
