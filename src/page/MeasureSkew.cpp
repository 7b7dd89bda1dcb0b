#include "page/MeasureSkew.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <new>

#include "core/Refusal.h"
#include "page/InkContrast.h"
#include "page/Margins.h"
#include "page/SkewImage.h"
#include "page/SkewScore.h"

namespace velloran {
namespace {

constexpr int kLargestDegrees = 5;
constexpr double kFineStep = 0.1;  // degrees
constexpr int kFineSteps = 6;      // to either side of the coarse angle
constexpr double kLeastStrength = 1.0;
constexpr double kWholeTolerance = 0.08, kHalfTolerance = 0.2;  // degrees, for half the trust
constexpr double kFullConfidence = 2.5;
/// A half without text of its own neither confirms nor denies.
constexpr double kSilentTrust = 0.35;

struct Answer {
    double angle = 0, strength = 0;
};

/// The angle of the highest score by an even grid around the best whole degree, refined by the
/// parabola through the peak and its neighbours.
Answer AskByGrid(const CDibImage& page, int mode) {
    const auto score = mode == kDeskewRows ? scoreRows : scoreColumns;
    CDibImage half = page;
    halve(half, 1);
    CDibImage quarter = half;
    halve(quarter, 2);
    if (!half.IsValid() || !quarter.IsValid())
        throw std::bad_alloc();
    double sum = 0, best = -1;
    int coarse = 0;
    for (int degrees = -kLargestDegrees; degrees <= kLargestDegrees; ++degrees) {
        const double value = score(quarter, degrees);
        sum += value;
        if (value > best) {
            best = value;
            coarse = degrees;
        }
    }
    std::array<double, 2 * kFineSteps + 1> fine{};
    for (std::size_t i = 0; i < fine.size(); ++i)
        fine[i] = score(half, coarse + kFineStep * (double(i) - kFineSteps));
    const auto peak =
        static_cast<std::size_t>(std::max_element(fine.begin(), fine.end()) - fine.begin());
    double at = double(peak);
    if (peak > 0 && peak + 1 < fine.size()) {
        const double bend = fine[peak - 1] - 2 * fine[peak] + fine[peak + 1];
        if (bend < 0)
            at += (fine[peak - 1] - fine[peak + 1]) / (2 * bend);
    }
    const double angle = coarse + kFineStep * (at - kFineSteps);
    const double strength = sum > 0 ? fine[peak] / sum * (2 * kLargestDegrees + 1) - 1 : 0;
    return {mode == kDeskewRows ? -angle : angle, strength};
}

double Trust(double deviation, double tolerance) {
    const double share = deviation / tolerance;
    return 1 / (1 + share * share);
}

CDibImage Part(const CDibImage& page, int left, int top, int right, int bottom) {
    CDibImage part = page;
    if (!part.IsValid())
        throw std::bad_alloc();
    trimImage(part, left, top, right, bottom);
    return part;
}

double TrustOfHalf(const CDibImage& half, const SkewFinding& finding) {
    if (half.GetWidth() < kSmallestSkewSide || half.GetHeight() < kSmallestSkewSide)
        return kSilentTrust;
    const Answer answer = AskByGrid(half, finding.skew.mode);
    if (answer.strength < kLeastStrength)
        return kSilentTrust;
    return Trust(answer.angle - finding.skew.angle, kHalfTolerance);
}

double SureOf(const CDibImage& page, const SkewFinding& finding) {
    if (finding.skew.confidence <= 0)
        return 0;
    const int width = page.GetWidth(), height = page.GetHeight();
    const double whole =
        Trust(AskByGrid(page, finding.skew.mode).angle - finding.skew.angle, kWholeTolerance);
    const double halves = TrustOfHalf(Part(page, 0, 0, width / 2, 0), finding) *
                          TrustOfHalf(Part(page, width / 2, 0, 0, 0), finding) *
                          TrustOfHalf(Part(page, 0, 0, 0, height / 2), finding) *
                          TrustOfHalf(Part(page, 0, height / 2, 0, 0), finding);
    const double mean = std::sqrt(std::sqrt(halves));  // one that denies outweighs three
    return whole * mean * std::min(1.0, finding.skew.confidence / kFullConfidence);
}

}  // namespace

int measureSkew(const CDibImage& image, const SkewRegion& region, int mode, SkewFinding& finding) {
    finding = {};
    if (!image.IsValid() || mode < kDeskewRows || mode > kDeskewBoth)
        return 0;
    if (image.GetWidth() < kSmallestSkewSide || image.GetHeight() < kSmallestSkewSide)
        return 1;
    return RefuseWhenOutOfMemory([&] {
        CDibImage page;
        if (!prepareSkewImage(image, region, page))
            return 0;
        finding.skew = searchAngle(page, mode);
        const double contrast = inkContrast(image, partForSkew(image, region), page);
        finding.sure = SureOf(page, finding) * trustInContrast(contrast);
        return 1;
    });
}

}  // namespace velloran
