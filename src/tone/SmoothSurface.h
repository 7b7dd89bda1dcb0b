#pragma once

// A smooth surface over a page, a polynomial of low order in two variables, fitted to samples by
// least squares.

#include <array>
#include <cstdint>
#include <vector>

namespace velloran {

/// x and y run from 0 to 1 over the page.
struct SurfaceSample {
    double x = 0, y = 0, value = 0;
};

class SmoothSurface {
 public:
    static constexpr int kOrder = 4;

    /// The order drops where there are few samples, down to a constant; without any the surface is
    /// white. Values stay within those of the samples, so that it cannot run away where there are
    /// none. Throws std::bad_alloc.
    explicit SmoothSurface(const std::vector<SurfaceSample>& samples);

    double At(double x, double y) const;

    /// `width` levels of a row at height y, rounded to nearest, 0..255; x is pixel / (width - 1),
    /// and 0 for a width of 1.
    void Row(double y, int width, std::uint8_t* levels) const;

 private:
    using Polynomial = std::array<double, kOrder + 1>;
    Polynomial AlongRow(double y) const;  // coefficients of the powers of x, both within -1..1

    std::array<Polynomial, kOrder + 1> coefficients_{};  // by the power of y, then of x
    double lowest_ = 255, highest_ = 255;
};

}  // namespace velloran
