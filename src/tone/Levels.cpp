#include "tone/Levels.h"

#include <algorithm>

#include "core/DibImage.h"
#include "core/Rounding.h"
#include "tone/PixelMapRows.h"

namespace velloran {
namespace {

enum PointByte : int { kRed = 0, kGreen = 1, kBlue = 2, kMaster = 3 };

constexpr std::uint32_t kNeutralLight = 0xFFFFFFFF;

PixelMap TableOf(std::uint32_t shadow, std::uint32_t light, PointByte which) {
    const int shift = 8 * which;
    return LevelTable(static_cast<int>(shadow >> shift & 255),
                      static_cast<int>(light >> shift & 255));
}

int ApplyMaster(CDibImage& image, std::uint32_t shadow, std::uint32_t light) {
    const std::uint32_t low = shadow >> 24, high = light >> 24;
    if (low == high || (low == 0 && high == 255))
        return 0;
    MapRows(TableOf(shadow, light, kMaster), ViewOf(image));
    return 1;
}

}  // namespace

PixelMap LevelTable(int shadow, int light) {
    if (shadow == light || (shadow == 0 && light >= 255))
        return IdentityPixelMap();
    const int low = std::min(shadow, light), high = std::max(shadow, light);
    PixelMap table;
    for (int i = 0; i < 256; ++i) {
        const double stretched = (i - low) / static_cast<double>(high - low) * 255.0;
        table[static_cast<std::size_t>(i)] =
            i <= low ? 0 : (i >= high ? 255 : ClampToByte(RoundHalf(stretched)));
    }
    return table;
}

int ApplyLevels(CDibImage& image, std::uint32_t shadow, std::uint32_t light) {
    if (!image.IsValid() || (shadow == 0 && light == kNeutralLight) || shadow == light ||
        image.GetWidth() < 2 || image.GetHeight() < 2)
        return 0;
    if (image.GetBpp() == 8)
        return ApplyMaster(image, shadow, light);
    if (image.GetBpp() != 24)
        return 0;
    const PixelMap master = TableOf(shadow, light, kMaster);
    MapChannelRows({Compose(TableOf(shadow, light, kBlue), master),
                    Compose(TableOf(shadow, light, kGreen), master),
                    Compose(TableOf(shadow, light, kRed), master)},
                   ViewOf(image));
    return 1;
}

int LevelsPoint(const std::array<std::uint32_t, 256>& histogram, double percent, bool fromLow) {
    const auto massOf = [&](int level) {
        return static_cast<std::uint32_t>(level) * histogram[static_cast<std::size_t>(level)];
    };
    std::uint32_t total = 0;  // wraps as the counters do
    for (int level = 0; level < 256; ++level)
        total += massOf(level);
    std::uint32_t mass = 0;
    for (int i = 0; i < 256; ++i) {
        const int level = fromLow ? i : 255 - i;
        mass += massOf(level);
        if (static_cast<float>(mass) / static_cast<float>(total) >= percent / 100.0)
            return level;
    }
    return fromLow ? 256 : static_cast<int>(mass & ~255U);
}

}  // namespace velloran
