#pragma once

// Views of float samples, 1 or 3 interleaved channels, and an owner for them.

#include <cstddef>
#include <span>
#include <type_traits>

#include "core/PixelMemory.h"

namespace velloran {

template <typename Float>
struct BasicFloatView {
    Float* first = nullptr;
    int width = 0, height = 0, channels = 1;
    std::ptrdiff_t stride = 0;  // floats from a row to the next

    std::span<Float> Row(int y) const {
        return {first + y * stride, static_cast<std::size_t>(width) * channels};
    }
    /// `count` rows from row y on.
    BasicFloatView Rows(int y, int count) const {
        return {first + y * stride, width, count, channels, stride};
    }
    operator BasicFloatView<const Float>() const requires(!std::is_const_v<Float>) {
        return {first, width, height, channels, stride};
    }
};

using FloatView = BasicFloatView<float>;
using ConstFloatView = BasicFloatView<const float>;

/// Owner of a tight plane of floats; not cleared. Throws std::bad_alloc.
class FloatPlane {
 public:
    FloatPlane() = default;
    FloatPlane(int width, int height, int channels = 1)
        : memory_(MakePixelBuffer(sizeof(float) * static_cast<std::size_t>(width) *
                                  static_cast<std::size_t>(height) *
                                  static_cast<std::size_t>(channels))),
          view_{reinterpret_cast<float*>(memory_.get()), width, height, channels,
                static_cast<std::ptrdiff_t>(width) * channels} {}

    FloatView View() { return view_; }
    ConstFloatView View() const { return view_; }

 private:
    PixelBuffer memory_;
    FloatView view_;
};

}  // namespace velloran
