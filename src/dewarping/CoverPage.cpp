#include "dewarping/CoverPage.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "dewarping/CylindricalSurfaceDewarper.h"

namespace velloran::dewarping {
namespace {

using QT::QPointF;
using Column = CylindricalSurfaceDewarper::Column;

constexpr int kNodes = 65;

/// From a to b of the flat page.
std::vector<Column> columnsBetween(const CylindricalSurfaceDewarper& surface, double a, double b) {
    std::vector<Column> columns;
    for (int i = 0; i < kNodes; ++i)
        columns.push_back(surface.columnAt(a + (b - a) * i / (kNodes - 1)));
    return columns;
}

/// The share of the height at which a column has that y.
double shareAt(const Column& column, double y) {
    return (y * column.w0 - column.y0) / (column.y1 - y * column.w1);
}

struct Span {
    int first = 0, last = kNodes - 1;
};

/// The shares of the height between which the lines of the content lie, their margin included.
struct Reach {
    double first = 1, last = 0;
};

Reach reachOf(const PageContent& content, const CylindricalSurfaceDewarper& surface) {
    constexpr double kLong = 0.25;  // of the width of the text
    Reach reach;
    for (const double shortest : {kLong, 0.0}) {
        for (const LineTrack& line : content.lines)
            if (line.length() >= shortest * (content.right - content.left))
                for (const QPointF& point : line.points) {
                    const double share = surface.toFlat(point).y / surface.flatHeight();
                    reach.first = std::min(reach.first, share);
                    reach.last = std::max(reach.last, share);
                }
        if (reach.first < reach.last)
            break;
    }
    const double margin = content.margin / surface.flatHeight();
    return {reach.first - margin, reach.last + margin};
}

/// The columns around the text in which all that reaches so far up is on the picture.
Span columnsOnPicture(const std::vector<Column>& columns, const PageContent& content,
                      double first) {
    const auto column = [&](int i) { return columns[static_cast<std::size_t>(i)]; };
    Span span;
    for (int i = 0; i < kNodes && column(i).at(0.5).x < content.left; ++i)
        if (shareAt(column(i), 0) > first)
            span.first = i + 1;
    for (int i = kNodes - 1; i >= 0 && column(i).at(0.5).x > content.right; --i)
        if (shareAt(column(i), 0) > first)
            span.last = i - 1;
    return span;
}

}  // namespace

std::optional<PageCurves> coverPage(const DistortionModel& model, const PageContent& content,
                                    int width, int height) {
    constexpr double kFurthest = 20;  // model heights beyond which nothing is believed
    const CylindricalSurfaceDewarper surface(model.top.polyline, model.bottom.polyline);
    std::vector<Column> columns = columnsBetween(surface, 0, surface.flatWidth());
    const Reach reach = reachOf(content, surface);
    const Span span = columnsOnPicture(columns, content, reach.first);
    if (span.last - span.first < 2)
        return std::nullopt;
    const double step = surface.flatWidth() / (kNodes - 1);
    columns = columnsBetween(surface, span.first * step, span.last * step);
    const double lastRow = height - 1.0;
    double above = -kFurthest, below = 1 + kFurthest;  // as far as all columns are on the picture
    for (const Column& column : columns) {
        above = std::max(above, shareAt(column, 0));
        below = std::min(below, shareAt(column, lastRow));
    }
    // Above the picture there are no points to tell a curve by; below it there are.
    const double slack = content.margin / surface.flatHeight();
    if (!(above < reach.first + slack) || !std::isfinite(reach.last))
        return std::nullopt;
    below = std::max(below, reach.last);
    PageCurves curves;
    for (const Column& column : columns) {
        const auto onPicture = [width](const QPointF& point) {
            return QPointF{std::clamp(point.x, 0.0, width - 1.0), point.y};
        };
        curves.top.push_back(onPicture(column.at(above)));
        curves.bottom.push_back(onPicture(column.at(below)));
    }
    return curves;
}

}  // namespace velloran::dewarping
