#include "reduce/ReducePlan.h"

#include <algorithm>
#include <array>
#include <utility>

#include "reduce/CountColors.h"
#include "reduce/PaletteMakers.h"

namespace velloran {
namespace {

constexpr std::array<DepthRow, 20> kDepths = {{
    {0, 0, false, kRgb24},      // 24位色
    {256, 8, true, kGray256},   // 256级灰度
    {0, 0, false, kAsSource},   // 保持原样
    {256, 8, false, kGray256},  // 256色
    {16, 4, true, kGray16},     // 16级灰度
    {8, 4, true, kGray8},       // 8级灰度
    {4, 4, true, kGray4},       // 4级灰度
    {2, 1, true, kBlackWhite},  // 纯黑白
    {128, 8, false, kGray128},  // 128色
    {64, 8, false, kGray64},    // 64色
    {32, 8, false, kGray32},    // 32色
    {16, 4, false, kGray16},    // 16色
    {8, 4, false, kGray8},      // 8色
    {4, 4, false, kGray4},      // 4色
    {2, 1, false, kColors2},    // 2色
    {128, 8, true, kGray128},   // 128级灰度
    {64, 8, true, kGray64},     // 64级灰度
    {32, 8, true, kGray32},     // 32级灰度
    {0, 24, false, kGray256},   // 16位色565
    {0, 24, false, kGray256},   // 16位色555
}};

int BitsFor(std::size_t colors) {
    if (colors <= 2)
        return 1;
    return colors <= 16 ? 4 : 8;
}

/// The reserved colour comes last, behind the first `made` of the entries: at 1 bit the octree
/// makes two whatever is asked.
void AppendReserved(Palette& palette, int made, const PaletteEntry& reserved) {
    palette.resize(std::min(palette.size(), static_cast<std::size_t>(made)));
    palette.push_back(reserved);
}

/// The lightest grey of a reduced grey page becomes exactly white.
void WhitenLightest(Palette& palette) {
    const auto lightest = std::max_element(
        palette.begin(), palette.end(),
        [](const PaletteEntry& a, const PaletteEntry& b) { return a.blue < b.blue; });
    if (lightest != palette.end())
        *lightest = {255, 255, 255, 0};
}

}  // namespace

bool IsColorDepth(int color) {
    return color >= 0 && color < static_cast<int>(kDepths.size());
}

const DepthRow& DepthRowOf(int color) {
    return kDepths[static_cast<std::size_t>(color)];
}

bool IsGrayDepth(int color) {
    return IsColorDepth(color) && DepthRowOf(color).gray;
}

ReducePlan MakeReducePlan(const CDibImage& image, const DecreaseBppRequest& request) {
    const bool gray8 = image.GetBpp() == 8, dithered = request.dither != 0;
    int colors = DepthRowOf(request.color).colors;
    ReducePlan plan;
    plan.bits = DepthRowOf(request.color).bits;
    if (!dithered && request.color == kBlackWhite && request.thresholdMethod != 0) {
        plan.needsPalette = false;
        return plan;
    }
    bool reservedFound = true;
    if (request.color != kBlackWhite) {
        ExactPalette exact = CollectExactPalette(image, colors, request.reservedColor);
        if (!exact.palette.empty()) {
            plan.bits = BitsFor(exact.palette.size());
            plan.palette = std::move(exact.palette);
            plan.exact = true;
            return plan;
        }
        reservedFound = exact.reservedFound;
        if (!reservedFound)
            --colors;
    }
    // Dithered grey takes an evenly spaced ramp.
    const int maker = gray8 && dithered ? kFixedPalette : request.quantize;
    plan.palette = MakePalette(image, maker, colors, plan.bits);
    if (plan.palette.empty())
        return plan;
    if (!reservedFound)
        AppendReserved(plan.palette, colors, EntryOf(request.reservedColor));
    if (gray8 && plan.bits != 1 && !dithered)
        WhitenLightest(plan.palette);
    return plan;
}

}  // namespace velloran
