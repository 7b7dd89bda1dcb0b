#include <algorithm>
#include <cstdint>

#include "core/DibImage.h"
#include "core/PixelMemory.h"
#include "core/SimdTarget.h"
#include "filters/SurfaceBlurForms.h"
#include "imaging/BoxMean.h"

namespace velloran {
namespace {

/// Saturated, halves away from zero; the fraction is exact where adding 0.5 would round.
VELLORAN_SIMD_CLONES
void RoundRow(const float* values, int count, std::uint8_t* out) {
    for (int i = 0; i < count; ++i) {
        const float limited = values[i] < 0.0F ? 0.0F : (values[i] > 255.0F ? 255.0F : values[i]);
        const int whole = static_cast<int>(limited);
        const int up = limited - static_cast<float>(whole) >= 0.5F ? 1 : 0;
        out[i] = static_cast<std::uint8_t>(whole + up);
    }
}

VELLORAN_SIMD_CLONES
void SquareRow(const float* values, int count, float* out) {
    for (int i = 0; i < count; ++i)
        out[i] = values[i] * values[i];
}

/// From the means of the samples and of their squares to the line through them: slope in place of
/// the squares, offset in place of the samples.
VELLORAN_SIMD_CLONES
void FitRow(int count, float eps, float* mean, float* squares) {
    for (int i = 0; i < count; ++i) {
        const float variance = squares[i] - mean[i] * mean[i];
        const float slope = variance / (variance + eps);
        squares[i] = slope;
        mean[i] = mean[i] - slope * mean[i];
    }
}

VELLORAN_SIMD_CLONES
void ApplyRow(const float* slope, const std::uint8_t* samples, int count, float* offset) {
    for (int i = 0; i < count; ++i)
        offset[i] = offset[i] + slope[i] * static_cast<float>(samples[i]);
}

/// The planes of one channel. The means have planes of their own: a mean in place would copy.
class GuidedPlane {
 public:
    GuidedPlane(int width, int height)
        : samples_(
              MakePixelBuffer(static_cast<std::size_t>(width) * static_cast<std::size_t>(height))),
          values_(width, height),
          squares_(width, height),
          meanValues_(width, height),
          meanSquares_(width, height),
          width_(width),
          height_(height) {}

    void Load(ConstPlaneView pixels, int channel) {
#pragma omp parallel for schedule(static)
        for (int y = 0; y < height_; ++y) {
            const std::uint8_t* from = pixels.Row(y).data() + channel;
            std::uint8_t* samples = Samples(y);
            float* values = values_.View().Row(y).data();
            for (int x = 0; x < width_; ++x) {
                samples[x] = from[static_cast<std::ptrdiff_t>(x) * pixels.channels];
                values[x] = static_cast<float>(samples[x]);
            }
        }
    }

    void Store(int channel, PlaneView pixels) const {
#pragma omp parallel for schedule(static)
        for (int y = 0; y < height_; ++y) {
            const std::uint8_t* samples = Samples(y);
            std::uint8_t* to = pixels.Row(y).data() + channel;
            for (int x = 0; x < width_; ++x)
                to[static_cast<std::ptrdiff_t>(x) * pixels.channels] = samples[x];
        }
    }

    /// The values go on unrounded into the next pass; the line is applied to the rounded samples.
    void Smooth(int radius, float eps) {
        const FloatView values = values_.View(), squares = squares_.View();
        const FloatView meanValues = meanValues_.View(), meanSquares = meanSquares_.View();
#pragma omp parallel for schedule(static)
        for (int y = 0; y < height_; ++y)
            SquareRow(values.Row(y).data(), width_, squares.Row(y).data());
        BoxMean(values, radius, meanValues);
        BoxMean(squares, radius, meanSquares);
#pragma omp parallel for schedule(static)
        for (int y = 0; y < height_; ++y)
            FitRow(width_, eps, meanValues.Row(y).data(), meanSquares.Row(y).data());
        BoxMean(meanSquares, radius, squares);
        BoxMean(meanValues, radius, values);
#pragma omp parallel for schedule(static)
        for (int y = 0; y < height_; ++y) {
            ApplyRow(squares.Row(y).data(), Samples(y), width_, values.Row(y).data());
            RoundRow(values.Row(y).data(), width_, Samples(y));
        }
    }

 private:
    std::uint8_t* Samples(int y) const {
        return samples_.get() + static_cast<std::ptrdiff_t>(y) * width_;
    }

    PixelBuffer samples_;
    FloatPlane values_, squares_, meanValues_, meanSquares_;
    int width_, height_;
};

}  // namespace

void BlurGuided(CDibImage& image, int radius, int threshold, int times) {
    const PlaneView pixels = ViewOf(image);
    const auto eps =
        static_cast<float>(static_cast<double>(static_cast<float>(threshold * threshold)) * 0.7);
    GuidedPlane plane(pixels.width, pixels.height);
    // The image changes when all its channels are done: the means may run out of memory.
    const std::ptrdiff_t stride = static_cast<std::ptrdiff_t>(pixels.width) * pixels.channels;
    const PixelBuffer memory =
        MakePixelBuffer(static_cast<std::size_t>(stride) * static_cast<std::size_t>(pixels.height));
    const PlaneView result{memory.get(), pixels.width, pixels.height, pixels.channels, stride};
    for (int channel = 0; channel < pixels.channels; ++channel) {
        plane.Load(pixels, channel);
        for (int pass = 0; pass < times; ++pass)
            plane.Smooth(radius, eps);
        plane.Store(channel, result);
    }
    for (int y = 0; y < pixels.height; ++y)
        std::copy_n(result.Row(y).data(), stride, pixels.Row(y).data());
}

}  // namespace velloran
