#pragma once

// Histograms of a page. Rows are counted in parallel, each thread for itself; the counts are whole
// numbers and the same for any number of threads.

#include <array>

#include "core/PlaneView.h"
#include "tone/AutoLevelsTables.h"

namespace velloran {

/// All bytes of the rows.
Histogram CountBytes(ConstPlaneView pixels);

/// Blue, green and red of a view of 3 channels.
std::array<Histogram, 3> CountChannels(ConstPlaneView pixels);

/// Luma of a view of 3 channels, by LumaOf.
Histogram CountLuma(ConstPlaneView pixels);

/// Blue, green, red and luma in one pass.
std::array<Histogram, 4> CountChannelsAndLuma(ConstPlaneView pixels);

}  // namespace velloran
