#pragma once

// The dark end of a page's tones.

namespace velloran {

class CDibImage;

/// The grey level up to which about a thousandth of the pixels is dark: from level 0 the counts are
/// added as long as that brings the sum no further from a thousandth of the pixels (rounded). A
/// walk of the same kind from 255 gives the light end; the smaller of the two is returned. Colours
/// count by (117 B + 601 G + 306 R) >> 10, palettes by their entries. 0 for an empty image.
int findDarkLevel(const CDibImage& image);

}  // namespace velloran
