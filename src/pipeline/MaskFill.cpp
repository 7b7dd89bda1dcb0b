#include "pipeline/MaskFill.h"

#include <algorithm>

#include "core/DibImage.h"
#include "core/IndexRows.h"
#include "core/PaletteSearch.h"
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

}  // namespace

int FillOutsideMask(CDibImage& image, const CDibImage& mask, std::uint32_t color) {
    const int width = image.GetWidth(), height = image.GetHeight(), bits = image.GetBpp();
    if (!image.IsValid() || !mask.IsValid() || mask.GetBpp() != 8 || mask.GetWidth() != width ||
        mask.GetHeight() != height || width < kMinSide || height < kMinSide)
        return 0;
    const auto red = static_cast<std::uint8_t>(color),
               green = static_cast<std::uint8_t>(color >> 8);
    const auto blue = static_cast<std::uint8_t>(color >> 16);
    const std::uint8_t gray = LumaOf(blue, green, red);
    const PaletteEntry grayEntry{gray, gray, gray, 0};
    const int index = bits < 8 ? NearestIndex(PaletteOf(image), grayEntry) : gray;
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
