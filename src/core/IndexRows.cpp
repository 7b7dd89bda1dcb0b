#include "core/IndexRows.h"

#include <cstring>

namespace velloran {

void PackIndexRow(const std::uint8_t* indices, int width, int bpp, std::uint8_t* row) {
    if (bpp == 8) {
        std::memcpy(row, indices, static_cast<std::size_t>(width));
        return;
    }
    const int limit = 1 << bpp;
    PackEachIndex(width, bpp, row, [&](int x) { return indices[x] < limit ? indices[x] : 0; });
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

void PutIndex(std::uint8_t* row, int x, int bpp, int index) {
    const int perByte = 8 / bpp, mask = (1 << bpp) - 1;
    const int shift = 8 - bpp * (x % perByte + 1);
    std::uint8_t& byte = row[x / perByte];
    byte = static_cast<std::uint8_t>((byte & ~(mask << shift)) | (index & mask) << shift);
}

}  // namespace velloran
