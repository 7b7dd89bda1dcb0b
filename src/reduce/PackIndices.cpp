#include <algorithm>
#include <array>
#include <cstring>

#include "core/IndexRows.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "reduce/ApplyPalette.h"
#include "reduce/NearestColor.h"
#include "reduce/PackTarget.h"

namespace velloran {
CDibImage MakePackTarget(const CDibImage& image, int bits, const Palette& palette) {
    CDibImage target;
    if (bits != 1 && bits != 4 && bits != 8)
        return target;
    if (target.Create(image.GetWidth(), image.GetHeight(), bits) == nullptr)
        return target;
    const std::size_t count =
        std::min(palette.size(), static_cast<std::size_t>(target.GetPaletteCount()));
    std::copy_n(palette.begin(), count, target.GetPalette());
    return target;
}

void PackIndicesInto(const CDibImage& indices, CDibImage& target) {
    const ConstPlaneView source = ViewOf(indices);
    const int bits = target.GetBpp();
#pragma omp parallel for schedule(static) if (IsWorthThreads(source))
    for (int y = 0; y < source.height; ++y) {
        const std::uint8_t* from = source.Row(y).data();
        PackEachIndex(source.width, bits, target.GetBits(y),
                      [&](int x) { return from[x * source.channels]; });
    }
}

int PackIndices(CDibImage& image, int bits, const Palette& palette) {
    if (ViewOf(image).height == 0)
        return 0;
    CDibImage target = MakePackTarget(image, bits, palette);
    if (!target.IsValid())
        return 0;
    PackIndicesInto(image, target);
    return image.TakePixels(target) ? 1 : 0;
}

int PackLevels(CDibImage& image, int bits, const Palette& palette,
               const std::array<std::uint8_t, 256>& indexOfLevel) {
    const ConstPlaneView source = ViewOf(static_cast<const CDibImage&>(image));
    if (source.height == 0 || source.channels != 1)
        return 0;
    CDibImage target = MakePackTarget(image, bits, palette);
    if (!target.IsValid())
        return 0;
#pragma omp parallel for schedule(static) if (IsWorthThreads(source))
    for (int y = 0; y < source.height; ++y) {
        const std::uint8_t* from = source.Row(y).data();
        PackEachIndex(source.width, bits, target.GetBits(y),
                      [&](int x) { return indexOfLevel[from[x]]; });
    }
    return image.TakePixels(target) ? 1 : 0;
}

int PackNearest(CDibImage& image, int bits, const Palette& palette) {
    const ConstPlaneView source = ViewOf(static_cast<const CDibImage&>(image));
    if (source.height == 0 || palette.empty())
        return 0;
    if (source.channels == 1)
        return PackLevels(image, bits, palette, NearestLevels(palette));
    CDibImage target = MakePackTarget(image, bits, palette);
    if (!target.IsValid())
        return 0;
    NearestColor nearest(palette);
    const CancelToken cancel = CurrentCancel();
    for (int y = 0; y < source.height && !cancel.IsCancelled(); ++y) {
        const std::uint8_t* from = source.Row(y).data();
        PackEachIndex(source.width, bits, target.GetBits(y), [&](int x) {
            return nearest(from[3 * x], from[3 * x + 1], from[3 * x + 2]);
        });
    }
    return image.TakePixels(target) ? 1 : 0;
}

}  // namespace velloran
