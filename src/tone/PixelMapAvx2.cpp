#if defined(__x86_64__)

#include <immintrin.h>

#include "tone/PixelMapKernels.h"

// A byte shuffle looks up 4 bits in a table of 16 entries. The low half of a sample is looked up
// in all sixteen pieces of the table, and the bits of its high half choose among the results: a
// binary tree of selections. Two registers of samples share each load of a piece.

namespace velloran {
namespace {

constexpr std::size_t kRegister = 32;  // bytes
constexpr std::size_t kPair = 2 * kRegister;

struct Pair {
    __m256i a, b;
};

/// A selection looks at the top bit of a byte: samples shifted until bit 4, 5, 6, 7 stands there.
struct Selectors {
    Pair bit[4];
};

[[gnu::target("avx2"), gnu::always_inline]] inline Pair Load(const std::uint8_t* bytes) {
    return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes)),
            _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes + kRegister))};
}

[[gnu::target("avx2"), gnu::always_inline]] inline void Store(const Pair& pair,
                                                              std::uint8_t* bytes) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes), pair.a);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes + kRegister), pair.b);
}

[[gnu::target("avx2"), gnu::always_inline]] inline Pair Select(const Pair& clear, const Pair& set,
                                                               const Pair& topBits) {
    return {_mm256_blendv_epi8(clear.a, set.a, topBits.a),
            _mm256_blendv_epi8(clear.b, set.b, topBits.b)};
}

[[gnu::target("avx2"), gnu::always_inline]] inline Pair Twice(const Pair& pair) {
    return {_mm256_add_epi8(pair.a, pair.a), _mm256_add_epi8(pair.b, pair.b)};
}

/// Looks up bits 0 to `kTopBit` of the samples in the 2 << kTopBit entries from `table` on.
template <int kTopBit>
[[gnu::target("avx2"), gnu::always_inline]] inline Pair LookUpBits(const std::uint8_t* table,
                                                                   const Pair& low,
                                                                   const Selectors& selectors) {
    if constexpr (kTopBit == 3) {
        const __m256i piece =
            _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(table)));
        return {_mm256_shuffle_epi8(piece, low.a), _mm256_shuffle_epi8(piece, low.b)};
    } else {
        const Pair clear = LookUpBits<kTopBit - 1>(table, low, selectors);
        const Pair set = LookUpBits<kTopBit - 1>(table + (1 << kTopBit), low, selectors);
        return Select(clear, set, selectors.bit[kTopBit - 4]);
    }
}

[[gnu::target("avx2"), gnu::always_inline]] inline Pair LookUp(const PixelMap& map,
                                                               const Pair& samples) {
    const __m256i lowHalf = _mm256_set1_epi8(15);
    const Pair low{_mm256_and_si256(samples.a, lowHalf), _mm256_and_si256(samples.b, lowHalf)};
    Selectors selectors;
    selectors.bit[3] = samples;
    for (int bit = 2; bit >= 0; --bit)
        selectors.bit[bit] = Twice(selectors.bit[bit + 1]);
    return LookUpBits<7>(map.data(), low, selectors);
}

/// Which bytes of a run of whole pixels are of one channel. Entry k has all bits set in the bytes j
/// for which j + k divides by 3. Byte j of pair i lies at 64 i + j, so it is of channel
/// (i + j) % 3 in the first register and, 32 on, of channel (i + 2 + j) % 3 in the second.
struct PixelMasks {
    __m256i at[3];

    [[gnu::target("avx2"), gnu::always_inline]] Pair Of(int channel, int i) const {
        return {at[(i + 3 - channel) % 3], at[(i + 5 - channel) % 3]};
    }
};

[[gnu::target("avx2")]] PixelMasks MakePixelMasks() {
    PixelMasks masks;
    for (int k = 0; k < 3; ++k) {
        std::array<std::uint8_t, kRegister> bytes{};
        for (int j = 0; j < static_cast<int>(kRegister); ++j)
            bytes[j] = (j + k) % 3 == 0 ? 0xFF : 0;
        masks.at[k] = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes.data()));
    }
    return masks;
}

}  // namespace

[[gnu::target("avx2")]] void MapBytesAvx2(const PixelMap& map, std::uint8_t* bytes,
                                          std::size_t count) {
    std::size_t i = 0;
    for (; i + kPair <= count; i += kPair)
        Store(LookUp(map, Load(bytes + i)), bytes + i);
    for (; i < count; ++i)
        bytes[i] = map[bytes[i]];
}

// In three pairs on end, byte j belongs to another channel in each of them. So selections alone
// gather the samples of one channel, and selections put them back.
[[gnu::target("avx2")]] void MapPixelsAvx2(const ChannelMaps& maps, std::uint8_t* bytes,
                                           std::size_t pixelCount) {
    const PixelMasks masks = MakePixelMasks();
    std::size_t left = pixelCount;
    for (; left >= kPair; left -= kPair, bytes += 3 * kPair) {
        const Pair in[3] = {Load(bytes), Load(bytes + kPair), Load(bytes + 2 * kPair)};
        Pair mapped[3];
        for (int c = 0; c < 3; ++c) {
            const Pair first = Select(in[0], in[1], masks.Of(c, 1));
            mapped[c] = LookUp(maps[c], Select(first, in[2], masks.Of(c, 2)));
        }
        for (int i = 0; i < 3; ++i) {
            const Pair first = Select(mapped[0], mapped[1], masks.Of(1, i));
            Store(Select(first, mapped[2], masks.Of(2, i)), bytes + i * kPair);
        }
    }
    for (; left > 0; --left, bytes += 3)
        for (int c = 0; c < 3; ++c)
            bytes[c] = maps[c][bytes[c]];
}

}  // namespace velloran
#endif
