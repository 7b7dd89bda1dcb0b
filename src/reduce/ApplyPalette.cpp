#include "reduce/ApplyPalette.h"

#include <cstdlib>

#include "core/StepContext.h"
#include "reduce/NearestColor.h"

namespace velloran {

int NearestLevel(const Palette& palette, int value) {
    int best = 0, least = 65535;
    for (std::size_t i = 0; i < palette.size(); ++i) {
        const int distance = std::abs(palette[i].blue - value);
        if (distance < least) {
            least = distance;
            best = static_cast<int>(i);
        }
        if (distance == 0)
            break;
    }
    return best;
}

std::array<std::uint8_t, 256> NearestLevels(const Palette& palette) {
    std::array<std::uint8_t, 256> index;
    for (int level = 0; level < 256; ++level)
        index[static_cast<std::size_t>(level)] =
            static_cast<std::uint8_t>(NearestLevel(palette, level));
    return index;
}

int ApplyPalette(CDibImage& image, const Palette& palette) {
    if (!image.IsValid() || palette.empty())
        return 0;
    if (image.GetBpp() != 24 && !image.IncreaseBpp24())
        return 0;
    NearestColor nearest(palette);
    const CancelToken cancel = CurrentCancel();
    for (int y = 0; y < image.GetHeight() && !cancel.IsCancelled(); ++y) {
        std::uint8_t* pixel = image.GetBits(y);
        for (int x = 0; x < image.GetWidth(); ++x, pixel += 3) {
            const PaletteEntry& entry = palette[nearest(pixel[0], pixel[1], pixel[2])];
            pixel[0] = entry.blue;
            pixel[1] = entry.green;
            pixel[2] = entry.red;
        }
    }
    return 1;
}

}  // namespace velloran
