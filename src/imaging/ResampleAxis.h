#pragma once

// The one scheme behind all resizing: each output sample is a weighted sum of a run of source
// samples, first along the rows, then down the columns.

#include <cstddef>
#include <vector>

namespace velloran {

/// For each output position the first source index and the weights of the run from there; `taps`
/// weights a position, padded with zeros. Indices lie inside the source.
struct ResampleAxis {
    int taps = 0;
    std::vector<int> first;
    std::vector<float> weights;

    const float* WeightsOf(int position) const {
        return weights.data() + static_cast<std::ptrdiff_t>(position) * taps;
    }
};

ResampleAxis LanczosAxis(int sourceSize, int targetSize);
ResampleAxis AreaAxis(int sourceSize, int targetSize);
ResampleAxis LinearAxis(int sourceSize, int targetSize);

}  // namespace velloran
