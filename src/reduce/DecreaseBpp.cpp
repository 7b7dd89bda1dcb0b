#include "reduce/DecreaseBpp.h"

#include <algorithm>
#include <array>
#include <span>

#include "core/GrayDepth.h"
#include "core/PaletteSearch.h"
#include "core/Refusal.h"
#include "core/Rounding.h"
#include "reduce/ApplyPalette.h"
#include "reduce/Binarize.h"
#include "reduce/CleanPage.h"
#include "reduce/CountColors.h"
#include "reduce/PackTarget.h"
#include "reduce/PaletteMakers.h"
#include "reduce/ReducePlan.h"

namespace velloran {
namespace {

/// A file that was 1-bit or 4-bit and is still within its depth returns to that depth.
int DepthOfSource(const CDibImage& image, bool previewing, int sourceBpp) {
    const int unchanged = image.GetBpp() == 8 ? kGray256 : kRgb24;
    if (previewing || sourceBpp < 1 || sourceBpp > 8)
        return unchanged;
    const int count = CountColors(image);
    if (count == 0 || count > 1 << sourceBpp)
        return unchanged;
    if (sourceBpp == 1)
        return kColors2;
    return sourceBpp == 4 ? kColors16 : kColors256;
}

enum class TwoLevels { kDone, kMoreLevels };

/// An 8-bit image with at most two levels becomes a 1-bit image of those.
TwoLevels PackTwoLevels(CDibImage& image, bool previewing) {
    const std::array<bool, 256> used = UsedIndices(image);
    if (std::count(used.begin(), used.end(), true) > 2)
        return TwoLevels::kMoreLevels;
    if (previewing)
        return TwoLevels::kDone;
    std::array<std::uint8_t, 256> index{};
    Palette palette;
    for (std::size_t level = 0; level < used.size(); ++level)
        if (used[level]) {
            index[level] = static_cast<std::uint8_t>(palette.size());
            const auto gray = static_cast<std::uint8_t>(level);
            palette.push_back({gray, gray, gray, 0});
        }
    const int transparent = image.Fields().backgroundIndex;
    if (PackLevels(image, 1, palette, index) != 0 && transparent >= 0)
        image.Fields().backgroundIndex =
            transparent < 256 && used[static_cast<std::size_t>(transparent)]
                ? index[static_cast<std::size_t>(transparent)]
                : -1;
    return TwoLevels::kDone;
}

std::uint32_t GrayOf(std::uint32_t color) {
    const std::uint32_t gray = LumaOf(color >> 16 & 255, color >> 8 & 255, color & 255);
    return gray | gray << 8 | gray << 16;
}

/// Two levels, then the cleaning that was asked for.
int Binarize(CDibImage& image, const Palette* palette, const DecreaseBppRequest& request) {
    if (Threshold(image, palette, request) == 0)
        return 0;
    if (request.deSmooth != 0)
        SmoothEdges(image);
    const bool blocks = request.blockWidth != 0 && request.blockHeight != 0;
    if (request.despeckleSize != 0 || request.deBlack != 0 || blocks) {
        CleanRequest clean;
        clean.deBlack = request.deBlack != 0;
        clean.blockWidth = request.blockWidth;
        clean.blockHeight = request.blockHeight;
        clean.blockWidthCondition = request.blockWidthCondition;
        clean.blockHeightCondition = request.blockHeightCondition;
        clean.despeckleSize = request.despeckleSize;
        CleanComponents(image, nullptr, clean);
    }
    return 1;
}

void Preview(CDibImage& image, const ReducePlan& plan, const DecreaseBppRequest& request) {
    const Palette* palette = plan.needsPalette ? &plan.palette : nullptr;
    if (request.dither != 0 && image.GetBpp() == 8)
        ReduceLevels(image, plan.palette, /*keepDepth=*/true, request.bwDitherMethod);
    else if (request.dither != 0)
        DiffusePalette(image, plan.palette, /*keepDepth=*/true);
    else if (request.color == kBlackWhite)
        Binarize(image, palette, request);
    else if (IsGrayDepth(request.color))
        Threshold(image, palette, request);
    else
        ApplyPalette(image, plan.palette);
}

/// The target is made before the pixels turn into indices, so that a page without memory for it
/// stays a picture.
int DitherForGood(CDibImage& image, const ReducePlan& plan, const DecreaseBppRequest& request) {
    // A single row is not diffused, so its pixels would hold no indices.
    if (image.GetBpp() != 8 && image.GetHeight() < 2)
        return PackNearest(image, plan.bits, plan.palette);
    CDibImage target = MakePackTarget(image, plan.bits, plan.palette);
    if (!target.IsValid())
        return 0;
    const int dithered =
        image.GetBpp() == 8
            ? ReduceLevels(image, plan.palette, /*keepDepth=*/false, request.bwDitherMethod)
            : DiffusePalette(image, plan.palette, /*keepDepth=*/false);
    if (dithered == 0)
        return 0;
    PackIndicesInto(image, target);
    return image.TakePixels(target) ? 1 : 0;
}

int ReduceForGood(CDibImage& image, const ReducePlan& plan, const DecreaseBppRequest& request) {
    if (request.dither != 0)
        return DitherForGood(image, plan, request);
    if (request.color != kBlackWhite)
        return PackNearest(image, plan.bits, plan.palette);
    if (Binarize(image, plan.needsPalette ? &plan.palette : nullptr, request) == 0)
        return 0;
    return PackBilevel(image);
}

/// The entry nearest to white; entry 0 counts only where there is no other.
int LightestIndex(std::span<const PaletteEntry> palette) {
    return palette.size() < 2 ? 0 : 1 + NearestIndex(palette.subspan(1), {255, 255, 255, 0});
}

/// Where the transparent level of a grey page went: its own entry, or -1 where others share it.
int TransparentEntry(const ReducePlan& plan, int level) {
    if (!plan.exact || level < 0)
        return -1;
    const int index = NearestLevel(plan.palette, level);
    return plan.palette[static_cast<std::size_t>(index)].blue == level ? index : -1;
}

int ReduceToPalette(CDibImage& image, bool previewing, const DecreaseBppRequest& request) {
    const ReducePlan plan = MakeReducePlan(image, request);
    if (plan.needsPalette && plan.palette.empty())
        return 1;
    if (previewing) {
        Preview(image, plan, request);
        return image.IsValid() ? 1 : 0;
    }
    const int transparentLevel = image.Fields().backgroundIndex;
    if (ReduceForGood(image, plan, request) == 0)
        return image.IsValid() ? 1 : 0;
    if (request.transparent == 0) {
        image.Fields().backgroundIndex = TransparentEntry(plan, transparentLevel);
        return 1;
    }
    Palette palette = plan.palette;
    if (!plan.needsPalette)
        palette.assign(image.GetPalette(), image.GetPalette() + image.GetPaletteCount());
    image.Fields().backgroundIndex = LightestIndex(palette);
    return 1;
}

/// What the position means for the image at hand; converts it to grey where the target is grey.
int SettleTarget(CDibImage& image, bool previewing, DecreaseBppRequest& request) {
    if (request.color == kAsSource)
        request.color = DepthOfSource(image, previewing, request.sourceBpp);
    if (image.GetBpp() < 8 && IsColorDepth(request.color) && request.color != kRgb24 &&
        EnsureGrayOrRgb(image) == 0)
        return 0;
    if (image.GetBpp() <= 8)
        return 1;
    if (request.color == kColors2 && request.quantize == kFixedPalette)
        request.color = kBlackWhite;
    return IsGrayDepth(request.color) ? ConvertToGray(image) : 1;
}

int Decrease(CDibImage& image, bool previewing, DecreaseBppRequest& request) {
    if (SettleTarget(image, previewing, request) == 0)
        return image.IsValid() ? 1 : 0;
    if (!IsColorDepth(request.color) || request.color == kRgb24)
        return 1;
    if (image.GetBpp() == 8) {
        request.color = DepthRowOf(request.color).onGrayImage;
        if (request.color == kColors2) {
            if (PackTwoLevels(image, previewing) == TwoLevels::kDone)
                return 1;
            request.color = kBlackWhite;
        }
    }
    if (IsGrayDepth(request.color) && request.reservedColor != DecreaseBppRequest::kNoReservedColor)
        request.reservedColor = GrayOf(request.reservedColor);
    if (request.color == kGray256)
        return ConvertToGray(image);
    if (request.color == kHigh565 || request.color == kHigh555)
        return Reduce16(image, request.dither != 0, request.color == kHigh565);
    return ReduceToPalette(image, previewing, request);
}

}  // namespace

int DecreaseBpp(CDibImage& image, bool previewing, DecreaseBppRequest request) {
    if (!image.IsValid())
        return 0;
    RefuseWhenOutOfMemory([&] { return Decrease(image, previewing, request); });
    return image.IsValid() ? 1 : 0;
}

}  // namespace velloran
