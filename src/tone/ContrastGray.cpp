#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>
#include <vector>

#include "core/DibImage.h"
#include "core/ExactMath.h"
#include "core/GrayDepth.h"
#include "core/Refusal.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "filters/Resample.h"
#include "tone/Channels.h"
#include "tone/PixelMapRows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tone/ContrastGray.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

/// Halves upwards; the weights add up to 1.
void WeighRow(double redWeight, double greenWeight, double blueWeight, const std::uint8_t* pixel,
              int width, std::uint8_t* out) {
    for (std::ptrdiff_t x = 0; x < width; ++x) {
        const double sum = redWeight * pixel[3 * x + 2] + greenWeight * pixel[3 * x + 1] +
                           blueWeight * pixel[3 * x];
        const int level = static_cast<int>(sum + 0.5);
        out[x] = static_cast<std::uint8_t>(level > 255 ? 255 : level);
    }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(WeighRow);

constexpr double kSmallSide = 64.0;
constexpr double kDeltaScale = 1.41, kLeastDelta = 0.05, kSigmaSquared = 0.0025;

struct Difference {
    double red, green, blue;
    double Delta() const {
        return std::sqrt(red * red + green * green + blue * blue) / kDeltaScale;
    }
};

struct Weights {
    double red = 0, green = 0, blue = 0;
};

std::vector<std::array<double, 3>> ColorsOf(const CDibImage& image) {
    std::vector<std::array<double, 3>> colors;
    for (int y = 0; y < image.GetHeight(); ++y) {
        const std::uint8_t* pixel = image.GetBits(y);
        for (int x = 0; x < image.GetWidth(); ++x, pixel += 3)
            colors.push_back({pixel[2] / 255.0, pixel[1] / 255.0, pixel[0] / 255.0});
    }
    return colors;
}

/// Fisher and Yates, with a generator of our own: the same weights on every run.
void Shuffle(std::vector<std::array<double, 3>>& colors) {
    std::uint32_t state = 2463534242U;
    for (std::size_t i = colors.size(); i > 1; --i) {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        std::swap(colors[i - 1], colors[state % i]);
    }
}

Difference Between(const std::array<double, 3>& a, const std::array<double, 3>& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

void AddGlobalPairs(const CDibImage& small, std::vector<Difference>& differences) {
    const auto colors = ColorsOf(small);
    auto shuffled = colors;
    Shuffle(shuffled);
    for (std::size_t i = 0; i < colors.size(); ++i)
        differences.push_back(Between(colors[i], shuffled[i]));
}

void AddLocalPairs(const CDibImage& image, std::vector<Difference>& differences) {
    const auto colors = ColorsOf(image);
    const auto width = static_cast<std::size_t>(image.GetWidth());
    const auto height = static_cast<std::size_t>(image.GetHeight());
    // Rows are stored from the bottom: the lower neighbour lies a row before.
    for (std::size_t y = 1; y < height; ++y)
        for (std::size_t x = 0; x + 1 < width; ++x) {
            const auto& here = colors[y * width + x];
            differences.push_back(Between(here, colors[y * width + x + 1]));
            differences.push_back(Between(here, colors[(y - 1) * width + x]));
        }
}

double ScoreOf(const Weights& weights, const std::vector<Difference>& differences) {
    double sum = 0;
    for (const Difference& d : differences) {
        const double delta = d.Delta();
        if (delta < kLeastDelta)
            continue;
        const double g = weights.red * d.red + weights.green * d.green + weights.blue * d.blue;
        sum += Log(Exp(-(g + delta) * (g + delta) / kSigmaSquared) +
                   Exp(-(g - delta) * (g - delta) / kSigmaSquared));
    }
    return sum / static_cast<double>(differences.size());
}

/// All weights in tenths that add up to 1.
std::vector<Weights> WeightsInTenths() {
    std::vector<Weights> all;
    for (int red = 0; red <= 10; ++red)
        for (int green = 0; green <= 10 - red; ++green)
            all.push_back({red / 10.0, green / 10.0, (10 - red - green) / 10.0});
    return all;
}

Weights BestWeights(const std::vector<Difference>& differences) {
    const std::vector<Weights> all = WeightsInTenths();
    std::vector<double> scores(all.size());
    const auto work = static_cast<std::int64_t>(all.size() * differences.size());
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(work))
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (cancel.IsCancelled())
            continue;
        scores[i] = ScoreOf(all[i], differences);
    }
    return all[static_cast<std::size_t>(std::max_element(scores.begin(), scores.end()) -
                                        scores.begin())];
}

int HalfAwayFromZero(double value) {
    return static_cast<int>(std::max(1.0, std::floor(value + 0.5)));
}

Weights WeightsFor(const CDibImage& image) {
    const double width = image.GetWidth(), height = image.GetHeight();
    const double factor = kSmallSide / std::sqrt(width * height);
    CDibImage small =
        ResizedCopy(image, HalfAwayFromZero(width * factor), HalfAwayFromZero(height * factor));
    std::vector<Difference> differences;
    if (!small.IsValid())
        throw std::bad_alloc();
    AddGlobalPairs(small, differences);
    if (ResizeTo(small, HalfAwayFromZero(small.GetWidth() / 2.0),
                 HalfAwayFromZero(small.GetHeight() / 2.0)) == 0)
        throw std::bad_alloc();
    AddLocalPairs(small, differences);
    return BestWeights(differences);
}

}  // namespace

int ContrastGray(CDibImage& image) {
    if (!image.IsValid() || ConvertToRgb(image) == 0)
        return 0;
    return RefuseWhenOutOfMemory([&] {
        const Weights weights = WeightsFor(image);
        CDibImage gray;
        if (gray.Create(image.GetWidth(), image.GetHeight(), 8) == nullptr)
            return 0;
        gray.SetGrayPalette();
        const ConstPlaneView source = ViewOf(static_cast<const CDibImage&>(image));
        const PlaneView target = ViewOf(gray);
        const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(target))
        for (int y = 0; y < target.height; ++y) {
            if (cancel.IsCancelled())
                continue;
            HWY_DYNAMIC_DISPATCH(WeighRow)
            (weights.red, weights.green, weights.blue, source.Row(y).data(), target.width,
             target.Row(y).data());
        }
        return image.TakePixels(gray) ? 1 : 0;
    });
}

}  // namespace velloran
#endif  // HWY_ONCE
