#pragma once

// Automatic levels, contrast, brightness and bleach: twelve ways to stretch the tone range of a
// page from its own histogram.

#include "tone/AutoLevelsTables.h"  // ClipPoints and StretchTable, for those who stretch tones

namespace velloran {

class CDibImage;

inline constexpr int kAutoLevelsModes = 12;

/// Modes 1 to 12 as listed for PARA_AUTO_LEVELS. 0 for an image below 2 x 2 (untouched) and, after
/// the depth was normalised, for a mode out of range; bleach also wants 3 x 3 and 10 pixels.
int AutoLevels(CDibImage& image, int mode);

}  // namespace velloran
