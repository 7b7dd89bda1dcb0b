#pragma once

// The loops under every tone change: samples through 256-byte tables. Where the processor can hold
// a table in registers, a sample costs a fraction of a table look-up.

#include <array>
#include <cstddef>
#include <cstdint>

#include "core/PlaneView.h"
#include "tone/PixelMap.h"

namespace velloran {

/// One table for each byte of a 24-bit pixel: blue, green, red.
using ChannelMaps = std::array<PixelMap, 3>;

/// Every sample of every row through the map; rows in parallel. An empty view is left alone.
void MapRows(const PixelMap& map, PlaneView pixels);

/// The same with a map of its own for each channel; the view has 3 channels.
void MapChannelRows(const ChannelMaps& maps, PlaneView pixels);

/// A run of samples, in place.
void MapBytes(const PixelMap& map, std::uint8_t* bytes, std::size_t count);

/// A run of 24-bit pixels, in place.
void MapPixels(const ChannelMaps& maps, std::uint8_t* bytes, std::size_t pixelCount);

}  // namespace velloran
