#include "page/Corners.h"

namespace velloran {
namespace {

/// Whether a corner counts from the right, and from the bottom.
constexpr std::array<std::array<bool, 2>, 4> kFarSides = {
    {{false, false}, {true, false}, {true, true}, {false, true}}};

}  // namespace

TrueCorners UnpackCorners(const PackedCorners& packed, int width, int height) {
    TrueCorners corners;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const auto bits = static_cast<std::uint32_t>(packed[i]);
        corners[i] = {static_cast<std::int16_t>(bits) + (kFarSides[i][0] ? width : 0),
                      static_cast<std::int16_t>(bits >> 16) + (kFarSides[i][1] ? height : 0)};
    }
    return corners;
}

PackedCorners PackCorners(const TrueCorners& corners, int width, int height) {
    PackedCorners packed;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const int x = corners[i].x - (kFarSides[i][0] ? width : 0);
        const int y = corners[i].y - (kFarSides[i][1] ? height : 0);
        packed[i] = static_cast<std::int32_t>((static_cast<std::uint32_t>(y) & 0xFFFFU) << 16 |
                                              (static_cast<std::uint32_t>(x) & 0xFFFFU));
    }
    return packed;
}

}  // namespace velloran
