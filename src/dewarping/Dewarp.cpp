#include "dewarping/Dewarp.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

#include "core/DibImage.h"
#include "core/Refusal.h"
#include "dewarping/CurvePoints.h"
#include "dewarping/DistortionModel.h"
#include "dewarping/ResampleFlat.h"

namespace velloran::dewarping {
namespace {

using QT::QPointF;

constexpr int kLeastSide = 10;

std::vector<QPointF> polylineOf(const std::int32_t* points, int n) {
    std::vector<QPointF> polyline = curveOf(points, n).toPolyline();
    if (polyline.size() > 1 && polyline.back().x < polyline.front().x)
        std::reverse(polyline.begin(), polyline.end());
    return polyline;
}

struct Bounds {
    double left = 0, top = 0, right = 0, bottom = 0;
};

Bounds boundsOf(const CylindricalSurfaceDewarper& surface, const std::vector<QPointF>& top,
                const std::vector<QPointF>& bottom) {
    const QPointF first = surface.toFlat(top.front());
    Bounds bounds{first.x, first.y, first.x, first.y};
    for (const auto* curve : {&top, &bottom})
        for (const QPointF& point : *curve) {
            const QPointF flat = surface.toFlat(point);
            bounds = {std::min(bounds.left, flat.x), std::min(bounds.top, flat.y),
                      std::max(bounds.right, flat.x), std::max(bounds.bottom, flat.y)};
        }
    return bounds;
}

QT::QRect roundedRect(const Bounds& bounds) {
    const auto round = [](double value) {
        return static_cast<std::int32_t>(std::clamp(std::floor(value + 0.5), -1e9, 1e9));
    };
    return {round(bounds.left), round(bounds.top), round(bounds.right) - 1,
            round(bounds.bottom) - 1};
}

}  // namespace

std::optional<CylindricalSurfaceDewarper> surfaceOf(const std::int32_t* top,
                                                    const std::int32_t* bottom, int n) {
    if (n < kLeastCurvePoints || classifyCurves(top, bottom, n) != kCurved)
        return std::nullopt;
    std::vector<QPointF> upper = polylineOf(top, n), lower = polylineOf(bottom, n);
    if (upper.size() < 2 || lower.size() < 2 || upper.front() == upper.back() ||
        lower.front() == lower.back())
        return std::nullopt;
    if (upper.front().y + upper.back().y > lower.front().y + lower.back().y)
        std::swap(upper, lower);
    if (!isConvexFigure(upper.front(), upper.back(), lower.back(), lower.front()))
        return std::nullopt;
    try {
        return CylindricalSurfaceDewarper(upper, lower);
    } catch (const std::runtime_error&) {
        return std::nullopt;
    }
}

int dewarp(int mode, CDibImage& image, const std::int32_t* top, const std::int32_t* bottom, int n,
           std::uint32_t background) {
    if (!image.IsValid() || image.IsGhost() || image.GetWidth() < kLeastSide ||
        image.GetHeight() < kLeastSide)
        return 0;
    return RefuseWhenOutOfMemory([&] {
        const auto surface = surfaceOf(top, bottom, n);
        if (!surface)
            return 0;
        const QT::QRect rect =
            roundedRect(boundsOf(*surface, polylineOf(top, n), polylineOf(bottom, n)));
        if (rect.IsEmpty())
            return 0;
        return resample(mode, image, {rect.Width(), rect.Height()}, *surface, rect, background);
    });
}

}  // namespace velloran::dewarping
