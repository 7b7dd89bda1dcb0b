#pragma once

// The tone curve's presets, the S-curve slider and the overflow points of the strong background
// removal, as the curve dialog shows and stores them.

#include <array>

namespace velloran {

/// The two control points of the curve; values may lie outside 0..255.
struct CurvePoints {
    int x1 = 0, y1 = 0, x2 = 255, y2 = 255;
    bool operator==(const CurvePoints&) const = default;
};

enum class CurvePreset { kUnchanged, kBusyBackground, kTooLight, kTooDark };

inline constexpr int kCurvePresetCount = 4;
inline constexpr int kLargestSCurve = 270;

CurvePoints PointsOfPreset(CurvePreset preset);

/// Points that are all zero stand for the unchanged curve.
CurvePoints NormalizedCurve(CurvePoints points);

/// The slider's value, limited to 0..270, as points: the second point mirrors the first.
CurvePoints SCurvePoints(int value);

/// The value that the slider shows for the points, 0 where they are no S-curve.
int SCurveValue(const CurvePoints& points);

/// The inputs at which the parabola of PARA_CURVE_DIV and PARA_CURVE_OFFSET reaches 255 and 0,
/// truncated; 0 where it does not.
struct OverflowPoints {
    int white = 0, black = 0;
};
OverflowPoints FindOverflowPoints(int div, int offset);

}  // namespace velloran
