// Work that nobody wants any more ends soon, in every family of filters.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <ctime>
#include <thread>

#include "core/DibImage.h"
#include "core/StepContext.h"
#include "filters/AdjustSharpen.h"
#include "filters/GaussianBlur.h"
#include "filters/KernelFilters.h"
#include "filters/LevelFilters.h"
#include "filters/Morphology.h"
#include "filters/MultiScaleDetail.h"
#include "filters/Resample.h"
#include "filters/SmoothPlane.h"
#include "filters/SurfaceBlur.h"
#include "filters/UnsharpMask.h"
#include "support/Images.h"
#include "support/Sanitized.h"

namespace velloran {
namespace {

struct Family {
    const char* name;
    int (*work)(CDibImage& image);
};

const Family kFamilies[] = {
    {"sharpen by 3 x 3", [](CDibImage& image) { return SharpenLevel(image, 4); }},
    {"sharpen by 5 x 5", [](CDibImage& image) { return SharpenLevel(image, 12); }},
    {"kernel of fractions",
     [](CDibImage& image) {
         const std::vector<float> kernel(49, 1.0F / 49.3F);
         return FilterSquare(image, kernel, 7);
     }},
    {"darken", [](CDibImage& image) { return Darken(image, 4); }},
    {"five taps", [](CDibImage& image) { return BlurLevel(image, 10); }},
    {"wide Gaussian", [](CDibImage& image) { return GaussianBlurInPlace(ViewOf(image), 60.0F); }},
    {"unsharp mask",
     [](CDibImage& image) { return UnsharpMask(image, 200, 19.0F, 0, 3, /*blurOnly=*/false); }},
    {"unsharp mask of a reduced copy",
     [](CDibImage& image) { return UnsharpMask(image, 200, 90.0F, 0, 3, /*blurOnly=*/false); }},
    {"Lanczos",
     [](CDibImage& image) {
         return ResizeTo(image, image.GetWidth() * 5 / 4, image.GetHeight() * 5 / 4);
     }},
    {"area",
     [](CDibImage& image) {
         return ResizeTo(image, image.GetWidth() * 2 / 3, image.GetHeight() * 2 / 3);
     }},
    {"linear",
     [](CDibImage& image) {
         return ResizeToLinear(image, image.GetWidth() * 5 / 4, image.GetHeight() * 5 / 4);
     }},
    {"smooth plane", [](CDibImage& image) { return SmoothPlane(image, 9); }},
    {"detail in several scales", [](CDibImage& image) { return MultiScaleDetail(image, 8); }},
    {"adjusted sharpening", [](CDibImage& image) { return AdjustSharpen(image, 40, 25); }},
    {"surface blur, direct", [](CDibImage& image) { return SurfaceBlur(image, 5, 50, 3, 0); }},
    {"surface blur, histograms", [](CDibImage& image) { return SurfaceBlur(image, 15, 50, 3, 0); }},
    {"surface blur, guided", [](CDibImage& image) { return SurfaceBlur(image, 10, 30, 3, 1); }},
    {"surface blur, selective Gaussian",
     [](CDibImage& image) { return SurfaceBlur(image, 15, 30, 3, 2); }},
    {"surface blur, selective mean",
     [](CDibImage& image) { return SurfaceBlur(image, 15, 30, 3, 3); }},
};

/// Cancelled from some question on.
struct Counter {
    mutable std::atomic<int> asked = 0;
    int cancelledFrom = 1 << 30;

    CancelToken Token() const {
        return {[](const void* counter) {
                    const auto* self = static_cast<const Counter*>(counter);
                    return ++self->asked >= self->cancelledFrom;
                },
                this};
    }
};

TEST(Cancel, EachFamilyAsksManyTimesOnAPage) {
    for (const Family& family : kFamilies) {
        CDibImage image = test::Noise(900, 1100, 24);
        Counter counter;
        const StepContext context(counter.Token());
        EXPECT_NE(family.work(image), 0) << family.name;
        EXPECT_GE(counter.asked, 15) << family.name;
    }
}

TEST(Cancel, WorkThatIsCancelledAtAnyQuestionLeavesAPictureBehind) {
    for (const Family& family : kFamilies)
        for (const int question : {1, 2, 3, 7, 20}) {
            CDibImage image = test::Noise(450, 400, 24);
            Counter counter;
            counter.cancelledFrom = question;
            const StepContext context(counter.Token());
            family.work(image);
            EXPECT_TRUE(image.IsValid()) << family.name;
            EXPECT_EQ(image.GetBpp(), 24) << family.name;
            int sum = 0;  // every byte can be read
            for (int y = 0; y < image.GetHeight(); ++y)
                for (int i = 0; i < image.GetWidth() * 3; ++i)
                    sum |= image.GetBits(y)[i];
            EXPECT_LE(sum, 255);
        }
}

TEST(Cancel, WithoutAContextNothingIsLeftOut) {
    CDibImage inContext = test::Noise(300, 200, 24), alone = inContext;
    {
        const StepContext context;
        EXPECT_NE(SurfaceBlur(inContext, 5, 50, 2, 0), 0);
    }
    EXPECT_NE(SurfaceBlur(alone, 5, 50, 2, 0), 0);
    test::ExpectSamePixels(inContext, alone);
}

/// In seconds of the processors, on which other programs do not count. Instrumented code takes
/// several times as long between two questions.
constexpr double kLateAtMost = test::kSanitized ? 2.0 : 0.25;

TEST(CancelSlow, EachFamilyEndsSoon) {
    // Larger ones would measure how long the system takes to hand out memory.
    const CDibImage page = test::Noise(3000, 4200, 24);
    for (const Family& family : kFamilies) {
        CDibImage image = page;
        std::atomic<bool> flag = false;
        std::clock_t cancelled = 0;
        std::thread other([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(40));
            cancelled = std::clock();
            flag = true;
        });
        {
            const StepContext context{CancelToken(flag)};
            family.work(image);
        }
        const std::clock_t end = std::clock();
        other.join();
        const double late = static_cast<double>(end - cancelled) / CLOCKS_PER_SEC;
        EXPECT_LT(late, kLateAtMost) << family.name;
    }
}

}  // namespace
}  // namespace velloran
