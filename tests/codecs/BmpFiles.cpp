#include "codecs/BmpFiles.h"

#include <algorithm>

namespace velloran::test {

std::string Le(std::uint32_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i)
        text += static_cast<char>(value >> 8 * i);
    return text;
}

std::string BuildBmp(const BmpParts& parts) {
    const auto width = static_cast<std::uint32_t>(parts.width);
    const auto height = static_cast<std::uint32_t>(parts.height);
    const auto bits = static_cast<std::uint32_t>(parts.bits);
    std::string head = Le(parts.headSize, 4);
    if (parts.headSize == 12) {
        head += Le(width, 2) + Le(height, 2) + Le(1, 2) + Le(bits, 2);
    } else {
        head += Le(width, 4) + Le(height, 4) + Le(1, 2) + Le(bits, 2) + Le(parts.compression, 4) +
                Le(0, 4) + Le(static_cast<std::uint32_t>(parts.xPerMeter), 4) +
                Le(static_cast<std::uint32_t>(parts.yPerMeter), 4) + Le(parts.colorsUsed, 4) +
                Le(0, 4);
        if (parts.headSize < 40)
            head.resize(parts.headSize);
    }
    for (const std::uint32_t mask : parts.masks)
        head += Le(mask, 4);
    head.resize(std::max<std::size_t>(head.size(), parts.headSize), '\0');
    for (const Rgb& entry : parts.palette) {
        head += Le(static_cast<std::uint32_t>(entry.blue | entry.green << 8 | entry.red << 16), 3);
        if (parts.headSize != 12)
            head += '\x5A';  // reserved, and often garbage
    }
    const auto offset = static_cast<std::uint32_t>(14 + head.size());
    return "BM" + Le(static_cast<std::uint32_t>(offset + parts.pixels.size()), 4) + Le(0, 4) +
           Le(parts.pixelOffset.value_or(offset), 4) + head + parts.pixels;
}

}  // namespace velloran::test
