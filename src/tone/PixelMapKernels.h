#pragma once

// Loops for processors with byte permutes; only built for x86-64. None checks that the processor
// has them.

#include "tone/PixelMapRows.h"

namespace velloran {

// 256 bits: each sixteenth of the table in one register.
void MapBytesAvx2(const PixelMap& map, std::uint8_t* bytes, std::size_t count);
void MapPixelsAvx2(const ChannelMaps& maps, std::uint8_t* bytes, std::size_t pixelCount);

// 512 bits: the whole table in four registers.
void MapBytesAvx512(const PixelMap& map, std::uint8_t* bytes, std::size_t count);
void MapPixelsAvx512(const ChannelMaps& maps, std::uint8_t* bytes, std::size_t pixelCount);

}  // namespace velloran
