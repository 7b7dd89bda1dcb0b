#include "page/DarkLevel.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>

#include "core/DibImage.h"
#include "core/IndexRows.h"
#include "core/Rounding.h"

namespace velloran {
namespace {

using Counts = std::array<std::int64_t, 256>;

void CountRow(const CDibImage& image, int y, Counts& counts) {
    const std::uint8_t* row = image.GetBits(y);
    const int width = image.GetWidth(), bits = image.GetBpp();
    switch (bits) {
        case 24:
            for (int x = 0; x < width; ++x, row += 3)
                ++counts[LumaOf(row[0], row[1], row[2])];
            break;
        case 8:
            for (int x = 0; x < width; ++x)
                ++counts[row[x]];
            break;
        default:
            ForEachIndex(row, width, bits,
                         [&](int, int index) { ++counts[static_cast<std::size_t>(index)]; });
            break;
    }
}

/// Counts of indices become counts of the greys that they stand for.
Counts ThroughPalette(const CDibImage& image, const Counts& byIndex) {
    Counts counts{};
    for (int i = 0; i < image.GetPaletteCount() && i < 256; ++i) {
        const PaletteEntry& entry = image.GetPalette()[i];
        counts[LumaOf(entry.blue, entry.green, entry.red)] += byIndex[static_cast<std::size_t>(i)];
    }
    return counts;
}

Counts CountGrays(const CDibImage& image) {
    Counts counts{};
    for (int y = 0; y < image.GetHeight(); ++y)
        CountRow(image, y, counts);
    return image.GetPalette() != nullptr ? ThroughPalette(image, counts) : counts;
}

/// The level at which a walk from `level` in steps of `step` stops.
int ClipLevel(const Counts& counts, std::int64_t wanted, int level, int step) {
    std::int64_t sum = counts[static_cast<std::size_t>(level)];
    for (int next = level + step; next >= 0 && next < 256; next += step) {
        const std::int64_t further = sum + counts[static_cast<std::size_t>(next)];
        if (std::abs(sum - wanted) < std::abs(further - wanted))
            break;
        sum = further;
        level = next;
    }
    return level;
}

}  // namespace

int findDarkLevel(const CDibImage& image) {
    if (!image.IsValid())
        return 0;
    const Counts counts = CountGrays(image);
    std::int64_t total = 0;
    for (const std::int64_t count : counts)
        total += count;
    const std::int64_t wanted = RoundHalf(static_cast<double>(total) * 0.001);
    return std::min(ClipLevel(counts, wanted, 0, 1), ClipLevel(counts, wanted, 255, -1));
}

}  // namespace velloran
