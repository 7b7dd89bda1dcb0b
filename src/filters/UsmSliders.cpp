#include "filters/UsmSliders.h"

#include <algorithm>

namespace velloran {

int UsmAmountAt(int position) {
    const int s = std::clamp(position, 1, 260);
    if (s <= 200)
        return s;
    if (s <= 233)
        return 3 * s - 400;
    return s <= 250 ? 6 * (s - 183) : 10 * (s - 210);
}

int UsmAmountPosition(int amount) {
    if (amount <= 200)
        return amount;
    if (amount <= 300)
        return 200 + (amount - 200) / 3;
    return amount <= 400 ? 233 + (amount - 300) / 6 : 250 + (amount - 400) / 10;
}

int UsmRadiusAt(int position) {
    const int s = std::clamp(position, 0, 280);
    if (s <= 100)
        return s;
    if (s <= 250)
        return 6 * s - 500;
    return s <= 260 ? 30 * s - 6500 : 60 * s - 14300;
}

int UsmRadiusPosition(int radiusTenths) {
    if (radiusTenths <= 100)
        return radiusTenths;
    if (radiusTenths <= 250)
        return 100 + (radiusTenths - 100) / 6;
    return radiusTenths <= 260 ? 250 + (radiusTenths - 250) / 30 : 260 + (radiusTenths - 260) / 60;
}

int UsmThresholdAt(int position) {
    const int s = std::clamp(position, 0, 211);
    return s <= 201 ? s : 5 * (s - 160);
}

int UsmThresholdPosition(int threshold) {
    return threshold <= 201 ? threshold : 200 + (threshold - 200) / 5;
}

}  // namespace velloran
