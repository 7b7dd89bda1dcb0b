#include "page/Deskew.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

#include "core/DibImage.h"
#include "core/Refusal.h"
#include "core/Rounding.h"
#include "page/SkewImage.h"
#include "page/SkewScore.h"

namespace velloran {
namespace {

constexpr double kLeastPeak = 1000.0, kLeastConfidence = 2.0;

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
    if (mode == kDeskewBoth) {
        const Skew rows = searchAngle(gray, kDeskewRows);
        const Skew columns = searchAngle(gray, kDeskewColumns);
        return std::fabs(columns.angle) <= std::fabs(rows.angle) ? columns : rows;
    }
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
        return {-peak.angle, 0, mode};
    // Columns lean the other way: only a page with lines to see has their sign.
    return {mode == kDeskewRows ? -peak.angle : peak.angle, peak.score / sum * 11 - 1, mode};
}

int turnOfSkew(const Skew& skew) {
    return skew.confidence < kLeastConfidence ? 0 : TruncToInt(skew.angle * 100);
}

int findSkew(const CDibImage& image, double& angle, double& confidence, const SkewRegion& region,
             int mode) {
    angle = confidence = 0;
    if (!image.IsValid() || mode < kDeskewRows || mode > kDeskewBoth)
        return 0;
    if (image.GetWidth() < kSmallestSkewSide || image.GetHeight() < kSmallestSkewSide)
        return 1;
    return RefuseWhenOutOfMemory([&] {
        CDibImage page;
        if (!prepareSkewImage(image, region, page))
            return 0;
        const Skew skew = searchAngle(page, mode);
        angle = skew.angle;
        confidence = skew.confidence;
        return 1;
    });
}

}  // namespace velloran
