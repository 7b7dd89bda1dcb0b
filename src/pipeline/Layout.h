#pragma once

// The layout record of a run.

#include "core/Pipeline.h"
#include "params/ParaBlock.h"

namespace velloran {

/// The record as the block asks for it, for a page of this size before its box is cut; nothing is
/// cut yet, and the computed fields are 0.
LayoutRequest MakeLayoutRequest(const ParaValues& values, int imageWidth, int imageHeight);

}  // namespace velloran
