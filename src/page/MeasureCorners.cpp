#include "page/MeasureCorners.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "core/DibImage.h"
#include "core/Refusal.h"
#include "page/EdgeImage.h"
#include "page/Trapezoid.h"

namespace velloran {
namespace {

constexpr int kPoints = 48;         // that are looked at along a side
constexpr double kEndShare = 0.06;  // of a side, next to its corners, where none is
constexpr int kNear = 4, kFar = 9;  // pixels of the small copy from the side, either way
constexpr int kLeastStep = 12;      // levels
constexpr double kWantedShare = 0.9;
/// Pictures and frames on a page are darker than what surrounds them; sheets seldom are.
constexpr double kDarkSheet = 0.4;

struct Place {
    double x = 0, y = 0;
};

/// Mean of the samples from kNear to kFar pixels off the side at one point; -1 beyond the picture.
int Beside(ConstPlaneView gray, Place at, Place normal, int sign) {
    int sum = 0, count = 0;
    for (int distance = kNear; distance <= kFar; ++distance) {
        const int x = int(std::floor(at.x + sign * distance * normal.x));
        const int y = int(std::floor(at.y + sign * distance * normal.y));
        if (x < 0 || y < 0 || x >= gray.width || y >= gray.height)
            continue;
        sum += gray.Row(y)[static_cast<std::size_t>(x)];
        ++count;
    }
    return count == 0 ? -1 : sum / count;
}

/// Shares of a side's points at which the page is brighter than what lies outside, or darker.
struct StepShares {
    double brighter = 0, darker = 0;
};

StepShares SharesOf(ConstPlaneView gray, Place from, Place to) {
    const double across = to.x - from.x, down = to.y - from.y;
    const double length = std::sqrt(across * across + down * down);
    if (length < kPoints / 2.0)
        return {};
    const Place normal{-down / length, across / length};
    int brighter = 0, darker = 0;
    for (int i = 0; i < kPoints; ++i) {
        const double share = kEndShare + (1 - 2 * kEndShare) * (i + 0.5) / kPoints;
        const Place at{from.x + (to.x - from.x) * share, from.y + (to.y - from.y) * share};
        const int inside = Beside(gray, at, normal, 1), outside = Beside(gray, at, normal, -1);
        if (inside < 0 || outside < 0 || std::abs(inside - outside) < kLeastStep)
            continue;
        ++(inside > outside ? brighter : darker);
    }
    return {double(brighter) / kPoints, double(darker) / kPoints};
}

/// A sheet is brighter, or darker, than its surroundings along all four sides.
double SureOf(const CDibImage& gray, const TrueCorners& corners, double scale) {
    StepShares all{1, 1};
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const CornerPoint &a = corners[i], &b = corners[(i + 1) % corners.size()];
        const StepShares side =
            SharesOf(TopDownViewOf(gray), {a.x / scale, a.y / scale}, {b.x / scale, b.y / scale});
        all.brighter *= std::min(1.0, side.brighter / kWantedShare);
        all.darker *= std::min(1.0, side.darker / kWantedShare);
    }
    return std::max(all.brighter, all.darker * kDarkSheet);
}

}  // namespace

int measureCorners(const CDibImage& image, std::int32_t leftLine, std::int32_t rightLine,
                   CornersFinding& finding) {
    finding = {};
    if (!image.IsValid())
        return 0;
    return RefuseWhenOutOfMemory([&] {
        PackedCorners packed = kNoCorners;
        finding.found = findCorners(/*directOutput=*/1, image, packed, leftLine, rightLine) != 0;
        if (!finding.found)
            return 1;
        const int width = image.GetWidth(), height = image.GetHeight();
        finding.corners = UnpackCorners(packed, width, height);
        const CDibImage gray = smallGray(image);
        if (!gray.IsValid())
            return 0;
        finding.sure = SureOf(gray, finding.corners, double(width) / gray.GetWidth());
        return 1;
    });
}

}  // namespace velloran
