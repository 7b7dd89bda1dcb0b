#include <array>

#include "core/Refusal.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "reduce/ApplyPalette.h"
#include "reduce/DiffuseErrors.h"
#include "reduce/NearestColor.h"

namespace velloran {
namespace {

/// Walks the rows as they are stored and hands each pixel's diffused levels to `replace`, which
/// writes the pixel and returns the levels that were kept.
template <typename Replace>
int DiffuseRows(CDibImage& image, Replace&& replace) {
    return RefuseWhenOutOfMemory([&] {
        ErrorRows rows(image.GetWidth(), 3);
        const int height = image.GetHeight();
        rows.LoadCurrent(image.GetBits(0));
        if (height > 1)
            rows.LoadNext(image.GetBits(1));
        const CancelToken cancel = CurrentCancel();
        for (int y = 0; y < height && !cancel.IsCancelled(); ++y) {
            std::uint8_t* pixel = image.GetBits(y);
            for (int x = 0; x < image.GetWidth(); ++x, pixel += 3) {
                std::array<std::int32_t, 3> level;
                for (std::size_t c = 0; c < 3; ++c)
                    level[c] = DiffusedLevel(rows.Current()[3 * x + static_cast<int>(c)]);
                const std::array<std::int32_t, 3> kept = replace(level, pixel);
                for (std::size_t c = 0; c < 3; ++c)
                    rows.Spread(3 * std::ptrdiff_t{x} + static_cast<int>(c), level[c] - kept[c]);
            }
            rows.Swap();
            if (y + 2 < height)
                rows.LoadNext(image.GetBits(y + 2));
        }
        return 1;
    });
}

}  // namespace

int DiffusePalette(CDibImage& image, const Palette& palette, bool keepDepth) {
    if (!image.IsValid() || image.GetBpp() != 24 || palette.empty())
        return 0;
    if (image.GetHeight() < 2)
        return 1;
    NearestColor nearest(palette);
    return DiffuseRows(image, [&](const std::array<std::int32_t, 3>& level, std::uint8_t* pixel) {
        const std::uint8_t index =
            nearest(static_cast<std::uint8_t>(level[0]), static_cast<std::uint8_t>(level[1]),
                    static_cast<std::uint8_t>(level[2]));
        const PaletteEntry& entry = palette[index];
        pixel[0] = keepDepth ? entry.blue : index;
        pixel[1] = keepDepth ? entry.green : index;
        pixel[2] = keepDepth ? entry.red : index;
        return std::array<std::int32_t, 3>{entry.blue, entry.green, entry.red};
    });
}

int Reduce16(CDibImage& image, bool dither, bool is565) {
    if (!image.IsValid() || image.GetBpp() != 24)
        return 0;
    const std::array<std::uint8_t, 3> mask{0xF8, static_cast<std::uint8_t>(is565 ? 0xFC : 0xF8),
                                           0xF8};
    if (dither)
        return DiffuseRows(image,
                           [&](const std::array<std::int32_t, 3>& level, std::uint8_t* pixel) {
                               std::array<std::int32_t, 3> kept;
                               for (std::size_t c = 0; c < 3; ++c) {
                                   kept[c] = level[c] & mask[c];
                                   pixel[c] = static_cast<std::uint8_t>(kept[c]);
                               }
                               return kept;
                           });
#pragma omp parallel for schedule(static) if (IsWorthThreads(ViewOf(image)))
    for (int y = 0; y < image.GetHeight(); ++y) {
        std::uint8_t* pixel = image.GetBits(y);
        for (int x = 0; x < image.GetWidth(); ++x, pixel += 3)
            for (std::size_t c = 0; c < 3; ++c)
                pixel[c] &= mask[c];
    }
    return 1;
}

}  // namespace velloran
