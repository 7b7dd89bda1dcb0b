#include "tone/AutoLevelsLuma.h"

#include "core/Rounding.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace velloran {
namespace {

bool Always() {
    return true;
}

void LumaPlain(const std::uint8_t* pixels, std::size_t pixelCount, std::uint8_t* luma) {
    for (std::size_t i = 0; i < pixelCount; ++i, pixels += 3)
        luma[i] = LumaOf(pixels[0], pixels[1], pixels[2]);
}

#if defined(__x86_64__)
bool HasAvx2() {
    return __builtin_cpu_supports("avx2") != 0;
}

/// Luma, in 32 bits each, of the four pixels at `first` and of the four at `second`.
[[gnu::target("avx2"), gnu::always_inline]] inline __m256i LumaOfEight(const std::uint8_t* first,
                                                                       const std::uint8_t* second) {
    const __m256i pixels = _mm256_inserti128_si256(
        _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(first))),
        _mm_loadu_si128(reinterpret_cast<const __m128i*>(second)), 1);
    const __m256i blueAndGreen = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(0, -1, 1, -1, 3, -1, 4, -1, 6, -1, 7, -1, 9, -1, 10, -1));
    const __m256i red = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(2, -1, -1, -1, 5, -1, -1, -1, 8, -1, -1, -1, 11, -1, -1, -1));
    const __m256i sum = _mm256_add_epi32(
        _mm256_madd_epi16(_mm256_shuffle_epi8(pixels, blueAndGreen),
                          _mm256_set1_epi32(117 | 601 << 16)),
        _mm256_madd_epi16(_mm256_shuffle_epi8(pixels, red), _mm256_set1_epi32(306)));
    return _mm256_srli_epi32(sum, 10);
}

[[gnu::target("avx2")]] void LumaAvx2(const std::uint8_t* pixels, std::size_t pixelCount,
                                      std::uint8_t* luma) {
    constexpr std::size_t kTogether = 16;
    // A load of four pixels reads 4 bytes more: two pixels must follow.
    std::size_t i = 0;
    for (; i + kTogether + 2 <= pixelCount; i += kTogether) {
        const std::uint8_t* at = pixels + 3 * i;
        const __m256i words =
            _mm256_packus_epi32(LumaOfEight(at, at + 24), LumaOfEight(at + 12, at + 36));
        const __m256i bytes = _mm256_packus_epi16(words, words);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(luma + i), _mm256_castsi256_si128(bytes));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(luma + i + 8),
                         _mm256_extracti128_si256(bytes, 1));
    }
    LumaPlain(pixels + 3 * i, pixelCount - i, luma + i);
}
#endif

constexpr LumaWay kWays[] = {
    {"plain", Always, LumaPlain},
#if defined(__x86_64__)
    {"avx2", HasAvx2, LumaAvx2},
#endif
};

const LumaWay& FindBest() {
    const LumaWay* best = &kWays[0];
    for (const LumaWay& way : kWays)
        if (way.isSupported())
            best = &way;
    return *best;
}

}  // namespace

std::span<const LumaWay> LumaWays() {
    return kWays;
}

const LumaWay& BestLumaWay() {
    static const LumaWay& best = FindBest();
    return best;
}

}  // namespace velloran
