#pragma once

// A palette as a maker leaves it: entries blue, green, red, reserved, in order.

#include <cstdint>
#include <vector>

#include "core/BaseImage.h"

namespace velloran {

/// At most 256 entries; empty means that none could be made.
using Palette = std::vector<PaletteEntry>;

/// Channels of a colour 0x00BBGGRR as an entry, and back.
constexpr PaletteEntry EntryOf(std::uint32_t color) {
    return {static_cast<std::uint8_t>(color >> 16), static_cast<std::uint8_t>(color >> 8),
            static_cast<std::uint8_t>(color), 0};
}

}  // namespace velloran
