#pragma once

// How large a picture may be.

#include <cstdint>

namespace velloran {

/// Pixels.
inline constexpr std::int64_t kMaxPicturePixels = 1'000'000'000;

}  // namespace velloran
