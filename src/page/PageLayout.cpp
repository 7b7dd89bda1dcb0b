#include "page/PageLayout.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "core/Rounding.h"
#include "filters/FitIntoBox.h"
#include "page/LayoutSides.h"
#include "page/PageSizes.h"

namespace velloran {
namespace {

constexpr std::int32_t kFree = -1;
constexpr std::int32_t kEnlarge = 1, kShrink = 1;  // positions in the lists of the two rules

std::int32_t Limited(std::int64_t value) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, Limits::min(), Limits::max()));
}

/// What lies between two margins; never negative.
std::int32_t Inner(std::int32_t page, std::int32_t before, std::int32_t behind) {
    return Limited(std::max<std::int64_t>(0, std::int64_t{page} - before - behind));
}

std::int32_t Percent(std::int64_t size, std::int32_t percent) {
    return Limited(size * percent / 100);
}

/// Both sides given: within the type area the content may grow to it, beyond it shrink.
void FitContent(LayoutRequest& request, std::int32_t width, std::int32_t height) {
    request.contentWidth = width;
    request.contentHeight = height;
    if (width < 1 || height < 1)
        return;
    const BoxSize inner{request.innerWidth, request.innerHeight};
    if (width > inner.width || height > inner.height) {
        if (request.bigRule != kShrink)
            return;
        const BoxSize fitted = FitIntoBox({width, height}, inner);
        request.contentWidth = fitted.width;
        request.contentHeight = fitted.height;
        return;
    }
    if (request.smallRule != kEnlarge)
        return;
    const float byWidth = static_cast<float>(inner.width) / static_cast<float>(width);
    const float byHeight = static_cast<float>(inner.height) / static_cast<float>(height);
    const float aspect = static_cast<float>(width) / static_cast<float>(height);
    if (byWidth > byHeight) {
        request.contentHeight = inner.height;
        request.contentWidth = std::min(
            RoundHalf(static_cast<double>(static_cast<float>(inner.height) * aspect)), inner.width);
    } else {
        request.contentWidth = inner.width;
        request.contentHeight = std::min(
            RoundHalf(static_cast<double>(static_cast<float>(inner.width) / aspect)), inner.height);
    }
}

/// One side given: that of the content, and the other that keeps its shape.
std::int32_t FitSide(const LayoutRequest& request, std::int32_t size, std::int32_t inner) {
    const bool fits = size <= inner;
    const bool changes = fits ? request.smallRule == kEnlarge : request.bigRule == kShrink;
    return changes ? inner : size;
}

std::int32_t InProportion(std::int32_t side, std::int32_t of, std::int32_t fitted) {
    return of == 0 ? side : RoundHalf(static_cast<double>(side) / of * fitted);
}

std::int32_t PaperPixels(const LayoutRequest& request, int millimetres) {
    return RoundHalf(request.dpi * (millimetres / 10.0) / 2.54);
}

}  // namespace

std::int32_t LayoutPixels(const LayoutRequest& request, std::int32_t length) {
    return request.unit == 0 ? RoundHalf(length / 100.0 * request.dpi / 2.54) : length;
}

PageSides SidesOfPage(const LayoutRequest& request) {
    switch (request.pageSize) {
        case kGivenWidth:
            return {LayoutPixels(request, request.pageWidth), kFree};
        case kGivenHeight:
            return {kFree, LayoutPixels(request, request.pageHeight)};
        case kGivenBoth:
            return {LayoutPixels(request, request.pageWidth),
                    LayoutPixels(request, request.pageHeight)};
        default:
            break;
    }
    const PaperSize paper = PaperSizeOf(request.pageSize);
    if (paper.widthMm == 0)
        return {kFree, kFree};
    return {PaperPixels(request, paper.widthMm), PaperPixels(request, paper.heightMm)};
}

void computeInnerSize(LayoutRequest& request) {
    const PageSides page = SidesOfPage(request);
    const auto inner = [&](std::int32_t side, std::int32_t before, std::int32_t behind) {
        return side == kFree
                   ? kFree
                   : Inner(side, LayoutPixels(request, before), LayoutPixels(request, behind));
    };
    request.innerWidth = inner(page.width, request.marginLeft, request.marginRight);
    request.innerHeight = inner(page.height, request.marginTop, request.marginBottom);
}

void computeContentSize(LayoutRequest& request) {
    request.contentWidth = request.contentHeight = 0;
    if (request.imageWidth < 1 || request.imageHeight < 1)
        return;
    const std::int32_t width =
        Percent(std::int64_t{request.imageWidth} - request.cutLeft - request.cutRight,
                request.resizePercent);
    const std::int32_t height =
        Percent(std::int64_t{request.imageHeight} - request.cutTop - request.cutBottom,
                request.resizePercent);
    computeInnerSize(request);
    request.contentWidth = width;
    request.contentHeight = height;
    if (request.innerWidth == 0 || request.innerHeight == 0)
        return;
    if (request.innerWidth > 0 && request.innerHeight > 0) {
        FitContent(request, width, height);
    } else if (request.innerWidth > 0) {
        request.contentWidth = FitSide(request, width, request.innerWidth);
        request.contentHeight = InProportion(height, width, request.contentWidth);
    } else if (request.innerHeight > 0) {
        request.contentHeight = FitSide(request, height, request.innerHeight);
        request.contentWidth = InProportion(width, height, request.contentHeight);
    }
}

bool innerSizeValid(LayoutRequest& request) {
    constexpr std::uint32_t kLeastSide = 11;
    computeInnerSize(request);
    return static_cast<std::uint32_t>(request.innerWidth) >= kLeastSide &&
           static_cast<std::uint32_t>(request.innerHeight) >= kLeastSide;
}

}  // namespace velloran
