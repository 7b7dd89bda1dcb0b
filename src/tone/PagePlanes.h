#pragma once

// The depth of the page steps that judge paper by its channels, and those channels one by one.

#include <functional>

#include "core/PlaneView.h"

namespace velloran {

class CDibImage;

/// 8-bit grey stays. Otherwise palettes become 24-bit when colour is kept; when it is not, all
/// becomes 8-bit grey by 0.114 blue + 0.587 green + 0.299 red. 0 for an invalid image, sides below
/// 8 and without memory.
int PreparePagePlanes(CDibImage& image, bool keepColor);

/// Calls `work` with the one plane of an 8-bit image, or with a copy of each channel of a 24-bit
/// one, blue first, rows from the top. The image takes the result when all planes are done: a plane
/// for which `work` gives 0 or throws std::bad_alloc refuses the whole and the image stays.
/// For 8 bits `work` runs on the image itself and has to refuse before its first change.
int WorkOnPagePlanes(CDibImage& image, const std::function<int(PlaneView)>& work);

}  // namespace velloran
