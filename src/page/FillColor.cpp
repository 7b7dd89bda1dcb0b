#include "page/FillColor.h"

#include "core/DibImage.h"
#include "core/Rounding.h"
#include "core/Threads.h"

namespace velloran {

void FillWithColor(CDibImage& page, std::uint32_t color) {
    const auto red = static_cast<std::uint8_t>(color),
               green = static_cast<std::uint8_t>(color >> 8),
               blue = static_cast<std::uint8_t>(color >> 16);
    if (page.GetBpp() == 8) {
        page.Clear(LumaOf(blue, green, red));
        return;
    }
#pragma omp parallel for schedule(static) if (IsWorthThreads(ViewOf(page)))
    for (int y = 0; y < page.GetHeight(); ++y) {
        std::uint8_t* pixel = page.GetBits(y);
        for (int x = 0; x < page.GetWidth(); ++x, pixel += 3) {
            pixel[0] = blue;
            pixel[1] = green;
            pixel[2] = red;
        }
    }
}

}  // namespace velloran
