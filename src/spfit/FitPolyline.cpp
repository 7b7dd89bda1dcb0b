#include "spfit/FitPolyline.h"

#include <limits>

#include "spfit/PolylineModelShape.h"
#include "spfit/SplineFitter.h"

namespace velloran::spfit {

void fitSplineToShape(FittableSpline& spline, const ModelShape& shape, const FitSchedule& schedule,
                      const HeldEnds& ends) {
    SplineFitter fitter(spline);
    fitter.setSamplingParams(schedule.sampling);
    const double step = schedule.iterations < 2 ? 0
                                                : (schedule.lastBalance - schedule.firstBalance) /
                                                      (schedule.iterations - 1);
    double previous = 0;
    for (int i = 0; i < schedule.iterations; ++i) {
        fitter.setLinearForceBalance(schedule.firstBalance + i * step);
        fitter.addAttractionForces(shape);
        const double error = fitter.attractionError();
        if (i > 0) {
            const double percent =
                (previous - error) / (previous + std::numeric_limits<double>::epsilon()) * 100;
            if (percent < schedule.leastPercent) {
                if (error > previous)
                    fitter.undoLastStep();
                return;
            }
        }
        previous = error;
        if (ends.weight > 0) {
            fitter.addExternalForce(0, ends.first, ends.weight);
            fitter.addExternalForce(spline.numControlPoints() - 1, ends.last, ends.weight);
        }
        fitter.addInternalForce();
        fitter.optimize(fitter.internalForceWeight());
    }
}

void fitSplineToPolyline(FittableSpline& spline, const std::vector<QT::QPointF>& polyline) {
    fitSplineToShape(spline, PolylineModelShape(polyline));
}

}  // namespace velloran::spfit
