#if defined(__x86_64__)

#include <immintrin.h>

#include <cstring>

#include "imaging/TapGroups.h"

// The two sums of a step, 16 bits each, are laid side by side, so that one instruction multiplies
// both and adds the products as 32 bits.

namespace velloran {
namespace {

constexpr int kRegisters = 4;  // of 16 samples
static_assert(kRegisters * 16 == kSumBlock);

/// Products in the order of the unpacking: within each half register the lower four samples of
/// eight, then the upper four.
struct Sums {
    __m256i low[kRegisters], high[kRegisters];
};

template <int kCount>
[[gnu::target("avx2"), gnu::always_inline]] inline __m256i SumOf(const std::uint16_t* samples,
                                                                 const std::int32_t* offsets) {
    __m256i sum = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(samples + offsets[0]));
    for (int k = 1; k < kCount; ++k)
        sum = _mm256_add_epi16(
            sum, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(samples + offsets[k])));
    return sum;
}

template <int kFirst, int kSecond>
[[gnu::target("avx2"), gnu::always_inline]] inline void AddSteps(
    std::span<const TapStep<kFirst, kSecond>> steps, const std::uint16_t* samples, Sums& sums) {
    for (const auto& step : steps) {
        const auto lower = static_cast<std::uint16_t>(step.firstWeight);
        const auto upper = static_cast<std::uint16_t>(step.secondWeight);
        const __m256i weights =
            _mm256_set1_epi32(static_cast<int>(lower | static_cast<std::uint32_t>(upper) << 16));
        for (int i = 0; i < kRegisters; ++i) {
            const __m256i first = SumOf<kFirst>(samples + 16 * i, step.first);
            const __m256i second = SumOf<kSecond>(samples + 16 * i, step.second);
            sums.low[i] = _mm256_add_epi32(
                sums.low[i], _mm256_madd_epi16(_mm256_unpacklo_epi16(first, second), weights));
            sums.high[i] = _mm256_add_epi32(
                sums.high[i], _mm256_madd_epi16(_mm256_unpackhi_epi16(first, second), weights));
        }
    }
}

/// The same operations as the plain loop's, so that the last bit is the same; packing limits.
[[gnu::target("avx2"), gnu::always_inline]] inline __m256i Divide(__m256i sums, __m256 step,
                                                                  __m256 offset) {
    return _mm256_cvttps_epi32(
        _mm256_mul_ps(_mm256_add_ps(_mm256_cvtepi32_ps(sums), offset), step));
}

/// Bytes of 32 samples; packing undoes the order of the unpacking.
[[gnu::target("avx2"), gnu::always_inline]] inline __m256i Quotients(const Sums& sums, int i,
                                                                     __m256 step, __m256 offset) {
    const __m256i a =
        _mm256_packs_epi32(Divide(sums.low[i], step, offset), Divide(sums.high[i], step, offset));
    const __m256i b = _mm256_packs_epi32(Divide(sums.low[i + 1], step, offset),
                                         Divide(sums.high[i + 1], step, offset));
    return _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), 0xD8);
}

}  // namespace

[[gnu::target("avx2")]] void SumTapsAvx2(const TapGroups& taps, const std::uint16_t* samples,
                                         int count, std::uint8_t* out) {
    const __m256 step = _mm256_set1_ps(taps.Step()), offset = _mm256_set1_ps(taps.Offset());
    for (int x = 0; x < count; x += kSumBlock) {
        Sums sums;
        for (int i = 0; i < kRegisters; ++i)
            sums.low[i] = sums.high[i] = _mm256_setzero_si256();
        AddSteps(taps.Fours(), samples + x, sums);
        AddSteps(taps.Twos(), samples + x, sums);
        AddSteps(taps.TwoAndOne(), samples + x, sums);
        AddSteps(taps.Ones(), samples + x, sums);
        std::uint8_t last[kSumBlock];
        std::uint8_t* const to = count - x >= kSumBlock ? out + x : last;
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), Quotients(sums, 0, step, offset));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to + 32), Quotients(sums, 2, step, offset));
        if (to == last)
            std::memcpy(out + x, last, static_cast<std::size_t>(count - x));
    }
}

}  // namespace velloran
#endif
