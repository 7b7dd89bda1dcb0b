#pragma once

// Retinex by ratios and resets along paths of halving length. (J. Frankle, J. McCann, "Method and
// Apparatus for Lightness Imaging", 1983; B. Funt, F. Ciurea, J. McCann, "Retinex in MATLAB",
// 2004.)

namespace velloran {

class CDibImage;

/// Each channel by itself, in 16-bit logarithms. Channels whose levels span less than 10 stay; a
/// picture in which all do becomes white. 0, image unchanged but for its depth, for an invalid
/// image and without memory.
int FrankleMcCannRetinex(CDibImage& image, int iterations);

}  // namespace velloran
