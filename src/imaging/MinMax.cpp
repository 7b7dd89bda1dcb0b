#include "imaging/MinMax.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "core/SimdTarget.h"
#include "core/Threads.h"

namespace velloran {
namespace {

VELLORAN_SIMD_CLONES
void TakeMinimum(const std::uint8_t* samples, int count, std::uint8_t* out) {
    for (int i = 0; i < count; ++i)
        out[i] = samples[i] < out[i] ? samples[i] : out[i];
}

VELLORAN_SIMD_CLONES
void TakeMaximum(const std::uint8_t* samples, int count, std::uint8_t* out) {
    for (int i = 0; i < count; ++i)
        out[i] = samples[i] > out[i] ? samples[i] : out[i];
}

/// Columns first, into a row of the source's width, then along that row.
template <typename Take>
void OverWindow(ConstPlaneView source, Window window, PlaneView target, Take take) {
    const int channels = target.channels;
    const int count = target.width * channels;
    const int wide = count + (window.width - 1) * channels;
    std::vector<std::vector<std::uint8_t>> rows(
        static_cast<std::size_t>(MaxThreads()),
        std::vector<std::uint8_t>(static_cast<std::size_t>(wide)));
#pragma omp parallel for schedule(static)
    for (int y = 0; y < target.height; ++y) {
        std::uint8_t* row = rows[static_cast<std::size_t>(ThreadNumber())].data();
        std::memcpy(row, source.Row(y).data(), static_cast<std::size_t>(wide));
        for (int k = 1; k < window.height; ++k)
            take(source.Row(y + k).data(), wide, row);
        std::uint8_t* out = target.Row(y).data();
        std::memcpy(out, row, static_cast<std::size_t>(count));
        for (int k = 1; k < window.width; ++k)
            take(row + static_cast<std::ptrdiff_t>(k) * channels, count, out);
    }
}

}  // namespace

void MinFilter(ConstPlaneView source, Window window, PlaneView target) {
    OverWindow(source, window, target, TakeMinimum);
}

void MaxFilter(ConstPlaneView source, Window window, PlaneView target) {
    OverWindow(source, window, target, TakeMaximum);
}

}  // namespace velloran
