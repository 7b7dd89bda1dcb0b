#pragma once

// Rows of samples as rows of bits and back: the highest bit of a byte or word is leftmost.

#include <bit>
#include <cstdint>
#include <cstring>

namespace velloran {

/// Bit 0 of each of eight bytes as eight bits, the first byte highest; the other bits of the bytes
/// are 0.
inline std::uint8_t GatherBits(std::uint64_t bytes) {
    // Byte i is moved by 63 - 9 i, so that no two of the products meet.
    return static_cast<std::uint8_t>(bytes * 0x8040201008040201U >> 56);
}

/// Eight samples with the first one lowest.
inline std::uint64_t LoadEight(const std::uint8_t* samples) {
    std::uint64_t eight;
    std::memcpy(&eight, samples, 8);
    return std::endian::native == std::endian::little ? eight : __builtin_bswap64(eight);
}

/// Of eight samples a bit each that is 1 for the sample 0.
inline std::uint8_t BlackOfEight(const std::uint8_t* samples) {
    constexpr std::uint64_t kLow = 0x7F7F7F7F7F7F7F7FU;
    const std::uint64_t eight = LoadEight(samples);
    const std::uint64_t notZero = ((eight & kLow) + kLow) | eight;  // its high bits
    return GatherBits(~notZero >> 7 & 0x0101010101010101U);
}

/// Of eight samples a bit each that is 1 from 128 on.
inline std::uint8_t LightOfEight(const std::uint8_t* samples) {
    return GatherBits(LoadEight(samples) >> 7 & 0x0101010101010101U);
}

/// Black, the sample 0, is 1. Bits behind the last sample become 0; `words` holds
/// (width + 31) / 32.
inline void BlackBits(const std::uint8_t* samples, int width, std::uint32_t* words) {
    int x = 0;
    for (; x + 32 <= width; x += 32) {
        std::uint32_t word = 0;
        for (int byte = 0; byte < 4; ++byte)
            word = word << 8 | BlackOfEight(samples + x + 8 * byte);
        words[x / 32] = word;
    }
    if (x == width)
        return;
    std::uint32_t word = 0;
    for (int bit = x; bit < width; ++bit)
        word |= (samples[bit] == 0 ? 0x80000000U : 0U) >> (bit - x);
    words[x / 32] = word;
}

/// Samples whose bit differs from that of `before` become 0 or 255; others stay.
inline void WriteBlackBits(const std::uint32_t* words, const std::uint32_t* before, int width,
                           std::uint8_t* samples) {
    for (int x = 0; x < width; x += 32) {
        const std::uint32_t word = words[x / 32];
        for (std::uint32_t rest = word ^ before[x / 32]; rest != 0; rest &= rest - 1) {
            const int bit = std::countr_zero(rest);
            samples[x + 31 - bit] = (word >> bit & 1) != 0 ? 0 : 255;
        }
    }
}

}  // namespace velloran
