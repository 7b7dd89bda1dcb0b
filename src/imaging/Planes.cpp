#include "imaging/Planes.h"

#include <cstddef>

#include "core/Threads.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/Planes.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

void MergeRow(const std::uint8_t* blue, const std::uint8_t* green, const std::uint8_t* red,
              int count, std::uint8_t* out) {
    for (std::ptrdiff_t x = 0; x < count; ++x) {
        out[3 * x] = blue[x];
        out[3 * x + 1] = green[x];
        out[3 * x + 2] = red[x];
    }
}

void WeightedRow(const std::uint8_t* pixel, int count, GrayWeights weights, std::uint8_t* out) {
    for (std::ptrdiff_t x = 0; x < count; ++x) {
        const float level = weights.blue * static_cast<float>(pixel[3 * x]) +
                            weights.green * static_cast<float>(pixel[3 * x + 1]) +
                            weights.red * static_cast<float>(pixel[3 * x + 2]) + 0.5F;
        const float limited = level < 0.0F ? 0.0F : (level > 255.0F ? 255.0F : level);
        out[x] = static_cast<std::uint8_t>(static_cast<int>(limited));
    }
}

void EveryThird(const std::uint8_t* pixels, int count, std::uint8_t* out) {
    for (std::ptrdiff_t x = 0; x < count; ++x)
        out[x] = pixels[3 * x];
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(MergeRow);
HWY_EXPORT(WeightedRow);
HWY_EXPORT(EveryThird);

}  // namespace

void ExtractChannelRow(const std::uint8_t* pixels, int count, std::uint8_t* out) {
    HWY_DYNAMIC_DISPATCH(EveryThird)(pixels, count, out);
}

void ExtractChannel(ConstPlaneView pixels, int channel, PlaneView plane) {
    const ConstChannelView samples = pixels.Channel(channel);
#pragma omp parallel for schedule(static) if (IsWorthThreads(plane))
    for (int y = 0; y < plane.height; ++y)
        ExtractChannelRow(samples.Row(y).first, plane.width, plane.Row(y).data());
}

void InsertChannel(ConstPlaneView plane, int channel, PlaneView pixels) {
    const ChannelView samples = pixels.Channel(channel);
#pragma omp parallel for schedule(static) if (IsWorthThreads(plane))
    for (int y = 0; y < plane.height; ++y) {
        const std::uint8_t* from = plane.Row(y).data();
        const auto out = samples.Row(y);
        for (int x = 0; x < plane.width; ++x)
            out[x] = from[x];
    }
}

void MergeChannels(const std::array<ConstPlaneView, 3>& planes, PlaneView pixels) {
#pragma omp parallel for schedule(static) if (IsWorthThreads(planes[0]))
    for (int y = 0; y < pixels.height; ++y)
        HWY_DYNAMIC_DISPATCH(MergeRow)
    (planes[0].Row(y).data(), planes[1].Row(y).data(), planes[2].Row(y).data(), pixels.width,
     pixels.Row(y).data());
}

void WeightedGray(ConstPlaneView pixels, GrayWeights weights, PlaneView gray) {
#pragma omp parallel for schedule(static) if (IsWorthThreads(gray))
    for (int y = 0; y < gray.height; ++y)
        HWY_DYNAMIC_DISPATCH(WeightedRow)
    (pixels.Row(y).data(), gray.width, weights, gray.Row(y).data());
}

}  // namespace velloran
#endif  // HWY_ONCE
