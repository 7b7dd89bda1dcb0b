#include "dewarping/DistortionModel.h"

#include <algorithm>
#include <cmath>

namespace velloran::dewarping {

bool isConvexFigure(const QT::QPointF& a, const QT::QPointF& b, const QT::QPointF& c,
                    const QT::QPointF& d) {
    constexpr double kLeastTurn = 0.01;
    const QT::QPointF* corners[] = {&a, &b, &c, &d};
    double turns[4];
    for (int i = 0; i < 4; ++i) {
        const QT::QPointF &from = *corners[i], &at = *corners[(i + 1) % 4],
                          &to = *corners[(i + 2) % 4];
        turns[i] = (at.x - from.x) * (to.y - at.y) - (at.y - from.y) * (to.x - at.x);
    }
    const auto [least, most] = std::minmax_element(turns, turns + 4);
    return *least * *most > 0 && std::fabs(*least) >= kLeastTurn && std::fabs(*most) >= kLeastTurn;
}

bool DistortionModel::isValid() const {
    return top.isValid() && bottom.isValid() &&
           isConvexFigure(top.polyline.front(), top.polyline.back(), bottom.polyline.back(),
                          bottom.polyline.front());
}

}  // namespace velloran::dewarping
