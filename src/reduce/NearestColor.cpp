#include "reduce/NearestColor.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "reduce/NearestColor.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

/// The smallest of 256 * (|entry|^2 - 2 entry * color) + index: in the order of the distance from
/// the colour, whose own length is the same for all, and then of the index.
std::int32_t SmallestKey(const NearestColor::Entries& entries, int count, int blue, int green,
                         int red) {
    constexpr int kLanes = 8;
    std::int32_t least[kLanes];
    for (std::int32_t& lane : least)
        lane = std::numeric_limits<std::int32_t>::max();
    for (int first = 0; first < count; first += kLanes)
        for (int i = 0; i < kLanes; ++i) {
            const auto at = static_cast<std::size_t>(first + i);
            const std::int32_t product =
                entries.blue[at] * blue + entries.green[at] * green + entries.red[at] * red;
            const std::int32_t key = entries.base[at] - product * 512;
            least[i] = key < least[i] ? key : least[i];
        }
    return *std::min_element(least, least + kLanes);
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(SmallestKey);

constexpr std::size_t kColors = std::size_t{1} << 24;
// Behind the last entry: more than any squared length of a colour minus twice a product.
constexpr std::int32_t kFar = 400000 * 256;

}  // namespace

NearestColor::NearestColor(const Palette& palette)
    : count_(static_cast<int>(std::min<std::size_t>(palette.size(), 256))) {
    entries_.base.fill(kFar);
    for (std::size_t i = 0; i < static_cast<std::size_t>(count_); ++i) {
        const PaletteEntry& entry = palette[i];
        entries_.blue[i] = entry.blue;
        entries_.green[i] = entry.green;
        entries_.red[i] = entry.red;
        entries_.base[i] =
            (entry.blue * entry.blue + entry.green * entry.green + entry.red * entry.red) * 256 +
            static_cast<std::int32_t>(i);
    }
    memory_.reset(static_cast<std::uint8_t*>(AllocatePixels(kColors / 8 + kColors)));
    if (memory_ != nullptr) {
        solved_ = memory_.get();
        index_ = solved_ + kColors / 8;
        std::memset(solved_, 0, kColors / 8);
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
    return static_cast<std::uint8_t>(
        HWY_DYNAMIC_DISPATCH(SmallestKey)(entries_, count_, blue, green, red) & 255);
}

}  // namespace velloran
#endif  // HWY_ONCE
