#include "imaging/Reflect.h"

#include <algorithm>
#include <cstddef>

#include "imaging/SampleSums.h"

namespace velloran {

int Reflect(int index, int size) {
    if (index >= 0 && index < size)
        return index;
    const std::int64_t period = std::int64_t{2} * size;
    std::int64_t at = (index % period + period) % period;
    if (at >= size)
        at = period - 1 - at;
    return static_cast<int>(at);
}

void WidenReflected(std::span<const std::uint8_t> row, int channels, int firstPixel, int pixels,
                    std::uint16_t* samples) {
    const int width = static_cast<int>(row.size()) / channels;
    const auto outside = [&](int from, int to) {
        for (int i = from; i < to; ++i)
            Widen(row.data() + static_cast<std::ptrdiff_t>(Reflect(i, width)) * channels, channels,
                  samples + static_cast<std::ptrdiff_t>(i - firstPixel) * channels);
    };
    const int end = firstPixel + pixels;
    const int from = std::clamp(0, firstPixel, end), to = std::clamp(width, from, end);
    outside(firstPixel, from);
    Widen(row.data() + static_cast<std::ptrdiff_t>(from) * channels, (to - from) * channels,
          samples + static_cast<std::ptrdiff_t>(from - firstPixel) * channels);
    outside(to, end);
}

std::vector<Tap> TapsAt(std::span<const std::int32_t> weights, std::int32_t step) {
    std::vector<Tap> taps;
    for (std::size_t k = 0; k < weights.size(); ++k)
        taps.push_back({static_cast<std::int32_t>(k) * step, weights[k]});
    return taps;
}

}  // namespace velloran
