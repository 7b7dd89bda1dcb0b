#include "filters/Morphology.h"

#include <array>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/Refusal.h"
#include "imaging/MinMax.h"

namespace velloran {
namespace {

/// By level; the same both ways.
struct LevelWindow {
    int side, anchor;
};

constexpr std::array<LevelWindow, 4> kWindows = {{{2, 1}, {3, 1}, {4, 2}, {5, 2}}};
constexpr int kSmallestSide = 6;

using WindowFilter = void (*)(ConstPlaneView, Window, PlaneView);

int FilterAtLevel(CDibImage& image, int level, WindowFilter filter) {
    if (level < 1 || level > static_cast<int>(kWindows.size()) ||
        image.GetWidth() < kSmallestSide || image.GetHeight() < kSmallestSide ||
        EnsureGrayOrRgb(image) == 0)
        return 0;
    return RefuseWhenOutOfMemory([&] {
        const LevelWindow& window = kWindows[static_cast<std::size_t>(level - 1)];
        CDibImage filtered;
        if (filtered.Create(image.GetWidth(), image.GetHeight(), image.GetBpp()) == nullptr)
            return 0;
        filtered.SetGrayPalette();
        // Seen from the top, so that an even window reaches up and not down.
        filter(TopDownViewOf(image), {window.side, window.side, window.anchor, window.anchor},
               TopDownViewOf(filtered));
        return image.TakePixels(filtered) ? 1 : 0;
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
