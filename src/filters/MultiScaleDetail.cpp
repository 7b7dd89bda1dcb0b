#include "filters/MultiScaleDetail.h"

#include <algorithm>
#include <cstdint>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/PixelMemory.h"
#include "core/Refusal.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "filters/SmoothPlane.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "filters/MultiScaleDetail.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

void EnhanceRow(const std::uint8_t* fine, const std::uint8_t* middle, const std::uint8_t* coarse,
                int count, std::uint8_t* row) {
    for (int i = 0; i < count; ++i) {
        const int sample = row[i], detail = sample - fine[i];
        const int weighted = fine[i] + (detail < 0 ? 3 * detail : detail);
        // Truncated toward zero; a shift would go down.
        const int change = (2 * weighted - middle[i] - coarse[i]) / 4;
        const int value = sample + change;
        row[i] = static_cast<std::uint8_t>(value < 0 ? 0 : (value > 255 ? 255 : value));
    }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(EnhanceRow);

/// A copy of the picture, the top row first, smoothed.
class SmoothedCopy {
 public:
    SmoothedCopy(ConstPlaneView topDown, double radius) {
        const std::ptrdiff_t stride = static_cast<std::ptrdiff_t>(topDown.width) * topDown.channels;
        memory_ = MakePixelBuffer(static_cast<std::size_t>(stride) *
                                  static_cast<std::size_t>(topDown.height));
        view_ = {memory_.get(), topDown.width, topDown.height, topDown.channels, stride};
        const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(topDown))
        for (int y = 0; y < topDown.height; ++y) {
            if (cancel.IsCancelled())
                continue;
            std::copy_n(topDown.Row(y).data(), topDown.Row(y).size(), view_.Row(y).data());
        }
        SmoothRowsAndColumns(view_, radius);
    }

    const std::uint8_t* Row(int y) const {
        return view_.Row(y).data();
    }

 private:
    PixelBuffer memory_;
    PlaneView view_;
};

}  // namespace

int MultiScaleDetail(CDibImage& image, int radius) {
    if (image.GetWidth() < 4 || image.GetHeight() < 4 || radius < 1 || EnsureGrayOrRgb(image) == 0)
        return 0;
    return RefuseWhenOutOfMemory([&] {
        const PlaneView pixels = TopDownViewOf(image);
        const SmoothedCopy fine(pixels, radius), middle(pixels, 2.0 * radius),
            coarse(pixels, 4.0 * radius);
        const CancelToken cancel = CurrentCancel();
        // Row padding would come out as it is: its smoothings equal it.
#pragma omp parallel for schedule(static) if (IsWorthThreads(pixels))
        for (int y = 0; y < pixels.height; ++y) {
            if (cancel.IsCancelled())
                continue;
            HWY_DYNAMIC_DISPATCH(EnhanceRow)
            (fine.Row(y), middle.Row(y), coarse.Row(y), pixels.width * pixels.channels,
             pixels.Row(y).data());
        }
        return 1;
    });
}

}  // namespace velloran
#endif  // HWY_ONCE
