#pragma once

// A sheet of 8-bit shares, top row first: how much of each pixel one ink covers, or the paper, or
// the specks.

#include <cstdint>
#include <vector>

#include "samples/Coverage.h"
#include "samples/Shapes.h"

namespace velloran::samples {

class Plane {
 public:
    Plane() = default;
    /// All `value`.
    Plane(int width, int height, std::uint8_t value = 0);

    bool IsEmpty() const { return values_.empty(); }
    int Width() const { return width_; }
    int Height() const { return height_; }
    const std::uint8_t* Row(int y) const {
        return values_.data() + static_cast<std::size_t>(y) * width_;
    }
    std::uint8_t* Row(int y) { return values_.data() + static_cast<std::size_t>(y) * width_; }

    /// Brings the covered share of each pixel to `level`; 255 is ink, 0 is bare.
    void Paint(const Path& path, std::uint8_t level, Coverage& scratch);
    /// Ink where the outline and the mask both cover.
    void PaintMasked(const Path& path, const Coverage& mask, Coverage& scratch);

    /// The softness of a lens: weights 1, 2, 1 over 4 along each axis.
    void Soften();
    /// Mean over (2 * radius + 1) pixels along each axis, done twice.
    void Blur(int radius);

 private:
    template <typename Share>
    void Blend(const PixelBox& pixels, std::uint8_t level, Share share);
    void BlurRows(int radius);
    void BlurColumns(int radius);

    int width_ = 0, height_ = 0;
    std::vector<std::uint8_t> values_;
};

}  // namespace velloran::samples
