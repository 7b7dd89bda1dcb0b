#include "page/SkewImage.h"

#include "core/GrayDepth.h"
#include "filters/FitIntoBox.h"
#include "filters/Resample.h"
#include "imageproc/BinaryMorphology.h"
#include "imageproc/RasterOp.h"
#include "imageproc/ReduceThreshold.h"
#include "imageproc/SeedFill.h"
#include "imageproc/Upscale.h"
#include "page/BinaryPage.h"
#include "reduce/DecreaseBpp.h"

namespace velloran {
namespace {

constexpr int kMeasuredSide = 1600;

bool IsNarrowed(const CDibImage& image, const SkewRegion& region) {
    const bool hasAll =
        region.left != 0 && region.top != 0 && region.right != 0 && region.bottom != 0;
    return hasAll && (image.GetBpp() == 24 || image.IsGrayScale());
}

/// The part of the page that is looked at, as an image of its own; empty without memory.
CDibImage MeasuredPart(const CDibImage& image, const SkewRegion& region) {
    CDibImage part = image;
    if (IsNarrowed(image, region))
        part.CropPerMille(region.left, region.top, region.right, region.bottom);
    return part;
}

/// The part, reduced where both of its sides are longer than what is measured; empty without
/// memory.
CDibImage ReducedPart(const CDibImage& image, const SkewRegion& region) {
    const bool isWhole = !IsNarrowed(image, region);
    CDibImage part = isWhole ? CDibImage() : MeasuredPart(image, region);
    const CDibImage& page = isWhole ? image : part;
    const BoxSize size{page.GetWidth(), page.GetHeight()};
    const BoxSize fitted = FitIntoBox(size, {kMeasuredSide, kMeasuredSide});
    if (size.width <= fitted.width || size.height <= fitted.height)
        return page;
    if (page.GetBpp() == 24 || page.IsGrayScale())
        return ResizedCopy(page, fitted.width, fitted.height);
    CDibImage reduced = page;
    ResizeTo(reduced, fitted.width, fitted.height);
    return reduced;
}

/// Black and white by a local threshold, without specks and without what touches the edge.
DecreaseBppRequest CleanBlackAndWhite() {
    DecreaseBppRequest request;
    request.color = 7;
    request.quantize = 0;
    request.thresholdMethod = 2;
    request.windowSize = 30;
    request.balance = 0.0F;
    request.despeckleSize = 6;
    request.deBlack = 1;
    return request;
}

/// Rules and borders would outweigh the text.
void RemoveLongObjects(imageproc::BinaryImage& page) {
    using namespace imageproc;
    ReduceThreshold reduced(page);
    while (reduced.image().width() >= 2000 && reduced.image().height() >= 2000)
        reduced.reduce(2);
    const BinaryImage opened = openBrick(reduced, {200, 14});
    const BinaryImage seed = upscaleIntegerTimes(opened, page.size(), BwColor::kWhite);
    subtract(page, seedFill(seed, page, Connectivity::k8));
}

}  // namespace

PageBox partForSkew(const CDibImage& image, const SkewRegion& region) {
    const int width = image.GetWidth(), height = image.GetHeight();
    PageBox part{0, 0, width, height};
    if (!IsNarrowed(image, region))
        return part;
    PageBox cut;
    marginsToPixels(width, height, region.left, region.top, region.right, region.bottom, cut.left,
                    cut.top, cut.right, cut.bottom);
    return {cut.left, cut.top, width - cut.right, height - cut.bottom};
}

bool prepareSkewImage(const CDibImage& image, const SkewRegion& region, CDibImage& page) {
    page = ReducedPart(image, region);
    if (!page.IsValid() || !DecreaseBpp(page, /*previewing=*/false, CleanBlackAndWhite()) ||
        EnsureGrayOrRgb(page) == 0 || page.GetBpp() != 8)
        return false;
    imageproc::BinaryImage binary = BinaryOf(page);
    RemoveLongObjects(binary);
    PaintBinary(binary, page);
    return true;
}

}  // namespace velloran
