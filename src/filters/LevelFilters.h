#pragma once

// Sharpening and softening by level: tables of kernels.

namespace velloran {

class CDibImage;

/// Levels 1 to 12: 3 x 3 kernels of growing strength, then three 5 x 5 ones. Refuses other levels
/// and sides below 5; the filters refuse below 6. 0 when refused; the depth may be normalised.
int SharpenLevel(CDibImage& image, int level);

/// Levels 1 to 5: 3 x 3 kernels; 6 to 10: separable, 5 taps of a Gaussian with sigma 1.0 to 2.0.
/// Refuses other levels and sides below 5, from level 6 on below 6.
int BlurLevel(CDibImage& image, int level);

}  // namespace velloran
