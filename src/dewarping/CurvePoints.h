#pragma once

// The points of a page's top and bottom curve as PARA_CRT_DEWARPING_* hold them: x in the low half,
// y in the high half, unsigned, in pixels of the picture from its top left.

#include <cstdint>
#include <vector>

#include "core/QtTypes.h"
#include "spfit/XSpline.h"

namespace velloran::dewarping {

inline constexpr int kLeastCurvePoints = 5;

constexpr QT::QPointF unpackPoint(std::int32_t packed) {
    const auto bits = static_cast<std::uint32_t>(packed);
    return {static_cast<double>(bits & 0xFFFFU), static_cast<double>(bits >> 16)};
}

/// Rounded by adding a half and truncating; coordinates are limited to what 16 bits hold.
std::int32_t packPoint(const QT::QPointF& point);

enum CurveState : int {
    kNoCurves = 0,       // all points 0
    kUnknownCurves = 1,  // all points -1: to be searched
    kFlatCurves = 2,     // a rectangle: nothing to flatten
    kCurved = 3,
};
CurveState classifyCurves(const std::int32_t* top, const std::int32_t* bottom, int n);

/// A flat grid over a picture of that size: n points along its first row and its last.
void resetCurves(int width, int height, std::int32_t* top, std::int32_t* bottom, int n);

/// The curve that n packed points tell: it begins and ends in the outer ones and is drawn to the
/// others. A point of 0 behind the first ends the list.
XSpline curveOf(const std::int32_t* points, int n);

/// The n packed points of a curve along a polyline, whose ends it keeps. Throws what fits throw.
void packCurve(const std::vector<QT::QPointF>& polyline, std::int32_t* points, int n);

}  // namespace velloran::dewarping
