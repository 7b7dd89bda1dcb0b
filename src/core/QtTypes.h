#pragma once

// Small value types of the geometry toolkit.

#include <cstdint>

namespace velloran::QT {

struct QPointF {
    double x = 0, y = 0;
    bool operator==(const QPointF&) const = default;
};

struct QLineF {
    QPointF p1, p2;
    bool operator==(const QLineF&) const = default;
};

struct QSize {
    std::int32_t width = 0, height = 0;
    bool operator==(const QSize&) const = default;
};

/// Sides are inclusive; empty when right = left - 1.
struct QRect {
    std::int32_t left = 0, top = 0, right = -1, bottom = -1;
    std::int32_t Width() const { return right - left + 1; }
    std::int32_t Height() const { return bottom - top + 1; }
    bool IsEmpty() const { return right < left || bottom < top; }
    bool operator==(const QRect&) const = default;
};

}  // namespace velloran::QT
