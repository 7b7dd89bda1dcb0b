#include "imageproc/PolynomialLine.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "core/Rounding.h"
#include "mcalc/LeastSquares.h"

namespace velloran::imageproc {
namespace {

double position(int index, int count) {
    return count < 2 ? 0.0 : static_cast<double>(index) / (count - 1);
}

}  // namespace

PolynomialLine::PolynomialLine(int degree, const std::uint8_t* samples, int count,
                               std::ptrdiff_t step) {
    if (degree < 0 || count < 1)
        throw std::invalid_argument("PolynomialLine: degree is invalid");
    const std::size_t rows = static_cast<std::size_t>(count);
    const std::size_t terms = static_cast<std::size_t>(std::min(degree, count - 1)) + 1;
    std::vector<double> matrix(rows * terms), values(rows);
    for (std::size_t i = 0; i < rows; ++i) {
        const double x = 2 * position(static_cast<int>(i), count) - 1;
        double power = 1;
        for (std::size_t j = 0; j < terms; ++j, power *= x)
            matrix[i * terms + j] = power;
        values[i] = samples[static_cast<std::ptrdiff_t>(i) * step];
    }
    coefficients_ = mcalc::leastSquares(std::move(matrix), std::move(values), rows, terms);
}

double PolynomialLine::at(double t) const {
    const double x = 2 * t - 1;
    double value = 0;
    for (auto it = coefficients_.rbegin(); it != coefficients_.rend(); ++it)
        value = value * x + *it;
    return value;
}

void PolynomialLine::output(std::uint8_t* samples, int count, std::ptrdiff_t step) const {
    for (int i = 0; i < count; ++i)
        samples[i * step] = ClampToByte(RoundHalf(at(position(i, count))));
}

}  // namespace velloran::imageproc
