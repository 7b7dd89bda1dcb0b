#pragma once

// BMP files put together field by field.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "support/Images.h"

namespace velloran::test {

/// Little-endian bytes of a value.
std::string Le(std::uint32_t value, int bytes);

struct BmpParts {
    std::uint32_t headSize = 40;  // 12: OS/2; fields that a short head has no room for are left out
    int width = 1, height = 1, bits = 24;
    std::uint32_t compression = 0, colorsUsed = 0;
    int xPerMeter = 0, yPerMeter = 0;
    std::vector<std::uint32_t> masks = {};  // inside heads above 40 bytes, else behind the head
    std::vector<Rgb> palette = {};
    std::string pixels = {};
    std::optional<std::uint32_t> pixelOffset = {};  // instead of the true one
};

std::string BuildBmp(const BmpParts& parts);

}  // namespace velloran::test
