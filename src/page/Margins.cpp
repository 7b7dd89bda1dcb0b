#include "page/Margins.h"

#include "core/DibImage.h"

namespace velloran {

void marginsToPixels(int width, int height, int left, int top, int right, int bottom, int& outLeft,
                     int& outTop, int& outRight, int& outBottom) {
    outLeft = PerMilleToPixels(width, left);
    outTop = PerMilleToPixels(height, top);
    outRight = PerMilleToPixels(width, right);
    outBottom = PerMilleToPixels(height, bottom);
}

int trimImage(CDibImage& image, int left, int top, int right, int bottom) {
    return image.CropInPlace(left, top, right, bottom) ? 1 : 0;
}

}  // namespace velloran
