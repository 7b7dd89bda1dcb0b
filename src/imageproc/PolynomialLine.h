#pragma once

// A least-squares polynomial over a row or column of 8-bit samples.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace velloran::imageproc {

class PolynomialLine {
 public:
    /// Fits `count` samples that lie `step` apart. The degree is lowered where there are too few
    /// samples; a negative one, or no samples, throws std::invalid_argument.
    PolynomialLine(int degree, const std::uint8_t* samples, int count, std::ptrdiff_t step);

    /// The polynomial at `count` positions spread evenly over the fitted range, rounded and limited
    /// to 0..255.
    void output(std::uint8_t* samples, int count, std::ptrdiff_t step) const;

    /// At position t in 0..1 of the fitted range.
    double at(double t) const;

 private:
    std::vector<double> coefficients_;  // of powers of 2t - 1, lowest first
};

}  // namespace velloran::imageproc
