#pragma once

// The grey test of a page that has just been loaded: a scan in colour whose pixels are all grey
// becomes 8-bit grey.

namespace velloran {

class CDibImage;

/// Modes of PARA_DECREASE_CHECK_GRAY.
enum GrayCheckMode : int { kGrayTolerant = 0, kGrayStrict = 1, kGrayOff = 2 };

/// True when no used colour has channels that differ by more than `tolerance`; palette entries
/// that no pixel uses do not count. Allocates nothing. False for an empty image.
bool IsGrayWithin(const CDibImage& image, int tolerance);

/// Modes 0 and 1: grey within 5 or 0 levels becomes 8-bit grey; other palette images become 24
/// bits. Mode 2, and any other: images above 8 bits stay, palette images as under mode 1. Source
/// record, DPI, planes and fields stay. Non-zero when it ran; 0, image unchanged, when empty or
/// without memory.
int CheckGray(CDibImage& image, int mode);

}  // namespace velloran
