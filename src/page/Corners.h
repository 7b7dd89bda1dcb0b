#pragma once

// The four corners of a photographed page, each packed as PARA_CRT_PT_* hold it: x in the low half,
// y in the high half, signed, relative to the corner of the picture that is nearest. So one set
// serves pages of slightly different size.

#include <array>
#include <cstdint>

namespace velloran {

/// Left top, right top, right bottom, left bottom.
using PackedCorners = std::array<std::int32_t, 4>;

inline constexpr PackedCorners kNoCorners{0, 0, 0, 0};
/// To be searched when the page runs.
inline constexpr PackedCorners kUnknownCorners{-1, -1, -1, -1};

struct CornerPoint {
    int x = 0, y = 0;
    bool operator==(const CornerPoint&) const = default;
};
/// In pixels of a picture from its top left.
using TrueCorners = std::array<CornerPoint, 4>;

TrueCorners UnpackCorners(const PackedCorners& packed, int width, int height);
/// Coordinates wrap at 16 bits.
PackedCorners PackCorners(const TrueCorners& corners, int width, int height);

}  // namespace velloran
