#pragma once

// Rows of palette indices: packed as images hold them, the leftmost pixel in the highest bits, and
// one byte a pixel.

#include <cstddef>
#include <cstdint>

namespace velloran {

/// Packs one index a byte into a row of 1, 4 or 8 bits a pixel; an index that the depth cannot
/// hold becomes 0. Unused bits of the last byte become 0.
void PackIndexRow(const std::uint8_t* indices, int width, int bpp, std::uint8_t* row);

/// The reverse, for 1, 2, 4 and 8 bits.
void UnpackIndexRow(const std::uint8_t* row, int width, int bpp, std::uint8_t* indices);

/// Calls `use(x, index)` for each pixel of a row of 1, 4 or 8 bits, from the left.
template <typename Use>
void ForEachIndex(const std::uint8_t* row, int width, int bpp, Use&& use) {
    if (bpp == 8)
        for (int x = 0; x < width; ++x)
            use(x, row[x]);
    else if (bpp == 4)
        for (int x = 0; x < width; ++x)
            use(x, row[x / 2] >> (x % 2 == 0 ? 4 : 0) & 15);
    else
        for (int x = 0; x < width; ++x)
            use(x, row[x / 8] >> (7 - x % 8) & 1);
}

/// Packs the low bits of what `indexAt(x)` gives, for 1, 4 or 8 bits. Whole bytes are written, so
/// that nothing has to be cleared before; unused bits of the last byte become 0.
template <typename IndexAt>
void PackEachIndex(int width, int bpp, std::uint8_t* row, IndexAt&& indexAt) {
    const auto put = [&](int at, int bits) { row[at] = static_cast<std::uint8_t>(bits); };
    if (bpp == 8) {
        for (int x = 0; x < width; ++x)
            put(x, indexAt(x));
        return;
    }
    const int perByte = 8 / bpp, mask = (1 << bpp) - 1;
    int x = 0;
    for (; x + perByte <= width; x += perByte) {
        int packed = 0;
        for (int part = 0; part < perByte; ++part)
            packed = packed << bpp | (indexAt(x + part) & mask);
        put(x / perByte, packed);
    }
    if (x == width)
        return;
    int packed = 0;
    for (int part = 0; part < perByte; ++part)
        packed = packed << bpp | (x + part < width ? indexAt(x + part) & mask : 0);
    put(x / perByte, packed);
}

/// Puts the low bits of one index of 1, 4 or 8 bits; its neighbours stay.
void PutIndex(std::uint8_t* row, int x, int bpp, int index);

/// Bits of the last byte of a row that hold pixels, as a mask; 255 when all do.
constexpr std::uint8_t LastByteMask(std::int64_t width, int bpp) {
    const int used = static_cast<int>(width * bpp % 8);
    return static_cast<std::uint8_t>(used == 0 ? 0xFF : 0xFF00 >> used);
}

}  // namespace velloran
