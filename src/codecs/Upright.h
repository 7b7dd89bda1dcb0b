#pragma once

// Turns pictures that were stored lying or mirrored. Internal to the codecs.

namespace velloran {

class CDibImage;

/// True for orientations (1..8, as EXIF and TIFF count them) that swap width and height.
bool SwapsSides(int orientation);

/// Turns an image that was stored in orientation 2..8 upright, its alpha plane too; others stay.
/// Row padding and DPI are not looked after. Throws std::bad_alloc.
void TurnUpright(CDibImage& image, int orientation);

/// Gives an image that was turned upright the resolutions along its stored rows and columns.
void SetUprightDpi(CDibImage& image, int orientation, int xDpi, int yDpi);

}  // namespace velloran
