#include "codecs/IndexRows.h"

#include <cstring>

namespace velloran {

void PackIndexRow(const std::uint8_t* indices, int width, int bpp, std::uint8_t* row) {
    if (bpp == 8) {
        std::memcpy(row, indices, static_cast<std::size_t>(width));
        return;
    }
    const int perByte = 8 / bpp;
    const int limit = 1 << bpp;
    for (int x = 0; x < width; ++row) {
        unsigned packed = 0;
        for (int part = 0; part < perByte; ++part, ++x) {
            const unsigned index = x < width && indices[x] < limit ? indices[x] : 0;
            packed = packed << bpp | index;
        }
        *row = static_cast<std::uint8_t>(packed);
    }
}

void UnpackIndexRow(const std::uint8_t* row, int width, int bpp, std::uint8_t* indices) {
    if (bpp == 8) {
        std::memcpy(indices, row, static_cast<std::size_t>(width));
        return;
    }
    const int perByte = 8 / bpp;
    const unsigned mask = (1u << bpp) - 1;
    for (int x = 0; x < width; ++x) {
        const int shift = 8 - bpp - x % perByte * bpp;
        indices[x] = static_cast<std::uint8_t>(row[x / perByte] >> shift & mask);
    }
}

}  // namespace velloran
