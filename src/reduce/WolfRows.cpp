#include "reduce/WolfRows.h"

#include <algorithm>
#include <bit>
#include <cmath>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "reduce/WolfRows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

/// A whole number below 2^52 as a double, in a form that compilers turn into vectors.
[[gnu::always_inline]] inline double ToDouble(std::uint64_t value) {
    return std::bit_cast<double>(value | 0x4330000000000000U) - 4503599627370496.0;
}

struct Statistics {
    double mean, variance;
};

[[gnu::always_inline]] inline Statistics StatisticsAt(const WolfRow& row, int x) {
    const double mean = ToDouble(row.last[x] - row.first[x]) * row.share[x];
    const double squares = ToDouble(row.lastSquares[x] - row.firstSquares[x]) * row.share[x];
    return {mean, std::fabs(squares - mean * mean)};
}

double LargestVariance(const WolfRow& given) {
    const WolfRow row = given;
    constexpr int kLanes = 4;
    double lane[kLanes] = {};
    int x = 0;
    for (; x + kLanes <= row.width; x += kLanes)
        for (int i = 0; i < kLanes; ++i) {
            const double variance = StatisticsAt(row, x + i).variance;
            lane[i] = variance > lane[i] ? variance : lane[i];
        }
    for (; x < row.width; ++x)
        lane[0] = std::max(lane[0], StatisticsAt(row, x).variance);
    return std::max(std::max(lane[0], lane[1]), std::max(lane[2], lane[3]));
}

void Split(const WolfRow& given, const WolfTone& pageTone, const std::uint8_t* in,
           std::uint8_t* out) {
    constexpr int kBlock = 128;  // doubles first, then bytes: each loop has one width
    const WolfRow row = given;
    const WolfTone tone = pageTone;
    const bool flat = tone.largestDeviation < 0.0001F;
    const float largest = flat ? 1.0F : tone.largestDeviation;
    const float weight = flat ? 0.0F : 1.0F;
    for (int begin = 0; begin < row.width; begin += kBlock) {
        const int count = std::min(kBlock, row.width - begin);
        std::int32_t threshold[kBlock];
        for (int i = 0; i < count; ++i) {
            const Statistics s = StatisticsAt(row, begin + i);
            const float mean = static_cast<float>(s.mean);
            const float deviation = static_cast<float>(std::sqrt(s.variance));
            const float f = 1.0F - weight * (deviation / largest);
            threshold[i] =
                static_cast<std::int32_t>(mean - (mean - tone.darkest) * (0.3F * f) + 0.5F);
        }
        for (int i = 0; i < count; ++i) {
            const std::int32_t sample = in[begin + i];
            const std::int32_t local = sample < threshold[i] ? 0 : 255;
            const std::int32_t light = sample > tone.highBound ? 255 : local;
            out[begin + i] = static_cast<std::uint8_t>(sample < tone.lowBound ? 0 : light);
        }
    }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(LargestVariance);
HWY_EXPORT(Split);

}  // namespace

double LargestVarianceOf(const WolfRow& row) {
    return HWY_DYNAMIC_DISPATCH(LargestVariance)(row);
}

void ThresholdRow(const WolfRow& row, const WolfTone& tone, const std::uint8_t* in,
                  std::uint8_t* out) {
    HWY_DYNAMIC_DISPATCH(Split)(row, tone, in, out);
}

}  // namespace velloran
#endif  // HWY_ONCE
