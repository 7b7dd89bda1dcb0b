#pragma once

// How large a view is, for deciding whether threads pay.

#include <cstdint>

#include "core/PlaneView.h"

namespace velloran {

/// Samples of all channels of a view.
inline std::int64_t SampleCount(ConstPlaneView view) {
    return std::int64_t{view.width} * view.channels * view.height;
}

}  // namespace velloran
