#pragma once

// The picture of a curved page through its surface onto a flat grid.

#include <cstdint>

#include "core/QtTypes.h"

namespace velloran {
class CDibImage;
}

namespace velloran::dewarping {

class CylindricalSurfaceDewarper;

/// Kernels: what takes a place between pixels.
enum ResampleMode : int { kNearestPixel = 0, kLinear = 1, kCubic = 2, kCubicToo = 3 };

/// The image becomes `outSize` pixels that show `rect` (inclusive, in flat coordinates) of the
/// surface. Grey stays grey with the mean of the background's channels, all else becomes 24-bit;
/// what lies outside the picture takes the background (0x00BBGGRR). An alpha plane goes along by
/// the nearest pixel. Other modes count as kCubic. 0, image unchanged but for its depth, for a
/// size without pixels or above the limits of a picture; throws std::bad_alloc.
int resample(int mode, CDibImage& image, QT::QSize outSize,
             const CylindricalSurfaceDewarper& surface, const QT::QRect& rect,
             std::uint32_t background);

}  // namespace velloran::dewarping
