#pragma once

// How much of each pixel an outline covers, by exact areas: signed areas of the edges are summed
// along each row.

#include <vector>

#include "samples/Shapes.h"

namespace velloran::samples {

struct PixelBox {
    int left = 0, top = 0, right = 0, bottom = 0;
    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
    bool IsEmpty() const { return right <= left || bottom <= top; }
};

/// The pixels that `bounds` touches inside a width x height frame.
PixelBox PixelsAround(const Bounds& bounds, int width, int height);

/// Scratch that is used again from outline to outline.
class Coverage {
 public:
    /// Fills the area `pixels` from the outline; parts outside are cut off.
    void Fill(const Path& path, const PixelBox& pixels);

    const PixelBox& Pixels() const { return pixels_; }
    /// Pixels().Width() values from 0 to 1, for row y of the frame.
    const float* Row(int y) const {
        return values_.data() + static_cast<std::size_t>(y - pixels_.top) * stride_;
    }

 private:
    void AddEdge(Point from, Point to);
    void AddInside(double x0, double y0, double x1, double y1, float direction);

    PixelBox pixels_;
    std::size_t stride_ = 0;
    std::vector<float> values_;
};

}  // namespace velloran::samples
