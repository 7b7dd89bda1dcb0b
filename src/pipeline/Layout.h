#pragma once

// The layout record of a run.

#include "core/Pipeline.h"
#include "params/ParaBlock.h"

namespace velloran {

/// The record as the block asks for it, for a page of this size before its box is cut; nothing is
/// cut yet, and the computed fields are 0.
LayoutRequest MakeLayoutRequest(const ParaValues& values, int imageWidth, int imageHeight);

/// The size of the content on a page of free size: what the cut left, in percent, truncated and
/// limited to what an int holds. 0 by 0 for a record without an image.
void ScaleContent(LayoutRequest& request);

}  // namespace velloran
