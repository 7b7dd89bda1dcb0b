#pragma once

// Luma of a run of 24-bit pixels, by LumaOf.

#include <cstddef>
#include <cstdint>
#include <span>

namespace velloran {

/// A way to work it out; all give the same bytes.
struct LumaWay {
    const char* name;
    bool (*isSupported)();  // by this processor
    void (*run)(const std::uint8_t* pixels, std::size_t pixelCount, std::uint8_t* luma);
};

/// All ways that this program was built with, the plain loop first, the fastest last.
std::span<const LumaWay> LumaWays();

/// The last of them that this processor supports.
const LumaWay& BestLumaWay();

}  // namespace velloran
