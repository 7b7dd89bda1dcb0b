#include "imaging/ResampleAxis.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <span>
#include <utility>

#include "core/ExactMath.h"

namespace velloran {
namespace {

constexpr double kLobes = 3;

double Lanczos(double x) {
    if (x == 0)
        return 1;
    if (std::abs(x) >= kLobes)
        return 0;
    const double angle = std::numbers::pi * x;
    return kLobes * Sin(angle) * Sin(angle / kLobes) / (angle * angle);
}

/// Builds an axis from `weightsAt(position, first, weights)`, which may name indices beyond the
/// ends: the border is replicated, so their weights go to the end samples.
class AxisBuilder {
 public:
    AxisBuilder(int sourceSize, int targetSize, int taps)
        : sourceSize_(sourceSize),
          taps_(std::min(taps, sourceSize)),
          inside_(static_cast<std::size_t>(taps_)) {
        axis_.taps = taps_;
        axis_.first.reserve(static_cast<std::size_t>(targetSize));
        axis_.weights.reserve(static_cast<std::size_t>(targetSize) *
                              static_cast<std::size_t>(taps_));
    }

    void Add(int first, std::span<const double> weights) {
        double sum = 0;
        for (const double weight : weights)
            sum += weight;
        const int start = std::clamp(first, 0, sourceSize_ - taps_);
        std::fill(inside_.begin(), inside_.end(), 0.0);
        for (std::size_t i = 0; i < weights.size(); ++i) {
            if (weights[i] == 0)
                continue;
            const int index = std::clamp(first + static_cast<int>(i), 0, sourceSize_ - 1);
            inside_[static_cast<std::size_t>(index - start)] += weights[i] / sum;
        }
        axis_.first.push_back(start);
        for (const double weight : inside_)
            axis_.weights.push_back(static_cast<float>(weight));
    }

    ResampleAxis Take() { return std::move(axis_); }

 private:
    int sourceSize_, taps_;
    std::vector<double> inside_;  // the weights of one position
    ResampleAxis axis_;
};

}  // namespace

ResampleAxis LanczosAxis(int sourceSize, int targetSize) {
    AxisBuilder builder(sourceSize, targetSize, 6);
    const double scale = static_cast<double>(sourceSize) / targetSize;
    std::vector<double> weights(6);
    for (int i = 0; i < targetSize; ++i) {
        const double center = (i + 0.5) * scale - 0.5;
        const int first = static_cast<int>(std::floor(center)) - 2;
        for (int k = 0; k < 6; ++k)
            weights[static_cast<std::size_t>(k)] = Lanczos(center - (first + k));
        builder.Add(first, weights);
    }
    return builder.Take();
}

ResampleAxis AreaAxis(int sourceSize, int targetSize) {
    const double scale = static_cast<double>(sourceSize) / targetSize;
    AxisBuilder builder(sourceSize, targetSize, static_cast<int>(std::ceil(scale)) + 1);
    std::vector<double> weights;
    for (int i = 0; i < targetSize; ++i) {
        // The borders of output sample i in source samples, as exact fractions of targetSize.
        const std::int64_t from = static_cast<std::int64_t>(i) * sourceSize;
        const std::int64_t to = from + sourceSize;
        const auto first = static_cast<int>(from / targetSize);
        const auto last = static_cast<int>((to - 1) / targetSize);
        weights.clear();
        for (std::int64_t k = first; k <= last; ++k)
            weights.push_back(static_cast<double>(std::min(to, (k + 1) * targetSize) -
                                                  std::max(from, k * targetSize)));
        builder.Add(first, weights);
    }
    return builder.Take();
}

ResampleAxis LinearAxis(int sourceSize, int targetSize) {
    AxisBuilder builder(sourceSize, targetSize, 2);
    const double scale = static_cast<double>(sourceSize) / targetSize;
    for (int i = 0; i < targetSize; ++i) {
        const double center = (i + 0.5) * scale - 0.5;
        const int first = static_cast<int>(std::floor(center));
        const double share = center - first;
        const double weights[] = {1 - share, share};
        builder.Add(first, weights);
    }
    return builder.Take();
}

}  // namespace velloran
