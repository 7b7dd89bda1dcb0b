#include "imaging/Convolve.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "core/Rounding.h"
#include "core/SimdTarget.h"
#include "core/Threads.h"

namespace velloran {
namespace {

/// Sums beyond this could lose their last digit as floats.
constexpr std::int64_t kExactFloat = 1 << 22;

/// Quotients of sums by a divisor, rounded to nearest. The quarter of a step keeps exact quotients
/// on the right side of the truncation; the next quotient below is half a step away.
struct Quotient {
    float step, offset;
    explicit Quotient(std::int32_t divisor)
        : step(1.0F / (2.0F * static_cast<float>(divisor))),
          offset(static_cast<float>(divisor) + 0.5F) {}
};

VELLORAN_SIMD_CLONES
void AddProducts(const std::uint8_t* samples, std::int32_t weight, int count, std::int32_t* sums) {
    for (int i = 0; i < count; ++i)
        sums[i] += weight * samples[i];
}

VELLORAN_SIMD_CLONES
void DivideSums(const std::int32_t* sums, int count, float step, float offset, std::uint8_t* out) {
    for (int i = 0; i < count; ++i) {
        const float quotient = (2.0F * static_cast<float>(sums[i]) + offset) * step;
        const float limited = quotient < 0.0F ? 0.0F : (quotient > 255.0F ? 255.0F : quotient);
        out[i] = static_cast<std::uint8_t>(static_cast<int>(limited));
    }
}

/// The slow way for weights of any size.
void DivideExactly(const std::int64_t* sums, int count, std::int64_t divisor, std::uint8_t* out) {
    for (int i = 0; i < count; ++i) {
        const std::int64_t sum = sums[i];
        out[i] = sum <= 0 ? 0 : ClampToByte(sum / divisor + (sum % divisor * 2 >= divisor ? 1 : 0));
    }
}

bool FitsFloats(std::span<const std::int32_t> weights, std::int32_t divisor) {
    std::int64_t sum = divisor;
    for (const std::int32_t weight : weights)
        sum += std::abs(std::int64_t{weight}) * 255;
    return sum < kExactFloat;
}

/// A row of sums for each thread.
template <typename Sum>
std::vector<std::vector<Sum>> RowPerThread(std::size_t length) {
    return std::vector<std::vector<Sum>>(static_cast<std::size_t>(MaxThreads()),
                                         std::vector<Sum>(length));
}

/// Calls `tapOf(y, i)` for the samples that weight i meets in output row y.
template <typename TapOf>
void WeightedRows(std::span<const std::int32_t> weights, std::int32_t divisor, PlaneView target,
                  TapOf&& tapOf) {
    const int count = target.width * target.channels;
    if (FitsFloats(weights, divisor)) {
        auto rows = RowPerThread<std::int32_t>(static_cast<std::size_t>(count));
        const Quotient quotient(divisor);
#pragma omp parallel for schedule(static)
        for (int y = 0; y < target.height; ++y) {
            auto& sums = rows[static_cast<std::size_t>(ThreadNumber())];
            std::fill(sums.begin(), sums.end(), 0);
            for (std::size_t i = 0; i < weights.size(); ++i)
                if (weights[i] != 0)
                    AddProducts(tapOf(y, static_cast<int>(i)), weights[i], count, sums.data());
            DivideSums(sums.data(), count, quotient.step, quotient.offset, target.Row(y).data());
        }
        return;
    }
    auto rows = RowPerThread<std::int64_t>(static_cast<std::size_t>(count));
#pragma omp parallel for schedule(static)
    for (int y = 0; y < target.height; ++y) {
        auto& sums = rows[static_cast<std::size_t>(ThreadNumber())];
        std::fill(sums.begin(), sums.end(), 0);
        for (std::size_t i = 0; i < weights.size(); ++i) {
            const std::uint8_t* samples = tapOf(y, static_cast<int>(i));
            for (int x = 0; x < count; ++x)
                sums[static_cast<std::size_t>(x)] += std::int64_t{weights[i]} * samples[x];
        }
        DivideExactly(sums.data(), count, divisor, target.Row(y).data());
    }
}

VELLORAN_SIMD_CLONES
void AddFloatProducts(const std::uint8_t* samples, float weight, int count, float* sums) {
    for (int i = 0; i < count; ++i)
        sums[i] += weight * static_cast<float>(samples[i]);
}

VELLORAN_SIMD_CLONES
void RoundSums(const float* sums, int count, std::uint8_t* out) {
    for (int i = 0; i < count; ++i) {
        const float value = sums[i] + 0.5F;
        const float limited = value < 0.0F ? 0.0F : (value > 255.0F ? 255.0F : value);
        out[i] = static_cast<std::uint8_t>(static_cast<int>(limited));
    }
}

/// Row or column -1 - i is i, folded again while it lies outside.
int Reflect(int index, int size) {
    const std::int64_t period = std::int64_t{2} * size;
    std::int64_t at = (index % period + period) % period;
    if (at >= size)
        at = period - 1 - at;
    return static_cast<int>(at);
}

}  // namespace

void ConvolveInt(ConstPlaneView source, std::span<const std::int32_t> weights, int size,
                 std::int32_t divisor, PlaneView target) {
    WeightedRows(weights, divisor, target, [&](int y, int i) {
        return source.Row(y + i / size).data() +
               static_cast<std::ptrdiff_t>(i % size) * source.channels;
    });
}

void ConvolveFloat(ConstPlaneView source, std::span<const float> weights, int size,
                   PlaneView target) {
    const int count = target.width * target.channels;
    auto rows = RowPerThread<float>(static_cast<std::size_t>(count));
#pragma omp parallel for schedule(static)
    for (int y = 0; y < target.height; ++y) {
        auto& sums = rows[static_cast<std::size_t>(ThreadNumber())];
        std::fill(sums.begin(), sums.end(), 0.0F);
        for (int ky = 0; ky < size; ++ky)
            for (int kx = 0; kx < size; ++kx)
                AddFloatProducts(
                    source.Row(y + ky).data() + static_cast<std::ptrdiff_t>(kx) * source.channels,
                    weights[static_cast<std::size_t>(ky * size + kx)], count, sums.data());
        RoundSums(sums.data(), count, target.Row(y).data());
    }
}

void FilterColumns(ConstPlaneView source, std::span<const std::int32_t> taps, std::int32_t divisor,
                   PlaneView target) {
    const int reach = static_cast<int>(taps.size() / 2);
    WeightedRows(taps, divisor, target, [&](int y, int i) {
        return source.Row(Reflect(y + i - reach, source.height)).data();
    });
}

void FilterRows(ConstPlaneView source, std::span<const std::int32_t> taps, std::int32_t divisor,
                PlaneView target) {
    const int reach = static_cast<int>(taps.size() / 2), channels = source.channels;
    std::vector<std::vector<std::uint8_t>> rows(
        static_cast<std::size_t>(MaxThreads()),
        std::vector<std::uint8_t>(static_cast<std::size_t>(source.width + 2 * reach) * channels));
    std::vector<int> filled(rows.size(), -1);
    WeightedRows(taps, divisor, target, [&](int y, int i) {
        // The first tap of a row lays out the row with its reflections.
        const auto thread = static_cast<std::size_t>(ThreadNumber());
        std::vector<std::uint8_t>& row = rows[thread];
        if (filled[thread] != y) {
            filled[thread] = y;
            const std::uint8_t* from = source.Row(y).data();
            for (int x = -reach; x < source.width + reach; ++x)
                std::copy_n(from + static_cast<std::ptrdiff_t>(Reflect(x, source.width)) * channels,
                            channels,
                            row.begin() + static_cast<std::ptrdiff_t>(x + reach) * channels);
        }
        return row.data() + static_cast<std::ptrdiff_t>(i) * channels;
    });
}

}  // namespace velloran
