#if defined(__x86_64__)

#include <immintrin.h>

#include "tone/PixelMapKernels.h"

// One permute looks up 7 bits in two registers of 64 entries each; two of them and a selection by
// the top bit are a whole look-up.

namespace velloran {
namespace {

constexpr std::size_t kRegister = 64;  // bytes

struct Table {
    __m512i piece[4];
};

[[gnu::target("avx512bw,avx512vbmi"), gnu::always_inline]] inline Table LoadTable(
    const PixelMap& map) {
    Table table;
    for (int k = 0; k < 4; ++k)
        table.piece[k] = _mm512_loadu_si512(map.data() + kRegister * k);
    return table;
}

[[gnu::target("avx512bw,avx512vbmi"), gnu::always_inline]] inline __m512i LookUp(const Table& table,
                                                                                 __m512i samples) {
    const __m512i dark = _mm512_permutex2var_epi8(table.piece[0], samples, table.piece[1]);
    const __m512i light = _mm512_permutex2var_epi8(table.piece[2], samples, table.piece[3]);
    return _mm512_mask_blend_epi8(_mm512_movepi8_mask(samples), dark, light);
}

/// Bit j is set where j + k divides by 3.
constexpr __mmask64 EveryThirdByte(int k) {
    __mmask64 mask = 0;
    for (int j = 0; j < 64; ++j)
        mask |= static_cast<__mmask64>((j + k) % 3 == 0 ? 1 : 0) << j;
    return mask;
}

/// Byte j of register i of a run of whole pixels lies at 64 i + j: it is of channel (i + j) % 3.
constexpr __mmask64 kBytesOf[3] = {EveryThirdByte(0), EveryThirdByte(1), EveryThirdByte(2)};

constexpr __mmask64 BytesOfChannel(int channel, int i) {
    return kBytesOf[(i + 3 - channel) % 3];
}

}  // namespace

[[gnu::target("avx512bw,avx512vbmi")]] void MapBytesAvx512(const PixelMap& map, std::uint8_t* bytes,
                                                           std::size_t count) {
    const Table table = LoadTable(map);
    std::size_t i = 0;
    for (; i + kRegister <= count; i += kRegister)
        _mm512_storeu_si512(bytes + i, LookUp(table, _mm512_loadu_si512(bytes + i)));
    if (i < count) {
        const __mmask64 rest = (__mmask64{1} << (count - i)) - 1;
        const __m512i samples = _mm512_maskz_loadu_epi8(rest, bytes + i);
        _mm512_mask_storeu_epi8(bytes + i, rest, LookUp(table, samples));
    }
}

// In three registers on end, byte j belongs to another channel in each of them. So selections alone
// gather the samples of one channel, and selections put them back.
[[gnu::target("avx512bw,avx512vbmi")]] void MapPixelsAvx512(const ChannelMaps& maps,
                                                            std::uint8_t* bytes,
                                                            std::size_t pixelCount) {
    const Table tables[3] = {LoadTable(maps[0]), LoadTable(maps[1]), LoadTable(maps[2])};
    std::size_t left = pixelCount;
    for (; left >= kRegister; left -= kRegister, bytes += 3 * kRegister) {
        __m512i in[3], mapped[3];
        for (int i = 0; i < 3; ++i)
            in[i] = _mm512_loadu_si512(bytes + kRegister * i);
        for (int c = 0; c < 3; ++c) {
            const __m512i first = _mm512_mask_blend_epi8(BytesOfChannel(c, 1), in[0], in[1]);
            mapped[c] =
                LookUp(tables[c], _mm512_mask_blend_epi8(BytesOfChannel(c, 2), first, in[2]));
        }
        for (int i = 0; i < 3; ++i) {
            const __m512i first =
                _mm512_mask_blend_epi8(BytesOfChannel(1, i), mapped[0], mapped[1]);
            _mm512_storeu_si512(bytes + kRegister * i,
                                _mm512_mask_blend_epi8(BytesOfChannel(2, i), first, mapped[2]));
        }
    }
    for (; left > 0; --left, bytes += 3)
        for (int c = 0; c < 3; ++c)
            bytes[c] = maps[c][bytes[c]];
}

}  // namespace velloran
#endif
