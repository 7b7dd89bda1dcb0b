#pragma once

// Views of pixel rows: what kernels and planes work on. A view owns nothing; padding lies outside
// every row that it hands out. Rows of an image's view are stored rows, the bottom row first.

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

namespace velloran {

template <typename Byte>
struct BasicPlaneView {
    Byte* first = nullptr;
    int width = 0, height = 0, channels = 1;  // in pixels; 1 or 3 bytes a pixel
    std::ptrdiff_t stride = 0;                // bytes from a row to the next

    /// width * channels samples of row y, 0 <= y < height.
    std::span<Byte> Row(int y) const {
        assert(y >= 0 && y < height);
        return {first + y * stride, static_cast<std::size_t>(width) * channels};
    }

    /// A rectangle of it, which lies within.
    BasicPlaneView Part(int left, int top, int partWidth, int partHeight) const {
        assert(left >= 0 && top >= 0 && partWidth >= 0 && partHeight >= 0 &&
               left + partWidth <= width && top + partHeight <= height);
        return {first + top * stride + std::ptrdiff_t{left} * channels, partWidth, partHeight,
                channels, stride};
    }

    /// The same pixels with the last row first.
    BasicPlaneView UpsideDown() const {
        if (height == 0)
            return *this;
        return {first + (height - 1) * stride, width, height, channels, -stride};
    }

    operator BasicPlaneView<const Byte>() const requires(!std::is_const_v<Byte>) {
        return {first, width, height, channels, stride};
    }
};

using PlaneView = BasicPlaneView<std::uint8_t>;
using ConstPlaneView = BasicPlaneView<const std::uint8_t>;

}  // namespace velloran
