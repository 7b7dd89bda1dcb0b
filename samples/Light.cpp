#include "samples/Light.h"

#include <algorithm>
#include <cmath>

namespace velloran::samples {

namespace {

constexpr double kStepsPerPixel = 4;

}  // namespace

LightField::LightField(const Light& light, int width, int height)
    : light_(light), width_(width), height_(height) {
    if (!light_.gutter)
        return;
    const Light::Gutter& gutter = *light_.gutter;
    shade_.resize(static_cast<std::size_t>((width + height) * kStepsPerPixel) + 1);
    for (std::size_t i = 0; i < shade_.size(); ++i) {
        const double distance = static_cast<double>(i) / kStepsPerPixel / gutter.width;
        // A wide valley and the narrow fold in it.
        shade_[i] = static_cast<float>(
            1 - gutter.depth * (0.65 * std::exp(-distance) + 0.35 * std::exp(-distance * 9)));
    }
}

void LightField::FillRow(int y, std::span<float> factors) const {
    const double down = (y + 0.5) / height_ - 0.5;
    for (int x = 0; x < width_; ++x) {
        const double across = (x + 0.5) / width_ - 0.5;
        factors[x] =
            static_cast<float>(light_.base + light_.slopeX * across + light_.slopeY * down -
                               4 * light_.falloff * (across * across + down * down));
    }
    if (light_.corner) {
        const Light::Corner& corner = *light_.corner;
        const double dy = (y + 0.5 - corner.center.y) / corner.reach;
        for (int x = 0; x < width_; ++x) {
            const double dx = (x + 0.5 - corner.center.x) / corner.reach;
            const double inside = std::max(0.0, 1 - dx * dx - dy * dy);
            factors[x] *= static_cast<float>(1 - corner.depth * inside * inside);
        }
    }
    if (light_.gutter) {
        const Point along = light_.gutter->bottom - light_.gutter->top;
        const double length = Length(along);
        const Point top = light_.gutter->top;
        for (int x = 0; x < width_; ++x) {
            const double cross = (x + 0.5 - top.x) * along.y - (y + 0.5 - top.y) * along.x;
            const auto step = static_cast<std::size_t>(std::abs(cross) / length * kStepsPerPixel);
            factors[x] *= shade_[std::min(step, shade_.size() - 1)];
        }
    }
}

}  // namespace velloran::samples
