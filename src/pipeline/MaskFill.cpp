#include "pipeline/MaskFill.h"

#include <algorithm>
#include <climits>

#include "core/DibImage.h"
#include "core/Rounding.h"
#include "core/Threads.h"

namespace velloran {
namespace {

constexpr int kMinSide = 10;

/// One row of the mask and its neighbours above and below, which repeat at the edge.
class MaskRows {
 public:
    MaskRows(const CDibImage& mask, int y)
        : width_(mask.GetWidth()),
          rows_{mask.GetBits(std::max(y - 1, 0)), mask.GetBits(y),
                mask.GetBits(std::min(y + 1, mask.GetHeight() - 1))} {}

    /// True when the pixel or one of its eight neighbours lies outside the page.
    bool IsOutside(int x) const {
        const int last = std::min(x + 1, width_ - 1);
        for (const std::uint8_t* row : rows_)
            for (int at = std::max(x - 1, 0); at <= last; ++at)
                if (row[at] == 0)
                    return true;
        return false;
    }

 private:
    int width_;
    const std::uint8_t* rows_[3];
};

/// Entry whose three channels together are nearest to the grey; the lowest of equals.
int NearestEntry(const CDibImage& image, int gray) {
    const PaletteEntry* entries = image.GetPalette();
    int nearest = 0, nearestDistance = INT_MAX;
    for (int i = 0; i < image.GetPaletteCount(); ++i) {
        const int blue = entries[i].blue - gray, green = entries[i].green - gray;
        const int red = entries[i].red - gray;
        const int distance = blue * blue + green * green + red * red;
        if (distance < nearestDistance) {
            nearest = i;
            nearestDistance = distance;
        }
    }
    return nearest;
}

/// Puts an index of `bits` bits, 1, 4 or 8.
void PutIndex(std::uint8_t* row, int x, int bits, int index) {
    const int perByte = 8 / bits, mask = (1 << bits) - 1;
    const int shift = 8 - bits * (x % perByte + 1);
    std::uint8_t& byte = row[x / perByte];
    byte = static_cast<std::uint8_t>((byte & ~(mask << shift)) | (index & mask) << shift);
}

}  // namespace

int FillOutsideMask(CDibImage& image, const CDibImage& mask, std::uint32_t color) {
    const int width = image.GetWidth(), height = image.GetHeight(), bits = image.GetBpp();
    if (!image.IsValid() || !mask.IsValid() || mask.GetBpp() != 8 || mask.GetWidth() != width ||
        mask.GetHeight() != height || width < kMinSide || height < kMinSide)
        return 0;
    const auto red = static_cast<std::uint8_t>(color),
               green = static_cast<std::uint8_t>(color >> 8);
    const auto blue = static_cast<std::uint8_t>(color >> 16);
    const int gray = LumaOf(blue, green, red);
    const int index = bits < 8 ? NearestEntry(image, gray) : gray;
#pragma omp parallel for schedule(static) if (IsWorthThreads(std::int64_t{width} * height))
    for (int y = 0; y < height; ++y) {
        const MaskRows around(mask, y);
        std::uint8_t* row = image.GetBits(y);
        for (int x = 0; x < width; ++x) {
            if (!around.IsOutside(x))
                continue;
            if (bits == 24) {
                row[3 * x] = blue;
                row[3 * x + 1] = green;
                row[3 * x + 2] = red;
            } else {
                PutIndex(row, x, bits, index);
            }
        }
    }
    return 1;
}

}  // namespace velloran
