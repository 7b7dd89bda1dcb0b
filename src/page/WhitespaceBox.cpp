#include "page/WhitespaceBox.h"

#include <algorithm>
#include <vector>

#include "imageproc/MaxWhitespaceFinder.h"
#include "imageproc/RasterOp.h"
#include "imageproc/ReduceThreshold.h"

namespace velloran {
namespace {

using imageproc::BinaryImage;
using imageproc::BwColor;
using imageproc::max_whitespace_finder;

constexpr int kBandSteps = 1000;

struct BandPass {
    int count;        // rectangles at most
    bool horizontal;  // wide ones, and shrunk in height; else tall ones, in width
};

/// Clears empty bands out of the mask: each keeps its middle clear of the ones that follow.
void ClearBands(max_whitespace_finder finder, const BandPass& pass, int leastArea,
                BinaryImage& mask) {
    for (int i = 0; i < pass.count; ++i) {
        QT::QRect band = finder.next(max_whitespace_finder::kManualObstacles, kBandSteps);
        if (band.IsEmpty() || std::int64_t{band.Width()} * band.Height() < leastArea)
            return;
        mask.fill(band, BwColor::kWhite);
        const int fifth = (pass.horizontal ? band.Height() : band.Width()) / 5;
        (pass.horizontal ? band.top : band.left) += fifth;
        (pass.horizontal ? band.bottom : band.right) -= fifth;
        finder.addObstacle(band);
    }
}

/// Large empty areas of what the bands left, on a quarter of the size.
void ClearAreas(BinaryImage& mask) {
    imageproc::ReduceThreshold reduced(mask);
    reduced.reduce(1).reduce(1);
    if (reduced.image().width() < 1 || reduced.image().height() < 1)
        return;
    auto finder = max_whitespace_finder::make<imageproc::AreaCompare>(reduced.image());
    for (int i = 0; i < 10; ++i) {
        const QT::QRect area = finder.next(max_whitespace_finder::kAutoObstacles);
        if (area.IsEmpty())
            return;
        mask.fill(QT::QRect{area.left * 4, area.top * 4, area.right * 4 + 3, area.bottom * 4 + 3},
                  BwColor::kWhite);
    }
}

/// Black pixels of each row, or of each column, within a box.
std::vector<int> Projection(const BinaryImage& page, const QT::QRect& box, bool ofRows) {
    std::vector<int> counts(static_cast<std::size_t>(ofRows ? box.Height() : box.Width()));
    for (int y = box.top; y <= box.bottom; ++y)
        for (int x = box.left; x <= box.right; ++x)
            counts[static_cast<std::size_t>(ofRows ? y - box.top : x - box.left)] +=
                page.isBlack(x, y) ? 1 : 0;
    return counts;
}

/// How many lines at the front of a projection may go: what stands before the first gap, where it
/// is thin beside the gap behind it and holds next to nothing of the content.
int TrimOf(const std::vector<int>& lines, std::int64_t all) {
    const int size = static_cast<int>(lines.size());
    int at = 0;
    while (at < size && lines[static_cast<std::size_t>(at)] == 0)
        ++at;
    const int first = at;
    std::int64_t outside = 0;
    while (at < size && lines[static_cast<std::size_t>(at)] != 0)
        outside += lines[static_cast<std::size_t>(at++)];
    const int gap = at;
    while (at < size && lines[static_cast<std::size_t>(at)] == 0)
        ++at;
    constexpr std::int64_t kShare = 500;  // one part in so many is dirt
    if (at < size && gap - first < at - gap && outside * kShare < all)
        return at;
    return first;
}

bool TrimSide(const BinaryImage& content, int side, std::int64_t all, QT::QRect& box) {
    std::vector<int> lines = Projection(content, box, side == 1 || side == 3);
    if (side >= 2)
        std::reverse(lines.begin(), lines.end());
    const int trim = TrimOf(lines, all);
    int* const edges[] = {&box.left, &box.top, &box.right, &box.bottom};
    *edges[side] += side >= 2 ? -trim : trim;
    return trim != 0;
}

/// Until no side changes any more; a side that does arms the others.
QT::QRect TrimBox(const BinaryImage& content, QT::QRect box) {
    std::int64_t all = 0;
    for (const int count : Projection(content, box, /*ofRows=*/true))
        all += count;
    bool armed[4] = {true, true, true, true};
    for (bool any = true; any && !box.IsEmpty();) {
        any = false;
        for (int side = 0; side < 4 && !box.IsEmpty(); ++side) {
            if (!armed[side])
                continue;
            armed[side] = false;
            if (TrimSide(content, side, all, box)) {
                std::fill_n(armed, 4, true);
                armed[side] = false;
                any = true;
            }
        }
    }
    return box;
}

bool IsNoBox(const QT::QRect& box) {
    const int width = box.Width(), height = box.Height();
    return width < 8 || height < 8 || (width < 30 && height >= 20 * width);
}

}  // namespace

void findBoxByWhitespace(const BinaryImage& content, const BinaryImage& cleaned,
                         const BinaryImage& shadows, PageBox& box) {
    const int leastArea = std::min(content.width(), content.height());
    BinaryImage mask(content.size(), BwColor::kBlack);
    ClearBands(max_whitespace_finder::make<imageproc::PreferHorizontal>(cleaned), {80, true},
               leastArea, mask);
    ClearBands(max_whitespace_finder::make<imageproc::PreferVertical>(cleaned), {40, false},
               leastArea, mask);
    imageproc::rasterOp<imageproc::Intersect>(mask, cleaned);
    imageproc::rasterOp<imageproc::Intersect>(mask, content);
    if (!shadows.isNull())
        subtract(mask, shadows);
    ClearAreas(mask);
    const QT::QRect start = mask.contentBoundingBox();
    QT::QRect found = start;
    if (!start.IsEmpty()) {
        const QT::QRect trimmed = TrimBox(mask, start);
        if (!trimmed.IsEmpty() && !IsNoBox(trimmed))
            found = trimmed;
    }
    box = {found.left, found.top, found.right + 1, found.bottom + 1};
}

}  // namespace velloran
