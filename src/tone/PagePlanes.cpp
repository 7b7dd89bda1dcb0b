#include "tone/PagePlanes.h"

#include <array>
#include <cstddef>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/PixelMemory.h"
#include "core/Refusal.h"
#include "imaging/Planes.h"

namespace velloran {
namespace {

constexpr int kSmallestSide = 8;

}  // namespace

int PreparePagePlanes(CDibImage& image, bool keepColor) {
    if (!image.IsValid() || image.GetWidth() < kSmallestSide || image.GetHeight() < kSmallestSide)
        return 0;
    if (image.IsGrayScale())
        return 1;
    // Palettes go through colour, so that they meet the same weights as pixels.
    if (image.GetBpp() != 24 && ConvertToRgb(image) == 0)
        return 0;
    return keepColor || ConvertToGray(image) != 0 ? 1 : 0;
}

int WorkOnPagePlanes(CDibImage& image, const std::function<int(PlaneView)>& work) {
    return RefuseWhenOutOfMemory([&] {
        const PlaneView pixels = TopDownViewOf(image);
        if (pixels.channels == 1)
            return work(pixels);
        const std::size_t size =
            static_cast<std::size_t>(pixels.width) * static_cast<std::size_t>(pixels.height);
        const PixelBuffer memory = MakePixelBuffer(3 * size);
        std::array<PlaneView, 3> planes;
        for (std::size_t c = 0; c < planes.size(); ++c) {
            planes[c] = {memory.get() + c * size, pixels.width, pixels.height, 1, pixels.width};
            ExtractChannel(pixels, static_cast<int>(c), planes[c]);
            if (work(planes[c]) == 0)
                return 0;
        }
        MergeChannels({planes[0], planes[1], planes[2]}, pixels);
        return 1;
    });
}

}  // namespace velloran
