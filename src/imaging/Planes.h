#pragma once

// Channels apart and together, and colour to grey by weights.

#include <array>
#include <cstdint>

#include "core/PlaneView.h"

namespace velloran {

/// Channel 0 is blue. Sizes are equal; `plane` has 1 channel, `pixels` 3.
void ExtractChannel(ConstPlaneView pixels, int channel, PlaneView plane);
void InsertChannel(ConstPlaneView plane, int channel, PlaneView pixels);

/// The channel `pixels` points at, of `count` pixels of three bytes.
void ExtractChannelRow(const std::uint8_t* pixels, int count, std::uint8_t* out);

/// Blue, green and red at once.
void MergeChannels(const std::array<ConstPlaneView, 3>& planes, PlaneView pixels);

/// blue * wb + green * wg + red * wr in 32-bit floats, rounded to nearest, saturated.
struct GrayWeights {
    float blue, green, red;
};
void WeightedGray(ConstPlaneView pixels, GrayWeights weights, PlaneView gray);

}  // namespace velloran
