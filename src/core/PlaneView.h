#pragma once

// Views of pixel rows: what kernels and planes work on. A view owns nothing; padding lies outside
// every row that it hands out. Rows of an image's view are stored rows, the bottom row first.

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

namespace velloran {

/// One channel of a row: every `step`-th byte.
template <typename Byte>
struct BasicChannelRow {
    Byte* first = nullptr;
    int width = 0, step = 1;

    Byte& operator[](int x) const {
        assert(x >= 0 && x < width);
        return first[static_cast<std::ptrdiff_t>(x) * step];
    }
};

/// One channel of the pixels of a view.
template <typename Byte>
struct BasicChannelView {
    Byte* first = nullptr;
    int width = 0, height = 0, step = 1;
    std::ptrdiff_t stride = 0;

    BasicChannelRow<Byte> Row(int y) const {
        assert(y >= 0 && y < height);
        return {first + y * stride, width, step};
    }
};

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

    /// The pixels of a rectangle that lies inside.
    BasicPlaneView Crop(int x, int y, int cropWidth, int cropHeight) const {
        assert(x >= 0 && y >= 0 && cropWidth >= 0 && cropHeight >= 0);
        assert(x <= width - cropWidth && y <= height - cropHeight);
        return {first + y * stride + static_cast<std::ptrdiff_t>(x) * channels, cropWidth,
                cropHeight, channels, stride};
    }

    /// `count` whole rows from row y on.
    BasicPlaneView Rows(int y, int count) const { return Crop(0, y, width, count); }

    /// Channel 0 is blue, or the grey of one.
    BasicChannelView<Byte> Channel(int channel) const {
        assert(channel >= 0 && channel < channels);
        return {first + channel, width, height, channels, stride};
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
using ChannelView = BasicChannelView<std::uint8_t>;
using ConstChannelView = BasicChannelView<const std::uint8_t>;

}  // namespace velloran
