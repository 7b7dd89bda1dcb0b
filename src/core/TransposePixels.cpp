#include "core/TransposePixels.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cstring>

#include "core/Threads.h"

namespace velloran {
namespace {

// A band of source columns becomes a band of target rows, which one thread writes alone. Within it
// square tiles keep the touched lines of both pictures in the nearest cache.
constexpr int kBand = 64;

struct Target {
    std::uint8_t* first;
    std::ptrdiff_t stride;
    std::uint8_t* Row(int y) const { return first + y * stride; }
};

const std::uint8_t* RowOf(const PackedRows& rows, int y) {
    return rows.first + y * rows.stride;
}

/// Exchanges the `Bits`-wide parts of two words that lie across the diagonal of a block.
template <int Bits>
void ExchangeParts(std::uint64_t& upper, std::uint64_t& lower) {
    constexpr std::uint64_t kMask = Bits == 32   ? 0x00000000FFFFFFFFu
                                    : Bits == 16 ? 0x0000FFFF0000FFFFu
                                                 : 0x00FF00FF00FF00FFu;
    const std::uint64_t moved = (upper >> Bits ^ lower) & kMask;
    lower ^= moved;
    upper ^= moved << Bits;
}

/// 8 x 8 bytes in eight words (Knuth, The Art of Computer Programming 4A, 7.1.3: delta swaps).
void TransposeBlock8(const std::uint8_t* source, std::ptrdiff_t stride, std::uint8_t* target,
                     std::ptrdiff_t targetStride) {
    std::array<std::uint64_t, 8> rows;
    for (int i = 0; i < 8; ++i)
        std::memcpy(&rows[i], source + i * stride, 8);
    for (int i = 0; i < 4; ++i)
        ExchangeParts<32>(rows[i], rows[i + 4]);
    for (const int i : {0, 1, 4, 5})
        ExchangeParts<16>(rows[i], rows[i + 2]);
    for (const int i : {0, 2, 4, 6})
        ExchangeParts<8>(rows[i], rows[i + 1]);
    for (int i = 0; i < 8; ++i)
        std::memcpy(target + i * targetStride, &rows[i], 8);
}

template <int Bytes>
void TransposePixelByPixel(const PackedRows& source, Target target, int x0, int x1, int y0,
                           int y1) {
    for (int x = x0; x < x1; ++x) {
        std::uint8_t* to = target.Row(x) + y0 * Bytes;
        const std::uint8_t* from = RowOf(source, y0) + x * Bytes;
        for (int y = y0; y < y1; ++y, to += Bytes, from += source.stride)
            std::memcpy(to, from, Bytes);
    }
}

void TransposeTile8(const PackedRows& source, Target target, int x0, int x1, int y0, int y1) {
    int y = y0;
    if constexpr (std::endian::native == std::endian::little)
        for (; y + 8 <= y1; y += 8) {
            int x = x0;
            for (; x + 8 <= x1; x += 8)
                TransposeBlock8(RowOf(source, y) + x, source.stride, target.Row(x) + y,
                                target.stride);
            TransposePixelByPixel<1>(source, target, x, x1, y, y + 8);
        }
    TransposePixelByPixel<1>(source, target, x0, x1, y, y1);
}

void TransposeTile24(const PackedRows& source, Target target, int x0, int x1, int y0, int y1) {
    TransposePixelByPixel<3>(source, target, x0, x1, y0, y1);
}

/// x0 and y0 are even: source bytes and target bytes both hold two pixels.
void TransposeTile4(const PackedRows& source, Target target, int x0, int x1, int y0, int y1) {
    for (int y = y0; y < y1; y += 2)
        for (int x = x0; x < x1; x += 2) {
            const int upper = RowOf(source, y)[x / 2];
            const int lower = y + 1 < y1 ? RowOf(source, y + 1)[x / 2] : 0;
            target.Row(x)[y / 2] = static_cast<std::uint8_t>((upper & 0xF0) | lower >> 4);
            if (x + 1 < x1)
                target.Row(x + 1)[y / 2] =
                    static_cast<std::uint8_t>((upper & 15) << 4 | (lower & 15));
        }
}

/// An 8 x 8 bit matrix, first row in the highest byte (Warren, Hacker's Delight, 7-3).
std::uint64_t TransposeBits8(std::uint64_t x) {
    std::uint64_t t = (x ^ (x >> 7)) & 0x00AA00AA00AA00AAu;
    x ^= t ^ (t << 7);
    t = (x ^ (x >> 14)) & 0x0000CCCC0000CCCCu;
    x ^= t ^ (t << 14);
    t = (x ^ (x >> 28)) & 0x00000000F0F0F0F0u;
    return x ^ t ^ (t << 28);
}

/// x0 and y0 are multiples of 8.
void TransposeTile1(const PackedRows& source, Target target, int x0, int x1, int y0, int y1) {
    for (int y = y0; y < y1; y += 8)
        for (int x = x0; x < x1; x += 8) {
            std::uint64_t bits = 0;
            for (int i = 0; i < 8; ++i)
                bits = bits << 8 | (y + i < y1 ? RowOf(source, y + i)[x / 8] : 0u);
            bits = TransposeBits8(bits);
            for (int i = 0; i < 8 && x + i < x1; ++i)
                target.Row(x + i)[y / 8] = static_cast<std::uint8_t>(bits >> (56 - 8 * i));
        }
}

using TransposeTile = void (*)(const PackedRows&, Target, int, int, int, int);

TransposeTile TileKernel(int bpp) {
    switch (bpp) {
        case 1:
            return TransposeTile1;
        case 4:
            return TransposeTile4;
        case 8:
            return TransposeTile8;
        default:
            assert(bpp == 24);
            return TransposeTile24;
    }
}

}  // namespace

void TransposePixels(const PackedRows& source, int bpp, std::uint8_t* target,
                     std::ptrdiff_t targetStride) {
    const TransposeTile transpose = TileKernel(bpp);
    const Target rows{target, targetStride};
    const int bands = (source.width + kBand - 1) / kBand;
    [[maybe_unused]] const std::int64_t pixels = std::int64_t{source.width} * source.height;
#pragma omp parallel for schedule(static) if (IsWorthThreads(pixels))
    for (int band = 0; band < bands; ++band) {
        const int x0 = band * kBand, x1 = std::min(x0 + kBand, source.width);
        for (int y0 = 0; y0 < source.height; y0 += kBand)
            transpose(source, rows, x0, x1, y0, std::min(y0 + kBand, source.height));
    }
}

}  // namespace velloran
