#include "dewarping/PageEdges.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <utility>
#include <vector>

#include "core/Rounding.h"
#include "dewarping/TraceImage.h"
#include "reduce/Binarize.h"
#include "reduce/ComponentList.h"

namespace velloran::dewarping {
namespace {

using QT::QLineF;
using QT::QPointF;

constexpr int kBlack = 0, kWhite = 255;

constexpr int kWindow = 10;  // of the threshold

/// The middle band holds text, not edges.
struct MiddleBand {
    int first, end;
};
MiddleBand middleBandOf(int height) {
    const int first = TruncToInt(height * 0.875 * 0.5);
    return {first, first + TruncToInt(height * 0.125)};
}

void blank(PlaneView rows, const MiddleBand& band) {
    for (int y = std::max(0, band.first); y < std::min(rows.height, band.end); ++y)
        std::fill(rows.Row(y).begin(), rows.Row(y).end(), std::uint8_t{kWhite});
}

int widthOf(const Component& c) {
    return c.maxX - c.minX + 1;
}

/// Erases all but the widest component above the middle and the widest that reaches below it; of
/// equal ones that nearer the edge stays. False, picture blank, when there is no pair.
bool keepTopAndBottom(CDibImage& page) {
    const PlaneView rows = TopDownViewOf(page);
    const ComponentList list(rows);
    const Component *top = nullptr, *bottom = nullptr;
    for (const Component& c : list.Components()) {
        if (c.IsEmpty())
            continue;
        if (c.maxY > rows.height / 2) {
            if (bottom == nullptr || widthOf(c) > widthOf(*bottom) ||
                (widthOf(c) == widthOf(*bottom) && c.maxY > bottom->maxY))
                bottom = &c;
        } else if (top == nullptr || widthOf(c) > widthOf(*top) ||
                   (widthOf(c) == widthOf(*top) && c.minY < top->minY)) {
            top = &c;
        }
    }
    for (int y = 0; y < rows.height; ++y)
        std::fill(rows.Row(y).begin(), rows.Row(y).end(), std::uint8_t{kWhite});
    if (top == nullptr || bottom == nullptr)
        return false;
    for (const Component* kept : {top, bottom}) {
        const Run* run = list.RunsOf(*kept);
        for (int i = 0; i < kept->runs; ++i, ++run)
            std::fill(rows.Row(run->y).begin() + run->x1, rows.Row(run->y).begin() + run->x2 + 1,
                      std::uint8_t{kBlack});
    }
    return true;
}

/// Of each upright run of black that pixel stays which looks to the middle: an edge may be that of
/// a dark ground. Runs that the middle band has cut are none.
void thinUpright(PlaneView rows, const MiddleBand& band) {
    for (int x = 0; x < rows.width; ++x)
        for (int y = 0; y < rows.height; ++y) {
            int end = y;
            while (end < rows.height && rows.Row(end)[static_cast<std::size_t>(x)] == kBlack)
                ++end;
            if (end == y)
                continue;
            const bool isCut = end == band.first || y == band.end;
            const int kept = isCut ? -1 : (y < band.first ? end - 1 : y);
            for (int at = y; at < end; ++at)
                rows.Row(at)[static_cast<std::size_t>(x)] =
                    at == kept ? std::uint8_t{kBlack} : std::uint8_t{kWhite};
            y = end;
        }
}

/// Black pixels without a black neighbour go.
void clearIsolated(PlaneView rows) {
    const auto isBlack = [&](int x, int y) {
        return x >= 0 && y >= 0 && x < rows.width && y < rows.height &&
               rows.Row(y)[static_cast<std::size_t>(x)] == kBlack;
    };
    std::vector<std::pair<int, int>> isolated;
    for (int y = 0; y < rows.height; ++y)
        for (int x = 0; x < rows.width; ++x) {
            if (!isBlack(x, y))
                continue;
            int neighbors = -1;
            for (int dy = -1; dy <= 1; ++dy)
                for (int dx = -1; dx <= 1; ++dx)
                    neighbors += isBlack(x + dx, y + dy) ? 1 : 0;
            if (neighbors == 0)
                isolated.emplace_back(x, y);
        }
    for (const auto& [x, y] : isolated)
        rows.Row(y)[static_cast<std::size_t>(x)] = kWhite;
}

/// An edge: its y in each column, -1 where it has none, and the columns of its useful run.
struct EdgeTable {
    std::vector<int> y;
    int first = 0, last = -1;

    int length() const { return last - first + 1; }
};

EdgeTable readEdge(PlaneView rows, bool isTop) {
    EdgeTable table{std::vector<int>(static_cast<std::size_t>(rows.width), -1)};
    const int middle = rows.height / 2;
    for (int x = 0; x < rows.width; ++x)
        for (int i = 0; i < (isTop ? middle : rows.height - middle); ++i) {
            const int y = isTop ? i : rows.height - 1 - i;
            if (rows.Row(y)[static_cast<std::size_t>(x)] != kBlack)
                continue;
            table.y[static_cast<std::size_t>(x)] = y;
            break;
        }
    // The longest run without a gap or a jump.
    constexpr int kWidestGap = 12, kHighestJump = 6;
    int begin = -1, previous = -1;
    for (int x = 0; x < rows.width; ++x) {
        const int y = table.y[static_cast<std::size_t>(x)];
        if (y < 0)
            continue;
        if (begin < 0 || x - previous > kWidestGap ||
            std::abs(y - table.y[static_cast<std::size_t>(previous)]) >
                kHighestJump + (x - previous))
            begin = x;
        previous = x;
        if (x - begin > table.last - table.first)
            table.first = begin, table.last = x;
    }
    return table;
}

/// Cuts off the ends of an edge that turn away from its course by more than the tolerance.
bool trimEdge(EdgeTable& table) {
    constexpr int kTolerance = 40, kLookAhead = 40;
    const auto turns = [&](int x, int inward) {
        const int ahead = std::clamp(x + inward * kLookAhead, table.first, table.last);
        const int a = table.y[static_cast<std::size_t>(x)];
        const int b = table.y[static_cast<std::size_t>(ahead)];
        return a < 0 || (b >= 0 && std::abs(a - b) > kTolerance);
    };
    const int first = table.first, last = table.last;
    while (table.length() > 2 && turns(table.first, 1))
        ++table.first;
    while (table.length() > 2 && turns(table.last, -1))
        --table.last;
    return table.first != first || table.last != last;
}

void eraseOutside(PlaneView rows, const EdgeTable& table, bool isTop) {
    const int middle = rows.height / 2;
    for (int y = isTop ? 0 : middle; y < (isTop ? middle : rows.height); ++y)
        for (int x = 0; x < rows.width; ++x)
            if (x < table.first || x > table.last)
                rows.Row(y)[static_cast<std::size_t>(x)] = kWhite;
}

/// The run as a smooth polyline: means over a few columns.
std::vector<QPointF> polylineOf(const EdgeTable& table) {
    constexpr int kReach = 6, kStep = 8;
    std::vector<QPointF> polyline;
    for (int x = table.first; x <= table.last; x += kStep) {
        double sum = 0, sumX = 0;
        int count = 0;
        for (int at = std::max(table.first, x - kReach); at <= std::min(table.last, x + kReach);
             ++at)
            if (table.y[static_cast<std::size_t>(at)] >= 0) {
                sum += table.y[static_cast<std::size_t>(at)];
                sumX += at;
                ++count;
            }
        if (count > 0 && (polyline.empty() || sumX / count > polyline.back().x + 1))
            polyline.push_back({sumX / count, sum / count});
    }
    return polyline;
}

/// The nearest column with an edge, from x inward.
std::optional<QPointF> cornerOf(const EdgeTable& table, int x, int inward) {
    for (; x >= table.first && x <= table.last; x += inward)
        if (table.y[static_cast<std::size_t>(x)] >= 0)
            return QPointF{double(x), double(table.y[static_cast<std::size_t>(x)])};
    return std::nullopt;
}

/// The straight line through both, from row 0 to the last, within the picture's columns.
QLineF boundThrough(const QPointF& top, const QPointF& bottom, int width, int height) {
    const auto at = [&](double y) {
        const double x = bottom.y > top.y
                             ? top.x + (bottom.x - top.x) * (y - top.y) / (bottom.y - top.y)
                             : top.x;
        return QPointF{std::clamp(x, 0.0, width - 1.0), y};
    };
    return {at(0), at(height - 1.0)};
}

}  // namespace

double tracePageEdges(const CDibImage& gray, DistortionModelBuilder& builder, int width) {
    constexpr int kLowBound = 50, kHighBound = 254, kInset = 2;
    constexpr double kShortestEdge = 0.4;  // of the width
    CopyPlace place;
    CDibImage copy = prepareTraceImage(gray, CopySize::kMedium, place);
    if (copy.GetWidth() < 8 * kInset || copy.GetHeight() < 8 * kInset)
        return 0;
    const PlaneView rows = TopDownViewOf(copy);
    MiddleBand band = middleBandOf(rows.height);
    blank(rows, band);
    if (WolfThreshold(copy, kWindow, kWindow, kLowBound, kHighBound, /*keepDepth=*/true) == 0)
        return 0;
    // Beside the band the threshold took its border for an edge.
    band = {band.first - kWindow, band.end + kWindow};
    blank(rows, band);
    if (!keepTopAndBottom(copy))
        return 0;
    thinUpright(rows, band);
    clearIsolated(rows);
    EdgeTable top, bottom;
    for (int round = 0; round < 2; ++round) {
        if (!keepTopAndBottom(copy))
            return 0;
        top = readEdge(rows, true);
        bottom = readEdge(rows, false);
        const bool trimmedTop = trimEdge(top), trimmedBottom = trimEdge(bottom);
        if (std::min(top.length(), bottom.length()) < kShortestEdge * copy.GetWidth())
            return 0;
        if (!trimmedTop && !trimmedBottom)
            break;
        eraseOutside(rows, top, true);
        eraseOutside(rows, bottom, false);
    }
    const auto leftTop = cornerOf(top, top.first + kInset, 1);
    const auto leftBottom = cornerOf(bottom, bottom.first + kInset, 1);
    const auto rightTop = cornerOf(top, top.last - kInset, -1);
    const auto rightBottom = cornerOf(bottom, bottom.last - kInset, -1);
    const std::vector<QPointF> upper = polylineOf(top), lower = polylineOf(bottom);
    if (!leftTop || !leftBottom || !rightTop || !rightBottom || upper.size() < 2 ||
        lower.size() < 2)
        return 0;
    DistortionModelBuilder own({0, 1});
    own.setVerticalBounds(boundThrough(*leftTop, *leftBottom, copy.GetWidth(), copy.GetHeight()),
                          boundThrough(*rightTop, *rightBottom, copy.GetWidth(), copy.GetHeight()));
    own.addHorizontalCurve(upper);
    own.addHorizontalCurve(lower);
    own.transform(place.scale, place.offset);
    builder.setVerticalBounds(own.leftBound(), own.rightBound());
    for (const auto& curve : own.curves())
        builder.addHorizontalCurve(curve);
    return std::min(top.length(), bottom.length()) * place.scale.x / width;
}

}  // namespace velloran::dewarping
