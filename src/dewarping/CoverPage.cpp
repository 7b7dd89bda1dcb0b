#include "dewarping/CoverPage.h"

#include <algorithm>

#include "dewarping/CylindricalSurfaceDewarper.h"

namespace velloran::dewarping {

PageCurves coverPage(const DistortionModel& model, int width, int height) {
    constexpr int kNodes = 65;
    constexpr double kFurthest = 20;  // model heights beyond which nothing is believed
    const CylindricalSurfaceDewarper surface(model.top.polyline, model.bottom.polyline);
    const double last = height - 1.0;
    std::vector<CylindricalSurfaceDewarper::Column> columns;
    double above = -kFurthest, below = 1 + kFurthest;
    for (int i = 0; i < kNodes; ++i) {
        const auto column = surface.columnAt(surface.flatWidth() * i / (kNodes - 1));
        columns.push_back(column);
        // y = (y0 + y1 v) / (w0 + w1 v) is 0 here, and `last` there.
        above = std::max(above, -column.y0 / column.y1);
        below = std::min(below, (last * column.w0 - column.y0) / (column.y1 - last * column.w1));
    }
    above = std::min(above, 0.0);
    below = std::max(below, 1.0);
    PageCurves curves;
    for (const auto& column : columns) {
        const auto onPicture = [width](QT::QPointF point) {
            return QT::QPointF{std::clamp(point.x, 0.0, width - 1.0), point.y};
        };
        curves.top.push_back(onPicture(column.at(above)));
        curves.bottom.push_back(onPicture(column.at(below)));
    }
    return curves;
}

}  // namespace velloran::dewarping
