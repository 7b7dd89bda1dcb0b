#include "page/PageLines.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <vector>

#include "core/DibImage.h"
#include "core/Refusal.h"
#include "core/Rounding.h"
#include "page/EdgeImage.h"
#include "page/HoughLines.h"
#include "page/PackedLine.h"

namespace velloran {
namespace {

constexpr int kSmallestSide = 10;

/// What one search sees; lines that it does not see are absent.
struct SeenLines {
    std::optional<PageLine> left, right, mid;
};

struct LineSearch {
    int width = 0, height = 0;  // of the page
    bool strict = false;
    LineLimits limits{};  // in pixels of the page
};

PageLine OrderEnds(const HoughLine& line, int height) {
    const QT::QPointF top = line.p1.y <= line.p2.y ? line.p1 : line.p2;
    const QT::QPointF bottom = line.p1.y <= line.p2.y ? line.p2 : line.p1;
    const double rise = bottom.y - top.y;
    const double slope = rise == 0 ? 0 : (bottom.x - top.x) / rise;
    const auto at = [&](double y) {
        return static_cast<int>(std::floor(top.x + slope * (y - top.y) + 0.5));
    };
    return {at(0), at(height - 1)};
}

LineLimits ScaledLimits(const LineLimits& limits, double scale) {
    const auto scaled = [scale](std::int32_t packed) {
        const PageLine line = UnpackLine(packed);
        return packed == 0 ? 0
                           : PackLine({static_cast<int>(line.top / scale),
                                       static_cast<int>(line.bottom / scale)});
    };
    return {scaled(limits.left), scaled(limits.right)};
}

/// The line with the most votes in the left part, the right part and between, the first of equals.
SeenLines SortLines(const LineSearch& search, const CDibImage& edges) {
    const double scale = static_cast<double>(search.width) / edges.GetWidth();
    const int third = RoundHalf((search.strict ? 0.3333 : 0.3) * search.width);
    SeenLines seen;
    int votes[3] = {};
    for (const HoughLine& line : houghLines(edges, ScaledLimits(search.limits, scale), scale)) {
        const int mean = RoundHalf((line.p1.x + line.p2.x) / 2);
        const int kind = mean < third ? 0 : mean > search.width - third ? 1 : 2;
        if (line.votes <= votes[kind])
            continue;
        votes[kind] = line.votes;
        (kind == 0   ? seen.left
         : kind == 1 ? seen.right
                     : seen.mid) = OrderEnds(line, search.height);
    }
    return seen;
}

PageLine Mirrored(const PageLine& line, int width) {
    return {width - line.top, width - line.bottom};
}

LineLimits MirroredLimits(const LineLimits& limits, int width) {
    const auto mirrored = [width](std::int32_t packed) {
        return packed == 0 ? 0 : PackLine(Mirrored(UnpackLine(packed), width));
    };
    return {mirrored(limits.right), mirrored(limits.left)};
}

/// A line at the right is looked for again from the other side, so that it is the outer flank of
/// an edge as the left one is; so is a gutter beyond the middle.
void SearchFromTheRight(const LineSearch& search, CDibImage& edges, SeenLines& seen) {
    edges.Flip(FlipMode::kMirror);
    LineSearch turned = search;
    turned.limits = MirroredLimits(search.limits, search.width);
    const SeenLines again = SortLines(turned, edges);
    if (again.left && (again.left->top > 0 || again.left->bottom > 0))
        seen.right = Mirrored(*again.left, search.width);
    if (seen.mid && again.mid && (seen.mid->top + seen.mid->bottom) / 2 > search.width / 2)
        seen.mid = Mirrored(*again.mid, search.width);
}

UprightLines findVerticalLines(const LineSearch& search, CDibImage& edges) {
    SeenLines seen = SortLines(search, edges);
    if (seen.right)
        SearchFromTheRight(search, edges, seen);
    const auto orLimit = [](const std::optional<PageLine>& line, std::int32_t limit, int edge) {
        return line ? *line : limit != 0 ? UnpackLine(limit) : PageLine{edge, edge};
    };
    const int middle = search.width >> 1;
    return {orLimit(seen.left, search.limits.left, 0),
            orLimit(seen.right, search.limits.right, search.width - 1),
            seen.mid.value_or(PageLine{middle, middle}),
            seen.left.has_value(),
            seen.right.has_value(),
            seen.mid.has_value()};
}

/// Columns become rows: the top row of the picture becomes its left column.
CDibImage Transposed(const CDibImage& gray) {
    CDibImage turned;
    if (turned.Create(gray.GetHeight(), gray.GetWidth(), 8) == nullptr)
        return {};
    turned.SetGrayPalette();
    const ConstPlaneView from = TopDownViewOf(gray);
    const PlaneView to = TopDownViewOf(turned);
    for (int y = 0; y < to.height; ++y)
        for (int x = 0; x < to.width; ++x)
            to.Row(y).data()[x] = from.Row(x).data()[y];
    return turned;
}

/// A corner as x and y of the page, 0 and 0 where the lines are parallel.
struct Corner {
    int x = 0, y = 0;
};

Corner Crossing(const PageLine& upright, const PageLine& flat, int width, int height) {
    Corner corner;
    crossLines({double(upright.top), 0}, {double(upright.bottom), height - 1.0},
               {0, double(flat.top)}, {width - 1.0, double(flat.bottom)}, corner.x, corner.y);
    return corner;
}

void FindCorners(const LineSearch& search, const CDibImage& small, const UprightLines& upright,
                 std::int32_t* out) {
    CDibImage turned = Transposed(small);
    if (!turned.IsValid())
        throw std::bad_alloc();
    edgeImage(turned, kSideReach);
    LineSearch across{search.height, search.width, search.strict, {}};
    const UprightLines flat = findVerticalLines(across, turned);
    const int width = search.width, height = search.height;
    const auto pack = [](const Corner& corner, int fromX, int fromY) {
        return PackLine({corner.x - fromX, corner.y - fromY});
    };
    out[0] = pack(Crossing(upright.left, flat.left, width, height), 0, 0);
    out[1] = pack(Crossing(upright.right, flat.left, width, height), width - 1, 0);
    out[2] = pack(Crossing(upright.right, flat.right, width, height), width - 1, height - 1);
    out[3] = pack(Crossing(upright.left, flat.right, width, height), 0, height - 1);
}

}  // namespace

UprightLines findSpreadLines(CDibImage& edges, int pageWidth, int pageHeight) {
    return findVerticalLines({pageWidth, pageHeight, /*strict=*/false, {}}, edges);
}

int findPageLines(const CDibImage& image, int mode, std::int32_t* out, std::int32_t leftLimit,
                  std::int32_t rightLimit) {
    if (!image.IsValid() || image.GetWidth() < kSmallestSide || image.GetHeight() < kSmallestSide)
        return 0;
    return RefuseWhenOutOfMemory([&] {
        const CDibImage small = smallGray(image);
        CDibImage edges = small;
        if (!edges.IsValid())
            return 0;
        edgeImage(edges, mode == kFourCorners ? kSideReach : kGutterReach);
        const LineSearch search{
            image.GetWidth(), image.GetHeight(), mode != kLeftRightMid, {leftLimit, rightLimit}};
        const UprightLines lines = findVerticalLines(search, edges);
        if (mode == kFourCorners) {
            FindCorners(search, small, lines, out);
            return 1;
        }
        out[0] = PackLine(lines.left);
        out[1] = PackLine(lines.right);
        if (mode == kLeftRightMid)
            out[2] = PackLine(lines.mid);
        return 1;
    });
}

}  // namespace velloran
