#pragma once

// Minimum and maximum filters that thicken or thin dark strokes. The even windows look up and
// left, as the picture is seen.

namespace velloran {

class CDibImage;

/// Minimum over a window of 2, 3, 4 or 5 pixels a side (level 1 to 4): dark strokes grow.
/// Refuses other levels and sides below 6; 0 when refused, depth may be normalised.
int Darken(CDibImage& image, int level);

/// Maximum over the same windows: dark strokes shrink.
int Lighten(CDibImage& image, int level);

}  // namespace velloran
