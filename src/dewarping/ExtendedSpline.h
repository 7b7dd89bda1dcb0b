#pragma once

// A traced curve brought to the sides of the page.

#include <exception>
#include <vector>

#include "core/QtTypes.h"
#include "spfit/XSpline.h"

namespace velloran::dewarping {

/// A curve that nothing can be made of.
class BadCurve : public std::exception {
 public:
    const char* what() const noexcept override { return "Bad curve"; }
};

/// The polyline from the left bound to the right one, whichever end it began with: what lies behind
/// a bound is cut away, and where it ends before one its last segment is drawn out to it. Throws
/// BadCurve for fewer than two points, points that are no numbers, and where nothing is left.
std::vector<QT::QPointF> extendToBounds(const std::vector<QT::QPointF>& polyline,
                                        const QT::QLineF& left, const QT::QLineF& right);

/// Fits a spline to a polyline that runs from bound to bound; `trimmed` is the part that was
/// traced: samples beyond its ends count less. The spline's ends stay on the bounds. Throws
/// BadCurve.
XSpline fitExtendedSpline(const std::vector<QT::QPointF>& extended,
                          const std::vector<QT::QPointF>& trimmed);

}  // namespace velloran::dewarping
