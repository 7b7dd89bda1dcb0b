#pragma once

// Shadows of a scanner's lid, of the gutter and of the desk around a page: broad dark bars that
// reach the edge of the picture.

#include "imageproc/BinaryImage.h"

namespace velloran {

/// Divides a black-and-white page into shadows and the rest. A bar of 300 by 14 pixels or more, or
/// 14 by 300, is taken for a shadow with all that is joined to it, as long as it reaches an edge: a
/// thick rule or the dark frame of a picture within the page is content. Throws std::bad_alloc.
void removeShadows(const imageproc::BinaryImage& src, imageproc::BinaryImage& content,
                   imageproc::BinaryImage& shadows);

/// Takes out of the bars what is not like a shadow: what no path joins to the edge of the picture,
/// 2 pixels wide. Throws std::bad_alloc.
imageproc::BinaryImage filterShadows(const imageproc::BinaryImage& shadows);

}  // namespace velloran
