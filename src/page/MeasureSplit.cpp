#include "page/MeasureSplit.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <vector>

#include "core/DibImage.h"
#include "core/Refusal.h"
#include "page/EdgeImage.h"
#include "page/HoughLines.h"
#include "page/Margins.h"

namespace velloran {
namespace {

constexpr int kSmallestSide = 10;
constexpr double kSameLine = 0.02;    // of the width: nearer lines are one
constexpr double kHalfSees = 0.01;    // of the width
constexpr double kFullLead = 0.3;     // over the next line, as a share of the votes
constexpr double kPageAspect = 0.85;  // width by height: narrower pictures hold one page
constexpr double kSpreadAspect = 1.1;

/// Where a line lies at a height, 0 at the top and 1 at the bottom.
double At(const PageLine& line, double height) {
    return line.top + (line.bottom - line.top) * height;
}

/// A voted line, whose ends stand in the order of x, by the height of its ends.
double At(const HoughLine& line, double height) {
    const bool falls = line.p1.y <= line.p2.y;
    const double top = falls ? line.p1.x : line.p2.x, bottom = falls ? line.p2.x : line.p1.x;
    return top + (bottom - top) * height;
}

/// How far the best line between the outer thirds stands above the next: 0 for equals.
double LeadOf(const std::vector<HoughLine>& lines, const PageLine& mid, int width) {
    int own = 0, next = 0;
    for (const HoughLine& line : lines) {
        const double x = At(line, 0.5);
        if (x < 0.3 * width || x > 0.7 * width)
            continue;
        const bool isOwn = std::fabs(x - At(mid, 0.5)) <= kSameLine * width;
        (isOwn ? own : next) = std::max(isOwn ? own : next, line.votes);
    }
    return own == 0 ? 0 : std::max(0.0, 1 - double(next) / own);
}

/// Whether the upper (first = 0) or lower (first = 0.5) half alone has a line there.
bool HalfSees(const CDibImage& edges, const PageLine& mid, double first, double scale, int width) {
    CDibImage half = edges;
    if (!half.IsValid())
        throw std::bad_alloc();
    const int rows = edges.GetHeight() / 2;
    if (trimImage(half, 0, first > 0 ? rows : 0, 0, first > 0 ? 0 : edges.GetHeight() - rows) == 0)
        return false;
    const auto lines = houghLines(half, {}, scale);
    return std::any_of(lines.begin(), lines.end(), [&](const HoughLine& line) {
        return std::fabs(At(line, 0) - At(mid, first)) <= kHalfSees * width &&
               std::fabs(At(line, 1) - At(mid, first + 0.5)) <= kHalfSees * width;
    });
}

double SureOf(const CDibImage& edges, const PageLine& mid, int width, int height) {
    const double scale = double(width) / edges.GetWidth();
    const double lead = LeadOf(houghLines(edges, {}, scale), mid, width);
    const int halves =
        int(HalfSees(edges, mid, 0, scale, width)) + int(HalfSees(edges, mid, 0.5, scale, width));
    const double aspect = std::clamp(
        (double(width) / height - kPageAspect) / (kSpreadAspect - kPageAspect), 0.0, 1.0);
    return (0.4 + 0.6 * std::min(1.0, lead / kFullLead)) * (0.2 + 0.4 * halves) *
           (0.3 + 0.7 * aspect);
}

}  // namespace

int measureSplit(const CDibImage& image, SplitFinding& finding) {
    finding = {};
    const int width = image.GetWidth(), height = image.GetHeight();
    if (!image.IsValid() || width < kSmallestSide || height < kSmallestSide)
        return 0;
    return RefuseWhenOutOfMemory([&] {
        CDibImage edges = smallGray(image);
        if (!edges.IsValid())
            return 0;
        edgeImage(edges, kGutterReach);
        CDibImage searched = edges;
        if (!searched.IsValid())
            return 0;
        finding.lines = findSpreadLines(searched, width, height);
        if (finding.lines.seesMid)
            finding.sure = SureOf(edges, finding.lines.mid, width, height);
        return 1;
    });
}

}  // namespace velloran
