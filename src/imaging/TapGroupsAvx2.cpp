#if defined(__x86_64__)

#include <immintrin.h>

#include <algorithm>
#include <cstring>

#include "imaging/TapGroups.h"

// The two sums of a step, 16 bits each, are laid side by side, so that one instruction multiplies
// both and adds the products as 32 bits.

namespace velloran {
namespace {

struct Block {
    __m256i a, b;  // samples 0 to 15, 16 to 31
};

/// Products in the order of the unpacking: within each half register the lower four samples of
/// eight, then the upper four.
struct Sums {
    __m256i aLow, aHigh, bLow, bHigh;
};

[[gnu::target("avx2"), gnu::always_inline]] inline __m256i LoadSamples(const std::uint16_t* from) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}

template <int kCount>
[[gnu::target("avx2"), gnu::always_inline]] inline Block SumOf(const std::uint16_t* samples,
                                                               const std::int32_t* offsets) {
    Block sum{LoadSamples(samples + offsets[0]), LoadSamples(samples + offsets[0] + 16)};
    for (int k = 1; k < kCount; ++k) {
        sum.a = _mm256_add_epi16(sum.a, LoadSamples(samples + offsets[k]));
        sum.b = _mm256_add_epi16(sum.b, LoadSamples(samples + offsets[k] + 16));
    }
    return sum;
}

[[gnu::target("avx2"), gnu::always_inline]] inline void AddProducts(const Block& first,
                                                                    const Block& second,
                                                                    __m256i weights, Sums& sums) {
    const auto add = [weights](__m256i & sum, __m256i pairs) __attribute__((target("avx2"))) {
        sum = _mm256_add_epi32(sum, _mm256_madd_epi16(pairs, weights));
    };
    add(sums.aLow, _mm256_unpacklo_epi16(first.a, second.a));
    add(sums.aHigh, _mm256_unpackhi_epi16(first.a, second.a));
    add(sums.bLow, _mm256_unpacklo_epi16(first.b, second.b));
    add(sums.bHigh, _mm256_unpackhi_epi16(first.b, second.b));
}

template <int kCount>
[[gnu::target("avx2"), gnu::always_inline]] inline void AddSteps(
    std::span<const TapStep<kCount>> steps, const std::uint16_t* samples, Sums& sums) {
    for (const TapStep<kCount>& step : steps) {
        const auto low = static_cast<std::uint16_t>(step.firstWeight);
        const auto high = static_cast<std::uint16_t>(step.secondWeight);
        const std::uint32_t both = low | static_cast<std::uint32_t>(high) << 16;
        AddProducts(SumOf<kCount>(samples, step.first), SumOf<kCount>(samples, step.second),
                    _mm256_set1_epi32(static_cast<int>(both)), sums);
    }
}

/// The same operations as the plain loop's, so that the last bit is the same; packing limits.
[[gnu::target("avx2"), gnu::always_inline]] inline __m256i Divide(__m256i sums, __m256 step,
                                                                  __m256 offset) {
    return _mm256_cvttps_epi32(
        _mm256_mul_ps(_mm256_add_ps(_mm256_cvtepi32_ps(sums), offset), step));
}

}  // namespace

[[gnu::target("avx2")]] void SumTapsAvx2(const TapGroups& taps, const std::uint16_t* samples,
                                         int count, std::uint8_t* out) {
    const __m256 step = _mm256_set1_ps(taps.Step()), offset = _mm256_set1_ps(taps.Offset());
    for (int x = 0; x < count; x += kSumBlock) {
        const __m256i zero = _mm256_setzero_si256();
        Sums sums{zero, zero, zero, zero};
        AddSteps(taps.Fours(), samples + x, sums);
        AddSteps(taps.Twos(), samples + x, sums);
        AddSteps(taps.Ones(), samples + x, sums);
        // Packing undoes the order of the unpacking.
        const __m256i a =
            _mm256_packs_epi32(Divide(sums.aLow, step, offset), Divide(sums.aHigh, step, offset));
        const __m256i b =
            _mm256_packs_epi32(Divide(sums.bLow, step, offset), Divide(sums.bHigh, step, offset));
        const __m256i bytes = _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), 0xD8);
        if (count - x >= kSumBlock) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + x), bytes);
        } else {
            std::uint8_t last[kSumBlock];
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(last), bytes);
            std::memcpy(out + x, last, static_cast<std::size_t>(count - x));
        }
    }
}

}  // namespace velloran
#endif
