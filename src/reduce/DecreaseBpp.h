#pragma once

// The colour reduction of the pipeline: from the working image to the depth that the list of
// colours names.

#include <cstdint>

#include "core/DibImage.h"
#include "core/Pipeline.h"

namespace velloran {

/// While previewing the image keeps its depth and only looks reduced; else it ends at the depth of
/// the list (1, 4, 8 or 24 bits). 0 when the image holds no pixels afterwards.
int DecreaseBpp(CDibImage& image, bool previewing, DecreaseBppRequest request);

}  // namespace velloran
