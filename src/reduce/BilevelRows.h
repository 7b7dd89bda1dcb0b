#pragma once

// Rows of samples as rows of bits and back: 1 is black, the highest bit of a word is leftmost.

#include <cstdint>

namespace velloran {

/// Black is the sample 0. Bits behind the last sample become 0; `words` holds (width + 31) / 32.
inline void BlackBits(const std::uint8_t* samples, int width, std::uint32_t* words) {
    int x = 0;
    for (; x + 32 <= width; x += 32) {
        std::uint32_t word = 0;
        for (int bit = 0; bit < 32; ++bit)
            word = word << 1 | (samples[x + bit] == 0 ? 1U : 0U);
        words[x / 32] = word;
    }
    if (x == width)
        return;
    std::uint32_t word = 0;
    for (int bit = x; bit < width; ++bit)
        word |= (samples[bit] == 0 ? 0x80000000U : 0U) >> (bit - x);
    words[x / 32] = word;
}

/// Samples whose blackness differs from the bit become 0 or 255; others stay.
inline void WriteBlackBits(const std::uint32_t* words, int width, std::uint8_t* samples) {
    for (int x = 0; x < width; ++x) {
        const bool black = (words[x / 32] >> (31 - x % 32) & 1) != 0;
        if (black != (samples[x] == 0))
            samples[x] = black ? 0 : 255;
    }
}

}  // namespace velloran
