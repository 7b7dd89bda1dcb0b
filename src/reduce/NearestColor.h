#pragma once

// Search for the palette entry nearest to a colour: squared distance without weights, the lowest
// index on ties, each distinct colour searched once.

#include <array>
#include <cstdint>

#include "core/PixelMemory.h"
#include "reduce/Palette.h"

namespace velloran {

class NearestColor {
 public:
    /// Channels apart, padded to whole vectors with entries that never win.
    struct Entries {
        alignas(32) std::array<std::int32_t, 256> blue{}, green{}, red{};
        alignas(32) std::array<std::int32_t, 256> base{};  // 256 * squared length + index
    };

    /// The cache of 18 MiB is made here; without memory for it each colour is searched anew, with
    /// the same results.
    explicit NearestColor(const Palette& palette);

    /// Index of the nearest entry.
    std::uint8_t operator()(std::uint8_t blue, std::uint8_t green, std::uint8_t red) {
        const std::uint32_t color =
            std::uint32_t{red} << 16 | std::uint32_t{green} << 8 | std::uint32_t{blue};
        if (color != lastColor_) {
            lastIndex_ = Find(color);
            lastColor_ = color;
        }
        return lastIndex_;
    }

 private:
    std::uint8_t Find(std::uint32_t color);
    std::uint8_t Search(int blue, int green, int red) const;

    Entries entries_;
    int count_;
    PixelBuffer memory_;              // of both; one block, as each is rounded up to large pages
    std::uint8_t* solved_ = nullptr;  // a bit by colour
    std::uint8_t* index_ = nullptr;   // by colour
    std::uint32_t lastColor_ = 0xFFFFFFFF;
    std::uint8_t lastIndex_ = 0;
};

}  // namespace velloran
