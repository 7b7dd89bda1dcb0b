#pragma once

// Thresholds: a page becomes levels 0 and 255, at 8 bits. Each returns non-zero when it ran, 0 when
// refused.

#include <cstdint>

#include "core/DibImage.h"
#include "core/Pipeline.h"
#include "reduce/Palette.h"

namespace velloran {

/// Grey targets without dither. With a palette of other than 2 entries each level becomes the
/// nearest level; with 2 the midpoint decides; without a palette the threshold method of the
/// request. The image becomes 8-bit. 0 for an empty image.
int Threshold(CDibImage& image, const Palette* palette, const DecreaseBppRequest& request);

/// The threshold that maximises the variance between classes, the lowest of equals; levels above
/// it are light. -1 for an empty histogram. (N. Otsu, "A Threshold Selection Method from Gray-Level
/// Histograms", 1979.)
int OtsuThreshold(const CDibImage& gray);

/// Local threshold from mean and deviation in a window; below `lowBound` black, above `highBound`
/// white. Window sides become odd; below 3 refused. Time does not depend on the window. (C. Wolf,
/// J.-M. Jolion, "Extraction and Recognition of Artificial Text in Multimedia Documents", 2003.)
int WolfThreshold(CDibImage& image, int windowWidth, int windowHeight, int lowBound, int highBound,
                  bool keepDepth);

/// A histogram threshold per block, mixed with that of the whole image by `balance` 0..1.
int BlockThreshold(CDibImage& image, bool keepDepth, int blockSize, float balance);

/// 8-bit image of two levels to 1 bit: black below 128.
int PackBilevel(CDibImage& image);

}  // namespace velloran
