#include "filters/LevelFilters.h"

#include <array>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/Refusal.h"
#include "filters/GaussianBlur.h"
#include "filters/KernelDepth.h"
#include "filters/KernelFilters.h"

namespace velloran {
namespace {

/// Corners, edge neighbours, centre, divisor.
struct LevelKernel {
    int a, b, c, divisor;
};

constexpr std::array<LevelKernel, 9> kSharpen = {{
    {0, -20, 180, 100},
    {0, -40, 260, 100},
    {0, -60, 340, 100},
    {0, -80, 420, 100},
    {0, -1, 5, 1},
    {-30, -100, 620, 100},
    {-50, -100, 700, 100},
    {-70, -100, 780, 100},
    {-1, -1, 9, 1},
}};

// clang-format off
constexpr std::array<Kernel5x5, 3> kSharpen5x5 = {{
    { 0, -1, -1, -1,  0,
     -1, -1, -2, -1, -1,
     -1, -2, 25, -2, -1,
     -1, -1, -2, -1, -1,
      0, -1, -1, -1,  0},
    {-1, -1, -1, -1, -1,
     -1, -1, -1, -1, -1,
     -1, -1, 25, -1, -1,
     -1, -1, -1, -1, -1,
     -1, -1, -1, -1, -1},
    { 0, -1, -2, -1,  0,
     -1, -3, -4, -3, -1,
     -2, -4, 45, -4, -2,
     -1, -3, -4, -3, -1,
      0, -1, -2, -1,  0},
}};
// clang-format on

constexpr std::array<LevelKernel, 5> kBlur = {{
    {1, 1, 26, 34},
    {1, 1, 15, 23},
    {1, 2, 4, 16},
    {1, 1, 5, 13},
    {1, 1, 1, 9},
}};

constexpr std::array<float, 5> kBlurSigma = {1.0F, 1.25F, 1.5F, 1.75F, 2.0F};
constexpr int kSmallestSide = 5;
constexpr int kSmallestSeparable = 6;

bool IsSmallerThan(const CDibImage& image, int side) {
    return image.GetWidth() < side || image.GetHeight() < side;
}

int FilterAtLevel(CDibImage& image, const LevelKernel& kernel) {
    if (EnsureKernelDepth(image) == 0)
        return 0;
    return Filter3x3(image, kernel.a, kernel.b, kernel.c, kernel.divisor);
}

}  // namespace

int SharpenLevel(CDibImage& image, int level) {
    if (level < 1 || level > 12 || IsSmallerThan(image, kSmallestSide))
        return 0;
    if (level > 9)
        return Filter5x5(image, kSharpen5x5[static_cast<std::size_t>(level - 10)]);
    return FilterAtLevel(image, kSharpen[static_cast<std::size_t>(level - 1)]);
}

int BlurLevel(CDibImage& image, int level) {
    if (level < 1 || level > 10 || IsSmallerThan(image, kSmallestSide))
        return 0;
    if (level <= 5)
        return FilterAtLevel(image, kBlur[static_cast<std::size_t>(level - 1)]);
    if (IsSmallerThan(image, kSmallestSeparable) || EnsureGrayOrRgb(image) == 0)
        return 0;
    return RefuseWhenOutOfMemory([&] {
        return SeparableFilter(ViewOf(image),
                               MakeFiveTaps(kBlurSigma[static_cast<std::size_t>(level - 6)]));
    });
}

}  // namespace velloran
