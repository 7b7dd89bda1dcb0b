#pragma once

// What a run asks of the colour reduction.

#include "core/Pipeline.h"
#include "params/ParaBlock.h"

namespace velloran {

class CDibImage;

/// Fills the request from the block, with the depth of the file that the page was loaded from. When
/// anything was cut off the page (`layout`), the colour that is painted around it later is
/// protected: PARA_FILL_BLANK_COLOR as it stands where its three bytes are equal or the result
/// keeps colours, else its grey, which then also becomes the fill of the layout.
DecreaseBppRequest MakeReduceRequest(const ParaValues& values, const CDibImage& image,
                                     LayoutRequest& layout);

}  // namespace velloran
