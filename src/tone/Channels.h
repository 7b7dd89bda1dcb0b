#pragma once

// Channel swap, negative, and channel mixes to grey.

namespace velloran {

class CDibImage;

/// 1 red and blue, 2 red and green, 3 blue and green change places, in the palette where there is
/// one; grey images are left alone. Below 1 nothing is done (1), above 3 refused.
int SwapChannels(CDibImage& image, int which);

/// Pixels inverted; palettes inverted in their entries. A pure black-and-white image comes out
/// with black as index 0.
int Negate(CDibImage& image);

/// Grey by one of 13 mixes; 8-bit grey images stay, save for mode 13, and the bits of a 1-bit image
/// become 0 and 255 in every mode. Below 1 nothing is done (1), above 13 refused. 0, image
/// unchanged, without memory.
int CombineChannels(CDibImage& image, int mode);

/// Sepia by `strength` 0..1: in colour, or its luminance in grey.
int Sepia(CDibImage& image, double strength, bool toGray);

/// Grey by the channel weights that keep most of the contrast. (C. Lu, L. Xu, J. Jia, "Contrast
/// Preserving Decolorization with Perception-Based Quality Metrics", 2014.)
int ContrastGray(CDibImage& image);

}  // namespace velloran
