#include <cstdint>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/Refusal.h"
#include "core/Rounding.h"
#include "tone/AutoLevelsCount.h"
#include "tone/PixelMapRows.h"
#include "tone/Vibrance.h"

namespace velloran {

int HistEqualize(CDibImage& image) {
    if (!image.IsValid())
        return 0;
    if (image.IsBW())
        return 1;
    if (EnsureGrayOrRgb(image) == 0)
        return 0;
    return RefuseWhenOutOfMemory([&] {
        const PlaneView pixels = ViewOf(image);
        const Histogram counts = CountBytes(pixels);
        const double total = static_cast<double>(pixels.width) * pixels.height * pixels.channels;
        PixelMap map;
        std::uint64_t sum = 0;
        for (std::size_t level = 0; level < map.size(); ++level) {
            sum += counts[level];
            map[level] = ClampToByte(TruncToInt(static_cast<double>(sum) / total * 255.0));
        }
        MapRows(map, pixels);
        return 1;
    });
}

}  // namespace velloran
