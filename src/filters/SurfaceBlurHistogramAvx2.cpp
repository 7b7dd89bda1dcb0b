#include "filters/SurfaceBlurHistogram.h"

#if defined(__x86_64__)

#include <immintrin.h>

#include <algorithm>
#include <bit>

// The histogram of the window is brought up to date by groups of sixteen levels, and only those
// that a sample asks for: groups within reach of its level that are not empty. On a page these are
// two or three. A group that was not asked for lately catches up column by column, or is summed
// anew where that is less.

namespace velloran {
namespace {

class SlidingWindow {
 public:
    [[gnu::target("avx2")]] SlidingWindow(const ColumnCounts& counts, int radius)
        : counts_(counts), side_(2 * radius + 1) {
        std::fill(std::begin(upTo_), std::end(upTo_), -2 * side_);
        groups_ = _mm256_setzero_si256();
        for (int column = 0; column < side_ - 1; ++column)
            groups_ = _mm256_add_epi16(groups_, Widened(counts.Groups(column)));
    }

    /// From x - 1 to x.
    [[gnu::target("avx2"), gnu::always_inline]] void MoveTo(int x) {
        groups_ = _mm256_add_epi16(groups_, Widened(counts_.Groups(x + side_ - 1)));
        if (x > 0)
            groups_ = _mm256_sub_epi16(groups_, Widened(counts_.Groups(x - 1)));
    }

    /// Bit g is set where group g holds samples.
    [[gnu::target("avx2"), gnu::always_inline]] unsigned Occupied() const {
        const __m128i bytes =
            _mm_packs_epi16(_mm256_castsi256_si128(groups_), _mm256_extracti128_si256(groups_, 1));
        return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpgt_epi8(bytes, _mm_setzero_si128())));
    }

    /// The counts of a group in the window of x.
    [[gnu::target("avx2"), gnu::always_inline]] __m256i Group(int group, int x) {
        auto* kept = reinterpret_cast<__m256i*>(levels_[group]);
        const int behind = x - upTo_[group];
        __m256i sum = _mm256_load_si256(kept);
        if (behind == 0)
            return sum;
        upTo_[group] = x;
        const std::uint8_t* column = counts_.Levels(group, x);
        if (2 * behind <= side_) {
            for (const std::uint8_t* out = column - behind * kGroupLevels; out < column;
                 out += kGroupLevels) {
                sum = _mm256_add_epi16(sum, Widened(out + side_ * kGroupLevels));
                sum = _mm256_sub_epi16(sum, Widened(out));
            }
        } else {
            sum = _mm256_setzero_si256();
            for (int i = 0; i < side_; ++i)
                sum = _mm256_add_epi16(sum, Widened(column + i * kGroupLevels));
        }
        _mm256_store_si256(kept, sum);
        return sum;
    }

 private:
    [[gnu::target("avx2"), gnu::always_inline]] static __m256i Widened(const std::uint8_t* counts) {
        return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(counts)));
    }

    const ColumnCounts& counts_;
    const int side_;
    __m256i groups_;
    alignas(32) std::uint16_t levels_[kLevelGroups][kGroupLevels]{};
    int upTo_[kLevelGroups];  // the x that the counts of a group stand for
};

/// Sums over the groups of a window. A count times the low half of its level fits 16 bits, and the
/// high half is the number of the group.
struct Sums {
    __m256i den, low, high;

    [[gnu::target("avx2"), gnu::always_inline]] void Clear() {
        den = low = high = _mm256_setzero_si256();
    }

    [[gnu::target("avx2"), gnu::always_inline]] void Add(__m256i counts, __m256i weights,
                                                         int group) {
        const __m256i lowHalves =
            _mm256_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
        const __m256i shares = _mm256_madd_epi16(counts, weights);
        den = _mm256_add_epi32(den, shares);
        low = _mm256_add_epi32(low,
                               _mm256_madd_epi16(_mm256_mullo_epi16(counts, lowHalves), weights));
        high = _mm256_add_epi32(high, _mm256_mullo_epi32(shares, _mm256_set1_epi32(group)));
    }

    /// (num + den / 2) / den.
    [[gnu::target("avx2"), gnu::always_inline]] std::uint8_t Mean() const {
        const __m256i num = _mm256_add_epi32(low, _mm256_slli_epi32(high, 4));
        __m256i both = _mm256_hadd_epi32(den, num);
        both = _mm256_hadd_epi32(both, both);
        const __m128i total =
            _mm_add_epi32(_mm256_castsi256_si128(both), _mm256_extracti128_si256(both, 1));
        const auto pair = static_cast<std::uint64_t>(_mm_cvtsi128_si64(total));
        const auto divisor = static_cast<std::uint32_t>(pair);
        return static_cast<std::uint8_t>((static_cast<std::uint32_t>(pair >> 32) + divisor / 2) /
                                         divisor);
    }
};

[[gnu::target("avx2")]] void BlurRow(const HistogramRow& row) {
    SlidingWindow window(*row.counts, row.radius);
    const LevelWeights& weights = *row.weights;
    for (int x = 0; x < row.count; ++x) {
        window.MoveTo(x);
        const int center = row.source[static_cast<std::ptrdiff_t>(x) * row.step];
        const int first = std::max(center - weights.reach, 0) / kGroupLevels;
        const int last = std::min(center + weights.reach, 255) / kGroupLevels;
        unsigned wanted = window.Occupied() & ((2U << last) - (1U << first));
        Sums sums;
        sums.Clear();
        for (; wanted != 0; wanted &= wanted - 1) {
            const int group = std::countr_zero(wanted);
            const auto* groupWeights =
                reinterpret_cast<const __m256i*>(weights.OfGroup(group, center));
            sums.Add(window.Group(group, x), _mm256_loadu_si256(groupWeights), group);
        }
        row.target[static_cast<std::ptrdiff_t>(x) * row.step] = sums.Mean();
    }
}

}  // namespace

BlurHistogramRow BlurHistogramRowAvx2() {
    return __builtin_cpu_supports("avx2") ? BlurRow : nullptr;
}

}  // namespace velloran

#else

namespace velloran {

BlurHistogramRow BlurHistogramRowAvx2() {
    return nullptr;
}

}  // namespace velloran

#endif
