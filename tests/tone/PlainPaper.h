#pragma once

// Planes as plain numbers, and the paper behind them worked out once more, pixel by pixel and
// without a thought for speed.

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/PlaneView.h"

namespace velloran::test {

struct PlainPlane {
    int width = 0, height = 0;
    std::vector<int> samples;

    PlainPlane(int w, int h, int value = 0)
        : width(w),
          height(h),
          samples(static_cast<std::size_t>(w) * static_cast<std::size_t>(h), value) {}
    explicit PlainPlane(ConstPlaneView view) : PlainPlane(view.width, view.height) {
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                At(x, y) = view.Row(y)[static_cast<std::size_t>(x)];
    }
    int& At(int x, int y) { return samples[static_cast<std::size_t>(y * width + x)]; }
    int At(int x, int y) const { return samples[static_cast<std::size_t>(y * width + x)]; }
};

inline int PlainSide(int width, int height) {
    const int side = (std::max(width, height) + 299) / 300;
    return side < 7 ? 7 : (side > 12 ? 12 : side);
}

struct PlainMoments {
    long sum = 0, squares = 0;
};

inline PlainMoments MomentsOf(const PlainPlane& plane, int side, int column, int row) {
    PlainMoments moments;
    for (int y = row * side; y < (row + 1) * side; ++y)
        for (int x = column * side; x < (column + 1) * side; ++x) {
            moments.sum += plane.At(x, y);
            moments.squares += static_cast<long>(plane.At(x, y)) * plane.At(x, y);
        }
    return moments;
}

inline int PlainBlack(const PlainPlane& plane, int side, double share) {
    std::vector<int> sorted;
    for (int y = 0; y < plane.height / side * side; ++y)
        for (int x = 0; x < plane.width / side * side; ++x)
            sorted.push_back(plane.At(x, y));
    std::ranges::sort(sorted);
    const auto target = static_cast<std::size_t>(static_cast<double>(sorted.size()) * share);
    return std::max(target == 0 ? 0 : sorted[target - 1], 7);
}

/// Forward and backward along one line, 7 fractional bits.
inline void SmoothLine(std::vector<int>& line, double radius) {
    const int reach = static_cast<int>(2 * radius + 0.5);
    const long alpha = static_cast<long>((1 - std::exp(-2.3 / (reach + 1.0))) * 65536);
    long z = static_cast<long>(line.front()) * 128;
    std::vector<long> kept;
    for (const int sample : line) {
        z += (alpha * (sample * 128L - z)) >> 16;
        kept.push_back(z);
    }
    for (std::size_t i = line.size(); i-- > 0;) {
        z += (alpha * (kept[i] - z)) >> 16;
        line[i] = static_cast<int>(z >> 7);
    }
}

inline void PlainSmooth(PlainPlane& plane, double radius) {
    if (plane.width <= 3 || plane.height <= 3)
        return;
    for (int y = 0; y < plane.height; ++y) {
        std::vector<int> line;
        for (int x = 0; x < plane.width; ++x)
            line.push_back(plane.At(x, y));
        SmoothLine(line, radius);
        for (int x = 0; x < plane.width; ++x)
            plane.At(x, y) = line[static_cast<std::size_t>(x)];
    }
    for (int x = 0; x < plane.width; ++x) {
        std::vector<int> line;
        for (int y = 0; y < plane.height; ++y)
            line.push_back(plane.At(x, y));
        SmoothLine(line, radius);
        for (int y = 0; y < plane.height; ++y)
            plane.At(x, y) = line[static_cast<std::size_t>(y)];
    }
}

/// Pixel centres aligned, edges replicated, rounded to nearest.
inline PlainPlane PlainEnlarged(const PlainPlane& small, int width, int height) {
    PlainPlane large(width, height);
    struct Tap {
        int first, second;
        float weight, otherWeight;
    };
    const auto tapAt = [](int at, int smallSize, int size) {
        const double center = (at + 0.5) * (static_cast<double>(smallSize) / size) - 0.5;
        const double below = std::floor(center);
        const int first = std::clamp(static_cast<int>(below), 0, smallSize - 1);
        const int second = std::clamp(static_cast<int>(below) + 1, 0, smallSize - 1);
        const double share = first == second ? 0 : center - below;
        return Tap{first, second, static_cast<float>(1 - share), static_cast<float>(share)};
    };
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const Tap across = tapAt(x, small.width, width), down = tapAt(y, small.height, height);
            const auto blend = [&](int column) {
                return down.weight * static_cast<float>(small.At(column, down.first)) +
                       down.otherWeight * static_cast<float>(small.At(column, down.second));
            };
            const float value =
                across.weight * blend(across.first) + across.otherWeight * blend(across.second);
            large.At(x, y) = static_cast<int>(value + 0.5F);
        }
    return large;
}

inline int PlainByte(double value) {
    return static_cast<int>(std::clamp(std::trunc(value), 0.0, 255.0));
}

/// The sample stretched between black and its paper less the magnitude.
inline int PlainStretch(int sample, int background, int magnitude, int black) {
    const int paper = background - magnitude;
    if (sample >= paper)
        return 255;
    if (paper == black)
        return sample;
    return PlainByte((sample - black) * 256.0 / (paper - black));
}

}  // namespace velloran::test
