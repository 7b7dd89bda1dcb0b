#pragma once

// Margins and boxes in pixels, and cutting a page by them.

namespace velloran {

class CDibImage;

/// Per mille of the size on each side as pixels; below 3 pixels nothing is cut. Limited to 0..1000
/// per mille.
void marginsToPixels(int width, int height, int left, int top, int right, int bottom, int& outLeft,
                     int& outTop, int& outRight, int& outBottom);

/// Cuts pixels off the four sides in place; depth and palette stay. 1-bit images cut multiples of 8
/// at the left and right (4 and more go up), 4-bit images even numbers. 0, image unchanged, for an
/// empty image, negative values and cuts that leave nothing.
int trimImage(CDibImage& image, int left, int top, int right, int bottom);

/// A part of a page in pixels from the top left; right and bottom lie outside.
struct PageBox {
    int left = 0, top = 0, right = 0, bottom = 0;
    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
    bool operator==(const PageBox&) const = default;
};

}  // namespace velloran
