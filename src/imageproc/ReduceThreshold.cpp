#include "imageproc/ReduceThreshold.h"

#include <array>
#include <stdexcept>

namespace velloran::imageproc {
namespace {

/// Every second bit of a byte, from its top, as four bits. The lowest bit never counts, so half
/// of the 256 entries do.
constexpr std::array<std::uint8_t, 128> makePressTable() {
    std::array<std::uint8_t, 128> table{};
    for (int i = 0; i < 128; ++i) {
        const int byte = i << 1;
        table[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(
            (byte >> 7 & 1) << 3 | (byte >> 5 & 1) << 2 | (byte >> 3 & 1) << 1 | (byte >> 1 & 1));
    }
    return table;
}
constexpr std::array<std::uint8_t, 128> kPress = makePressTable();

/// The 16 higher bits of all pairs of a word.
std::uint32_t press(std::uint32_t word) {
    return static_cast<std::uint32_t>(kPress[word >> 25]) << 12 |
           static_cast<std::uint32_t>(kPress[word >> 17 & 127]) << 8 |
           static_cast<std::uint32_t>(kPress[word >> 9 & 127]) << 4 | kPress[word >> 1 & 127];
}

/// The higher bit of each pair becomes black when at least `threshold` of the pair in both rows
/// are.
std::uint32_t blocksOf(std::uint32_t upper, std::uint32_t lower, int threshold) {
    const std::uint32_t either = upper | lower, both = upper & lower;
    switch (threshold) {
        case 1:
            return either | either << 1;
        case 2:
            return both | both << 1 | (either & either << 1);
        case 3:
            return (either & both << 1) | (both & either << 1);
        default:
            return both & both << 1;
    }
}

}  // namespace

ReduceThreshold& ReduceThreshold::reduce(int threshold) {
    if (threshold < 1 || threshold > 4)
        throw std::invalid_argument("ReduceThreshold: invalid threshold");
    if (image_.isNull() || (image_.width() == 1 && image_.height() == 1))
        return *this;
    if (image_.width() == 1)
        reduceColumn(threshold <= 2);
    else if (image_.height() == 1)
        reduceRow(threshold <= 2);
    else
        reduceBlocks(threshold);
    return *this;
}

void ReduceThreshold::reduceBlocks(int threshold) {
    BinaryImage half(image_.width() / 2, image_.height() / 2);
    const BinaryImage& from = image_;
    const int words = from.wordsPerLine();
    for (int y = 0; y < half.height(); ++y) {
        const std::uint32_t* upper = from.data() + static_cast<std::ptrdiff_t>(2 * y) * words;
        const std::uint32_t* lower = upper + words;
        std::uint32_t* out = half.data() + static_cast<std::ptrdiff_t>(y) * half.wordsPerLine();
        for (int w = 0; w < half.wordsPerLine(); ++w) {
            out[w] = press(blocksOf(upper[2 * w], lower[2 * w], threshold)) << 16;
            if (2 * w + 1 < words)
                out[w] |= press(blocksOf(upper[2 * w + 1], lower[2 * w + 1], threshold));
        }
    }
    image_.swap(half);
}

void ReduceThreshold::reduceColumn(bool either) {
    BinaryImage half(1, image_.height() / 2);
    const BinaryImage& from = image_;
    for (int y = 0; y < half.height(); ++y) {
        const std::uint32_t a = from.data()[2 * y], b = from.data()[2 * y + 1];
        half.data()[y] = either ? a | b : a & b;
    }
    image_.swap(half);
}

void ReduceThreshold::reduceRow(bool either) {
    BinaryImage half(image_.width() / 2, 1);
    const BinaryImage& from = image_;
    const auto pairs = [&](int w) {
        if (w >= from.wordsPerLine())
            return 0U;
        const std::uint32_t word = from.data()[w];
        return press(either ? word | word << 1 : word & word << 1);
    };
    for (int w = 0; w < half.wordsPerLine(); ++w)
        half.data()[w] = pairs(2 * w) << 16 | pairs(2 * w + 1);
    image_.swap(half);
}

}  // namespace velloran::imageproc
