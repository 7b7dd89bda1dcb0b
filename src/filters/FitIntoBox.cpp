#include "filters/FitIntoBox.h"

#include <algorithm>

#include "core/Rounding.h"

namespace velloran {

BoxSize FitIntoBox(BoxSize size, BoxSize box) {
    if (size.width <= box.width && size.height <= box.height)
        return size;
    const float ratioWidth = static_cast<float>(box.width) / static_cast<float>(size.width);
    const float ratioHeight = static_cast<float>(box.height) / static_cast<float>(size.height);
    const float aspect = static_cast<float>(size.width) / static_cast<float>(size.height);
    if (ratioWidth > ratioHeight) {
        const float width = static_cast<float>(box.height) * aspect + 0.5F;
        return {std::min(TruncToInt(static_cast<double>(width)), box.width), box.height};
    }
    const float height = static_cast<float>(box.width) / aspect + 0.5F;
    return {box.width, std::min(TruncToInt(static_cast<double>(height)), box.height)};
}

}  // namespace velloran
