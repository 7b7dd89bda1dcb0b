#pragma once

// Vibrance: dull colours gain or lose saturation, greys hardly move.

namespace velloran {

class CDibImage;

/// -100..200, positive values count double, 0 is neutral. 0, image unchanged, unless 24-bit.
int Vibrance(CDibImage& image, int amount);

/// Histogram equalisation, one table for all channels. Black-and-white images stay (1).
int HistEqualize(CDibImage& image);

}  // namespace velloran
