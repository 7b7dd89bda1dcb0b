#include "filters/Morphology.h"

#include <array>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/Refusal.h"
#include "imaging/BorderedCopy.h"
#include "imaging/MinMax.h"

namespace velloran {
namespace {

struct LevelWindow {
    int side, anchor, border;
};

constexpr std::array<LevelWindow, 4> kWindows = {{{2, 1, 1}, {3, 1, 1}, {4, 2, 2}, {5, 2, 2}}};
constexpr int kSmallestSide = 6;

using WindowFilter = void (*)(ConstPlaneView, Window, PlaneView);

int FilterAtLevel(CDibImage& image, int level, WindowFilter filter) {
    if (level < 1 || level > static_cast<int>(kWindows.size()) ||
        image.GetWidth() < kSmallestSide || image.GetHeight() < kSmallestSide ||
        EnsureGrayOrRgb(image) == 0)
        return 0;
    return RefuseWhenOutOfMemory([&] {
        const LevelWindow& window = kWindows[static_cast<std::size_t>(level - 1)];
        // Seen from the top, so that an even window reaches up and not down.
        const PlaneView pixels = TopDownViewOf(image);
        const BorderedCopy source(pixels, window.border);
        ConstPlaneView from = source.View();
        // The window of the first pixel begins `anchor` before it.
        const int skipped = window.border - window.anchor;
        from.first += skipped * from.stride + std::ptrdiff_t{skipped} * from.channels;
        from.width -= skipped;
        from.height -= skipped;
        filter(from, {window.side, window.side, window.anchor, window.anchor}, pixels);
        return 1;
    });
}

}  // namespace

int Darken(CDibImage& image, int level) {
    return FilterAtLevel(image, level, MinFilter);
}

int Lighten(CDibImage& image, int level) {
    return FilterAtLevel(image, level, MaxFilter);
}

}  // namespace velloran
