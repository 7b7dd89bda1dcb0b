#include "imaging/Perspective.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "core/StepContext.h"
#include "core/Threads.h"
#include "imaging/CubicSample.h"
#include "imaging/PlacedPixels.h"

namespace velloran {
namespace {

using Coefficients = PerspectiveMap::Coefficients;

double Cross(MapPoint a, MapPoint b, MapPoint c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

bool HasThreeOnALine(const std::array<MapPoint, 4>& corners) {
    for (std::size_t i = 0; i < 4; ++i)
        if (std::fabs(Cross(corners[i], corners[(i + 1) % 4], corners[(i + 2) % 4])) < 1e-9)
            return true;
    return false;
}

bool IsInside(double x, double y, ConstPlaneView source) {
    // Written so that what is no number is outside.
    return x >= -0.5 && y >= -0.5 && x < source.width - 0.5 && y < source.height - 0.5;
}

template <int kChannels>
void NearestPixel(ConstPlaneView source, double x, double y, std::uint8_t* out) {
    const std::uint8_t* from = source.first + static_cast<int>(y + 0.5) * source.stride +
                               std::ptrdiff_t{static_cast<int>(x + 0.5)} * kChannels;
    for (int c = 0; c < kChannels; ++c)
        out[c] = from[c];
}

template <int kChannels>
void CubicPixel(ConstPlaneView source, double x, double y, std::uint8_t* out) {
    // Half a pixel is added so that the conversion, which goes toward zero, rounds.
    const auto steps = [](double at) {
        return static_cast<std::int64_t>((at + 1) * kCubicSteps + 0.5) - kCubicSteps;
    };
    CubicSample<kChannels>(source, steps(x), steps(y), out);
}

using PixelKernel = void (*)(ConstPlaneView, double, double, std::uint8_t*);

/// A template, so that the pixel's own code stands in the loop.
template <int kChannels, PixelKernel kPixel>
void WarpRows(ConstPlaneView source, const PerspectiveMap& toSource, PlaneView target) {
    const Coefficients m = toSource.Values();
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(target))
    for (int y = 0; y < target.height; ++y) {
        if (cancel.IsCancelled())
            continue;
        std::uint8_t* out = target.Row(y).data();
        const double x0 = m[1] * y + m[2], y0 = m[4] * y + m[5], w0 = m[7] * y + m[8];
        for (int x = 0; x < target.width; ++x, out += kChannels) {
            const double inverse = 1.0 / (m[6] * x + w0);
            const double fromX = (m[0] * x + x0) * inverse, fromY = (m[3] * x + y0) * inverse;
            if (IsInside(fromX, fromY, source))
                kPixel(source, fromX, fromY, out);
        }
    }
}

/// What the map is on each column of the target, as rows of places are made from it.
class Columns {
 public:
    Columns(const Coefficients& m, int count)
        : x0_(static_cast<std::size_t>(count)),
          x1_(x0_.size(), m[1]),
          y0_(x0_.size()),
          y1_(x0_.size(), m[4]),
          w0_(x0_.size()),
          w1_(x0_.size(), m[7]) {
        for (std::size_t i = 0; i < x0_.size(); ++i) {
            x0_[i] = m[0] * double(i) + m[2];
            y0_[i] = m[3] * double(i) + m[5];
            w0_[i] = m[6] * double(i) + m[8];
        }
    }
    ColumnTerms Terms() const {
        return {x0_.data(), x1_.data(), y0_.data(), y1_.data(), w0_.data(), w1_.data()};
    }

 private:
    std::vector<double> x0_, x1_, y0_, y1_, w0_, w1_;
};

void WarpByPlaces(ConstPlaneView source, const PerspectiveMap& toSource, PlaneView target) {
    const Columns columns(toSource.Values(), target.width);
    const auto width = static_cast<std::size_t>(target.width);
    std::vector<std::int32_t> scratch(2 * width * static_cast<std::size_t>(MaxThreads()));
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(target))
    for (int y = 0; y < target.height; ++y) {
        if (cancel.IsCancelled())
            continue;
        std::int32_t* x = scratch.data() + 2 * width * static_cast<std::size_t>(ThreadNumber());
        const PixelPlaces places{x, x + width};
        PlaceRow(columns.Terms(), target.width, y, source.width, source.height, places);
        CubicPixels(source, places, target.width, target.Row(y).data());
    }
}

}  // namespace

std::optional<PerspectiveMap> PerspectiveMap::ToQuad(double width, double height,
                                                     const std::array<MapPoint, 4>& corners) {
    if (width <= 0 || height <= 0 || HasThreeOnALine(corners))
        return std::nullopt;
    const auto& [p0, p1, p2, p3] = corners;
    const double dx1 = p1.x - p2.x, dx2 = p3.x - p2.x, dx3 = p0.x - p1.x + p2.x - p3.x;
    const double dy1 = p1.y - p2.y, dy2 = p3.y - p2.y, dy3 = p0.y - p1.y + p2.y - p3.y;
    const double determinant = dx1 * dy2 - dx2 * dy1;
    const double g = (dx3 * dy2 - dx2 * dy3) / determinant;
    const double h = (dx1 * dy3 - dx3 * dy1) / determinant;
    return PerspectiveMap({(p1.x - p0.x + g * p1.x) / width, (p3.x - p0.x + h * p3.x) / height,
                           p0.x, (p1.y - p0.y + g * p1.y) / width,
                           (p3.y - p0.y + h * p3.y) / height, p0.y, g / width, h / height, 1.0});
}

std::optional<PerspectiveMap> PerspectiveMap::Inverse() const {
    const auto& [a, b, c, d, e, f, g, h, i] = m_;
    const double determinant = a * (e * i - f * h) - b * (d * i - f * g) + c * (d * h - e * g);
    if (determinant == 0 || !std::isfinite(determinant))
        return std::nullopt;
    Coefficients inverse{e * i - f * h, c * h - b * i, b * f - c * e, f * g - d * i, a * i - c * g,
                         c * d - a * f, d * h - e * g, b * g - a * h, a * e - b * d};
    for (double& value : inverse)
        value /= determinant;
    return PerspectiveMap(inverse);
}

void WarpNearest(ConstPlaneView source, const PerspectiveMap& toSource, PlaneView target) {
    if (source.channels == 3)
        WarpRows<3, NearestPixel<3>>(source, toSource, target);
    else
        WarpRows<1, NearestPixel<1>>(source, toSource, target);
}

void WarpCubic(ConstPlaneView source, const PerspectiveMap& toSource, PlaneView target) {
    if (std::max(source.width, source.height) <= kLongestPlacedSide)
        WarpByPlaces(source, toSource, target);
    else if (source.channels == 3)
        WarpRows<3, CubicPixel<3>>(source, toSource, target);
    else
        WarpRows<1, CubicPixel<1>>(source, toSource, target);
}

}  // namespace velloran
