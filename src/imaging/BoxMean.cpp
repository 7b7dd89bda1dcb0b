#include "imaging/BoxMean.h"

#include <algorithm>
#include <vector>

#include "core/SimdTarget.h"
#include "core/Threads.h"

namespace velloran {
namespace {

VELLORAN_SIMD_CLONES
void AddRow(const float* row, int count, double* sums) {
    for (int i = 0; i < count; ++i)
        sums[i] += static_cast<double>(row[i]);
}

VELLORAN_SIMD_CLONES
void ExchangeRow(const float* in, const float* out, int count, double* sums) {
    for (int i = 0; i < count; ++i)
        sums[i] += static_cast<double>(in[i]) - static_cast<double>(out[i]);
}

/// Rows of one band: the column sums start anew at each band, so that the result does not depend
/// on how many threads share them.
constexpr int kBandRows = 128;

/// The means of a row from its column sums, the border replicated.
void MeansOfRow(const double* sums, int width, int channels, int radius, double share, float* out) {
    const auto at = [&](int x, int c) {
        return sums[static_cast<std::ptrdiff_t>(std::clamp(x, 0, width - 1)) * channels + c];
    };
    for (int c = 0; c < channels; ++c) {
        double sum = 0;
        for (int x = -radius; x <= radius; ++x)
            sum += at(x, c);
        for (int x = 0; x < width; ++x) {
            out[static_cast<std::ptrdiff_t>(x) * channels + c] = static_cast<float>(sum * share);
            sum += at(x + radius + 1, c) - at(x - radius, c);
        }
    }
}

}  // namespace

void BoxMean(ConstFloatView source, int radius, FloatView target) {
    const int count = source.width * source.channels;
    const double side = 2.0 * radius + 1;
    const double share = 1 / (side * side);
    // The source is read around a row after that row was written, where both are one.
    FloatPlane copy;
    if (source.first == target.first) {
        copy = FloatPlane(source.width, source.height, source.channels);
        for (int y = 0; y < source.height; ++y)
            std::copy_n(source.Row(y).data(), count, copy.View().Row(y).data());
        source = copy.View();
    }
    const int bands = (source.height + kBandRows - 1) / kBandRows;
    std::vector<std::vector<double>> perThread(
        static_cast<std::size_t>(MaxThreads()),
        std::vector<double>(static_cast<std::size_t>(count)));
    const auto row = [&](int y) { return source.Row(std::clamp(y, 0, source.height - 1)).data(); };
#pragma omp parallel for schedule(static)
    for (int band = 0; band < bands; ++band) {
        std::vector<double>& sums = perThread[static_cast<std::size_t>(ThreadNumber())];
        std::fill(sums.begin(), sums.end(), 0.0);
        const int first = band * kBandRows, last = std::min(first + kBandRows, source.height);
        for (int y = first - radius; y <= first + radius; ++y)
            AddRow(row(y), count, sums.data());
        for (int y = first; y < last; ++y) {
            MeansOfRow(sums.data(), source.width, source.channels, radius, share,
                       target.Row(y).data());
            ExchangeRow(row(y + radius + 1), row(y - radius), count, sums.data());
        }
    }
}

}  // namespace velloran
