#include "reduce/NearestColor.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#include "core/SimdTarget.h"

namespace velloran {
namespace {

constexpr std::size_t kColors = std::size_t{1} << 24;
constexpr int kFar = 512;  // farther from any level than levels are from each other
constexpr int kBlock = 16;

/// Squared distances of a block of entries.
VELLORAN_SIMD_CLONES
void Distances(const std::int16_t* blue, const std::int16_t* green, const std::int16_t* red, int b,
               int g, int r, std::int32_t* distance) {
    for (int i = 0; i < kBlock; ++i) {
        const int db = blue[i] - b, dg = green[i] - g, dr = red[i] - r;
        distance[i] = db * db + dg * dg + dr * dr;
    }
}

}  // namespace

NearestColor::NearestColor(const Palette& palette)
    : count_(static_cast<int>(std::min<std::size_t>(palette.size(), 256))) {
    blue_.fill(kFar);
    green_.fill(kFar);
    red_.fill(kFar);
    for (std::size_t i = 0; i < static_cast<std::size_t>(count_); ++i) {
        blue_[i] = palette[i].blue;
        green_[i] = palette[i].green;
        red_[i] = palette[i].red;
    }
    index_.reset(static_cast<std::uint8_t*>(AllocatePixels(kColors)));
    solved_.reset(static_cast<std::uint8_t*>(AllocatePixels(kColors / 8)));
    if (index_ == nullptr || solved_ == nullptr) {
        index_.reset();
        solved_.reset();
    } else {
        std::memset(solved_.get(), 0, kColors / 8);
    }
}

std::uint8_t NearestColor::Find(std::uint32_t color) {
    if (index_ != nullptr && (solved_[color >> 3] & 0x80 >> (color & 7)) != 0)
        return index_[color];
    const std::uint8_t index =
        Search(static_cast<int>(color & 255), static_cast<int>(color >> 8 & 255),
               static_cast<int>(color >> 16));
    if (index_ != nullptr) {
        index_[color] = index;
        solved_[color >> 3] = static_cast<std::uint8_t>(solved_[color >> 3] | 0x80 >> (color & 7));
    }
    return index;
}

std::uint8_t NearestColor::Search(int blue, int green, int red) const {
    std::int32_t least = std::numeric_limits<std::int32_t>::max();
    int nearest = 0;
    std::array<std::int32_t, kBlock> distance;
    for (int first = 0; first < count_ && least > 0; first += kBlock) {
        Distances(&blue_[static_cast<std::size_t>(first)], &green_[static_cast<std::size_t>(first)],
                  &red_[static_cast<std::size_t>(first)], blue, green, red, distance.data());
        for (int i = 0; i < kBlock; ++i)
            if (distance[static_cast<std::size_t>(i)] < least) {
                least = distance[static_cast<std::size_t>(i)];
                nearest = first + i;
            }
    }
    return static_cast<std::uint8_t>(nearest);
}

}  // namespace velloran
