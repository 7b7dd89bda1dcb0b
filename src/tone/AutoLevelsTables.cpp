#include "tone/AutoLevelsTables.h"

#include <algorithm>
#include <cstdlib>

#include "core/ExactMath.h"
#include "core/Rounding.h"

namespace velloran {
namespace {

/// Distance of a count from its target, both 32 bits wide.
std::int64_t Distance(std::uint32_t count, std::int32_t target) {
    return std::abs(
        std::int64_t{static_cast<std::int32_t>(count - static_cast<std::uint32_t>(target))});
}

/// Counts up from `first` to `last`; at the first level after which the count moves away from the
/// target, the level above it. `none` when there is no such level.
int CountUp(const Histogram& histogram, int first, int last, std::int32_t target, int none) {
    std::uint32_t count = 0;
    for (int i = first; i <= last; ++i) {
        count += histogram[i];
        if (Distance(count, target) < Distance(count + histogram[i + 1], target))
            return i + 1;
    }
    return none;
}

/// The same from white downward.
int CountDown(const Histogram& histogram, std::int32_t target) {
    std::uint32_t count = 0;
    for (int i = 255; i >= 1; --i) {
        count += histogram[i];
        if (Distance(count, target) < Distance(count + histogram[i - 1], target))
            return i - 1;
    }
    return 255;
}

std::uint32_t Sum(const Histogram& histogram, int first, int count) {
    std::uint32_t sum = 0;
    for (int i = first; i < first + count; ++i)
        sum += histogram[i];
    return sum;
}

PixelMap MakeLiftTable() {
    const double exponent = 1.0 / (1.0 / (1.0199198592936658 * 1.0199198592936658));
    PixelMap table{};
    for (int i = 0; i < 256; ++i)
        table[i] = ClampToByte(RoundHalf(Pow(i / 255.0, exponent) * 255.0));
    return table;
}

}  // namespace

void ClipPoints(const Histogram& histogram, double lowFraction, double highFraction, int& low,
                int& high) {
    const double total = Sum(histogram, 0, 256);
    low = CountUp(histogram, 0, 254, RoundHalf(total * lowFraction), 0);
    high = CountDown(histogram, RoundHalf(total * highFraction));
    if (high < low)
        std::swap(low, high);
}

void StretchTable(PixelMap& table, int low, int high) {
    table = IdentityPixelMap();
    if (low == high || (low == 0 && high == 255))
        return;
    const auto [first, last] = std::minmax(low, high);
    const int range = last - first;
    for (int i = 0; i < 256; ++i)
        table[i] = i < first  ? 0
                   : i > last ? 255
                              : ClampToByte(((i - first) * 255 + range / 2) / range);
}

PixelMap BrightnessTable(const Histogram& histogram, double fraction) {
    static const PixelMap lift = MakeLiftTable();
    int low = 0, high = 255;
    ClipPoints(histogram, fraction, fraction, low, high);
    low >>= 1;
    high += (255 - high) >> 1;
    const double scale = high == low ? 1.0 : 255.0 / (high - low);
    PixelMap table{};
    for (int i = 0; i < 256; ++i) {
        const int stretched = i < low ? 0 : i > high ? 255 : RoundHalf((i - low) * scale);
        table[i] = lift[ClampToByte(stretched)];
    }
    return table;
}

BleachPoints FindBleachPoints(const Histogram& histogram, BleachShares shares, int firstSummed) {
    BleachPoints points;
    const std::uint32_t dark = Sum(histogram, firstSummed, 122);
    points.low = CountUp(histogram, 5, 126, RoundHalf(dark * shares.dark), 255);
    Histogram light{};
    std::copy(histogram.begin() + 127, histogram.begin() + 254, light.begin() + 127);
    points.high = CountDown(light, RoundHalf(Sum(light, 0, 256) * shares.light));
    return points;
}

}  // namespace velloran
