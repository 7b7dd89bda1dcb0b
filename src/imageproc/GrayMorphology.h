#pragma once

// Erosion and closing of 8-bit grey images by a brick. Offsets are in the picture as it is seen, y
// downward.

#include <cstdint>

#include "core/DibImage.h"
#include "imageproc/Brick.h"

namespace velloran::imageproc {

/// Minimum over the samples at the brick's offsets; beyond the edge lies `outsideValue`. An image
/// that is not 8-bit, or an empty brick, throws std::invalid_argument.
CDibImage erodeGray(const CDibImage& image, const Brick& brick, std::uint8_t outsideValue);

/// Dilation over the rectangle grown by the brick, then erosion to the image's rectangle: dark
/// spots that the brick does not fit into go.
CDibImage closeGray(const CDibImage& image, QT::QSize size, std::uint8_t outsideValue);

}  // namespace velloran::imageproc
