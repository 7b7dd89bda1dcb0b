#pragma once

// Luma of a run of 24-bit pixels, by LumaOf.

#include <cstddef>
#include <cstdint>

namespace velloran {

void LumaOfPixels(const std::uint8_t* pixels, std::size_t pixelCount, std::uint8_t* luma);

}  // namespace velloran
