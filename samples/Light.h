#pragma once

// How brightly each place of a scan is lit: a factor from 0 to 1 on what paper and ink give back.

#include <optional>
#include <span>
#include <vector>

#include "samples/Shapes.h"

namespace velloran::samples {

struct Light {
    double base = 1;
    /// Change from the left edge to the right one, and from the top to the bottom.
    double slopeX = 0, slopeY = 0;
    /// Loss at the middle of an edge of the picture against its centre.
    double falloff = 0;

    /// A soft shadow over one corner, darkest in `center`, gone at `reach` pixels from it.
    struct Corner {
        Point center;
        double reach = 1, depth = 0;
    };
    std::optional<Corner> corner;

    /// The valley between two pages, darkest on the line from `top` to `bottom`.
    struct Gutter {
        Point top, bottom;
        double width = 1, depth = 0;  // width: where a third of the shade is left
    };
    std::optional<Gutter> gutter;
};

class LightField {
 public:
    LightField(const Light& light, int width, int height);
    /// One factor a pixel, taken in the pixel's middle.
    void FillRow(int y, std::span<float> factors) const;

 private:
    Light light_;
    int width_, height_;
    std::vector<float> shade_;  // by quarters of a pixel from the gutter
};

}  // namespace velloran::samples
