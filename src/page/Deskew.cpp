#include "page/Deskew.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/Refusal.h"
#include "filters/FitIntoBox.h"
#include "filters/Resample.h"
#include "imageproc/BinaryMorphology.h"
#include "imageproc/RasterOp.h"
#include "imageproc/ReduceThreshold.h"
#include "imageproc/SeedFill.h"
#include "imageproc/Upscale.h"
#include "page/BinaryPage.h"
#include "page/SkewScore.h"
#include "reduce/DecreaseBpp.h"

namespace velloran {
namespace {

constexpr int kSmallestSide = 100, kMeasuredSide = 1600;
constexpr double kLeastPeak = 1000.0;

/// The part of the page that is looked at, as an image of its own; empty without memory.
CDibImage MeasuredPart(const CDibImage& image, const SkewRegion& region) {
    CDibImage part = image;
    const bool narrowed =
        region.left != 0 && region.top != 0 && region.right != 0 && region.bottom != 0;
    if (narrowed && (image.GetBpp() == 24 || image.IsGrayScale()))
        part.CropPerMille(region.left, region.top, region.right, region.bottom);
    return part;
}

void ReduceToMeasure(CDibImage& page) {
    const BoxSize size{page.GetWidth(), page.GetHeight()};
    const BoxSize fitted = FitIntoBox(size, {kMeasuredSide, kMeasuredSide});
    if (size.width > fitted.width && size.height > fitted.height)
        ResizeTo(page, fitted.width, fitted.height);
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

/// The 8-bit page of 0 and 255 that is scored. False without memory.
bool PrepareForScores(CDibImage& page) {
    ReduceToMeasure(page);
    if (!DecreaseBpp(page, /*previewing=*/false, CleanBlackAndWhite()) ||
        EnsureGrayOrRgb(page) == 0 || page.GetBpp() != 8)
        return false;
    imageproc::BinaryImage binary = BinaryOf(page);
    RemoveLongObjects(binary);
    PaintBinary(binary, page);
    return true;
}

using Score = double (*)(const CDibImage&, double);

/// The whole degree of the highest score, the first of equals; adds all scores to `sum`.
double CoarseAngle(const CDibImage& quarter, Score score, double& sum) {
    double best = 0, bestScore = -1;
    for (int degrees = -5; degrees <= 5; ++degrees) {
        const double value = score(quarter, degrees);
        sum += value;
        if (value > bestScore) {
            bestScore = value;
            best = degrees;
        }
    }
    return best;
}

struct Peak {
    double angle = 0, score = 0;
};

/// Halves the interval from the worse side until it is narrow or both sides are alike.
Peak FineAngle(const CDibImage& half, Score score, double coarse) {
    double high = coarse + 0.5, low = coarse - 0.5;
    double highScore = score(half, high), lowScore = score(half, low);
    while (high - low > 0.05) {
        if (highScore > lowScore) {
            low = (low + high) / 2;
            lowScore = score(half, low);
        } else if (lowScore > highScore) {
            high = (low + high) / 2;
            highScore = score(half, high);
        } else {
            break;
        }
    }
    return highScore > lowScore ? Peak{high, highScore} : Peak{low, lowScore};
}

}  // namespace

Skew searchAngle(const CDibImage& gray, int mode) {
    const Score score = mode == kDeskewRows ? scoreRows : scoreColumns;
    CDibImage half = gray;
    if (!half.IsValid())
        throw std::bad_alloc();
    halve(half, 1);
    CDibImage quarter = half;
    if (!quarter.IsValid())
        throw std::bad_alloc();
    halve(quarter, 2);
    double sum = 0;
    const double coarse = CoarseAngle(quarter, score, sum);
    const Peak peak = FineAngle(half, score, coarse);
    if (peak.score <= kLeastPeak || sum <= 0)
        return {-peak.angle, 0};
    // Columns lean the other way: only a page with lines to see has their sign.
    return {mode == kDeskewRows ? -peak.angle : peak.angle, peak.score / sum * 11 - 1};
}

int findSkew(const CDibImage& image, double& angle, double& confidence, const SkewRegion& region,
             int mode) {
    angle = confidence = 0;
    if (!image.IsValid() || mode < kDeskewRows || mode > kDeskewBoth)
        return 0;
    if (image.GetWidth() < kSmallestSide || image.GetHeight() < kSmallestSide)
        return 1;
    return RefuseWhenOutOfMemory([&] {
        CDibImage page = MeasuredPart(image, region);
        if (!page.IsValid() || !PrepareForScores(page))
            return 0;
        Skew skew = searchAngle(page, mode == kDeskewColumns ? kDeskewColumns : kDeskewRows);
        if (mode == kDeskewBoth) {
            const Skew columns = searchAngle(page, kDeskewColumns);
            if (std::fabs(columns.angle) <= std::fabs(skew.angle))
                skew = columns;
        }
        angle = skew.angle;
        confidence = skew.confidence;
        return 1;
    });
}

}  // namespace velloran
