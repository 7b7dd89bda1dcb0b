#include <algorithm>
#include <array>
#include <cstring>

#include "core/Threads.h"
#include "reduce/ApplyPalette.h"
#include "reduce/NearestColor.h"
#include "reduce/PackTarget.h"

namespace velloran {
namespace {

/// Packs the indices that `indexAt(x)` gives into a row.
template <typename IndexAt>
void PackRow(std::uint8_t* row, int width, int bits, IndexAt&& indexAt) {
    switch (bits) {
        case 1:
            for (int x = 0; x < width; ++x)
                row[x / 8] =
                    static_cast<std::uint8_t>(row[x / 8] | (indexAt(x) & 1) << (7 - x % 8));
            break;
        case 4:
            for (int x = 0; x < width; ++x)
                row[x / 2] = static_cast<std::uint8_t>(row[x / 2] | (indexAt(x) & 15)
                                                                        << (x % 2 == 0 ? 4 : 0));
            break;
        default:
            for (int x = 0; x < width; ++x)
                row[x] = static_cast<std::uint8_t>(indexAt(x));
    }
}

}  // namespace

CDibImage MakePackTarget(const CDibImage& image, int bits, const Palette& palette) {
    CDibImage target;
    if (bits != 1 && bits != 4 && bits != 8)
        return target;
    if (target.Create(image.GetWidth(), image.GetHeight(), bits) == nullptr)
        return target;
    const std::size_t count =
        std::min(palette.size(), static_cast<std::size_t>(target.GetPaletteCount()));
    std::copy_n(palette.begin(), count, target.GetPalette());
    target.Clear(0);
    return target;
}

void PackIndicesInto(const CDibImage& indices, CDibImage& target) {
    const ConstPlaneView source = ViewOf(indices);
    const int bits = target.GetBpp();
#pragma omp parallel for schedule(static) if (IsWorthThreads(source))
    for (int y = 0; y < source.height; ++y) {
        const std::uint8_t* from = source.Row(y).data();
        PackRow(target.GetBits(y), source.width, bits,
                [&](int x) { return from[x * source.channels]; });
    }
}

bool PackIndices(CDibImage& image, int bits, const Palette& palette) {
    if (ViewOf(image).height == 0)
        return false;
    CDibImage target = MakePackTarget(image, bits, palette);
    if (!target.IsValid())
        return false;
    PackIndicesInto(image, target);
    return image.TakePixels(target);
}

bool PackLevels(CDibImage& image, int bits, const Palette& palette,
                const std::array<std::uint8_t, 256>& indexOfLevel) {
    const ConstPlaneView source = ViewOf(static_cast<const CDibImage&>(image));
    if (source.height == 0 || source.channels != 1)
        return false;
    CDibImage target = MakePackTarget(image, bits, palette);
    if (!target.IsValid())
        return false;
#pragma omp parallel for schedule(static) if (IsWorthThreads(source))
    for (int y = 0; y < source.height; ++y) {
        const std::uint8_t* from = source.Row(y).data();
        PackRow(target.GetBits(y), source.width, bits,
                [&](int x) { return indexOfLevel[from[x]]; });
    }
    return image.TakePixels(target);
}

bool PackNearest(CDibImage& image, int bits, const Palette& palette) {
    const ConstPlaneView source = ViewOf(static_cast<const CDibImage&>(image));
    if (source.height == 0 || palette.empty())
        return false;
    if (source.channels == 1)
        return PackLevels(image, bits, palette, NearestLevels(palette));
    CDibImage target = MakePackTarget(image, bits, palette);
    if (!target.IsValid())
        return false;
    NearestColor nearest(palette);
    for (int y = 0; y < source.height; ++y) {
        const std::uint8_t* from = source.Row(y).data();
        PackRow(target.GetBits(y), source.width, bits,
                [&](int x) { return nearest(from[3 * x], from[3 * x + 1], from[3 * x + 2]); });
    }
    return image.TakePixels(target);
}

}  // namespace velloran
