#include "filters/UsmMixer.h"

#include <cstdlib>

#include "core/Rounding.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace velloran {
namespace {

void LookUpRow(const UsmTable& table, const std::uint8_t* blurred, int count, std::uint8_t* row) {
    for (int i = 0; i < count; ++i)
        row[i] = table[row[i]][blurred[i]];
}

#if defined(__x86_64__)
constexpr int kBlock = 32;

struct UsmVectors {
    __m256i whole, part, threshold;
};

/// difference * amount / 100 in 16 bits: whole hundreds and, as a fraction of 65536 that is rounded
/// up, the rest. 255 times its error is less than a hundredth, so the truncated sum is exact.
[[gnu::target("avx2"), gnu::always_inline]] inline __m256i Scaled(__m256i difference,
                                                                  const UsmVectors& usm) {
    return _mm256_add_epi16(_mm256_mullo_epi16(difference, usm.whole),
                            _mm256_mulhi_epu16(difference, usm.part));
}

[[gnu::target("avx2"), gnu::always_inline]] inline __m256i MixBlock(__m256i blurred, __m256i row,
                                                                    const UsmVectors& usm) {
    const __m256i zero = _mm256_setzero_si256();
    const __m256i larger = _mm256_max_epu8(row, blurred);
    const __m256i difference = _mm256_sub_epi8(larger, _mm256_min_epu8(row, blurred));
    const __m256i stays = _mm256_cmpeq_epi8(_mm256_subs_epu8(difference, usm.threshold), zero);
    const __m256i scaled = _mm256_packus_epi16(Scaled(_mm256_unpacklo_epi8(difference, zero), usm),
                                               Scaled(_mm256_unpackhi_epi8(difference, zero), usm));
    const __m256i change = _mm256_andnot_si256(stays, scaled);
    return _mm256_blendv_epi8(_mm256_subs_epu8(row, change), _mm256_adds_epu8(row, change),
                              _mm256_cmpeq_epi8(larger, row));
}

/// `count` is a multiple of the block.
[[gnu::target("avx2")]] void MixBlocks(int amount, int threshold, const std::uint8_t* blurred,
                                       int count, std::uint8_t* row) {
    const int part = (amount % 100 * 65536 + 99) / 100;
    const UsmVectors usm{_mm256_set1_epi16(static_cast<std::int16_t>(amount / 100)),
                         _mm256_set1_epi16(static_cast<std::int16_t>(part)),
                         _mm256_set1_epi8(static_cast<char>(threshold))};
    for (int x = 0; x < count; x += kBlock) {
        const __m256i from = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(blurred + x));
        __m256i* const to = reinterpret_cast<__m256i*>(row + x);
        _mm256_storeu_si256(to, MixBlock(from, _mm256_loadu_si256(to), usm));
    }
}
#endif

std::uint8_t MixSample(int source, int blurred, int amount, int threshold) {
    const int difference = source - blurred;
    if (std::abs(difference) <= threshold)
        return static_cast<std::uint8_t>(source);
    return ClampToByte(source + difference * amount / 100);
}

}  // namespace

void MakeUsmTable(int amount, int threshold, UsmTable& table) {
    for (int source = 0; source < 256; ++source)
        for (int blurred = 0; blurred < 256; ++blurred)
            table[static_cast<std::size_t>(source)][static_cast<std::size_t>(blurred)] =
                MixSample(source, blurred, amount, threshold);
}

bool UsmMixer::HasVectors() {
#if defined(__x86_64__)
    return __builtin_cpu_supports("avx2") != 0;
#else
    return false;
#endif
}

UsmMixer::UsmMixer(int amount, int threshold, bool useVectors)
    : amount_(amount), threshold_(threshold) {
    if (useVectors && HasVectors())
        return;
    table_ = std::make_unique<UsmTable>();
    MakeUsmTable(amount, threshold, *table_);
}

void UsmMixer::Mix(const std::uint8_t* blurred, int count, std::uint8_t* row) const {
    if (table_ != nullptr) {
        LookUpRow(*table_, blurred, count, row);
        return;
    }
    int x = 0;
#if defined(__x86_64__)
    x = count - count % kBlock;
    MixBlocks(amount_, threshold_, blurred, x, row);
#endif
    for (; x < count; ++x)
        row[x] = MixSample(row[x], blurred[x], amount_, threshold_);
}

}  // namespace velloran
