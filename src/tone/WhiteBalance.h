#pragma once

// White balance: the pixels that are nearest to white without being of a color say what white is.
// (C. Weng, H. Chen, C. Fuh, "A Novel Automatic White Balance Method for Digital Still Cameras",
// 2005.)

namespace velloran {

class CDibImage;

/// Mode 1 balances the white point, from 2 on the black point as well. A page too dark for a white
/// point gets the first automatic levels instead. 0 for modes below 1, an invalid image, sides
/// below 2, grey pages (the depth is normalised) and without memory.
int WhiteBalance(CDibImage& image, int mode);

}  // namespace velloran
