#pragma once

// Small linear least squares by Householder reflections (G. Golub, "Numerical Methods for Solving
// Linear Least Squares Problems", 1965).

#include <cstddef>
#include <vector>

namespace velloran::mcalc {

/// The x that makes |A x - b| smallest. `matrix` is row-major with `rows` >= `columns` >= 1; both
/// operands are used up. A column that depends on earlier ones gets the coefficient 0. Sizes that
/// do not fit throw std::invalid_argument.
std::vector<double> leastSquares(std::vector<double> matrix, std::vector<double> rightSide,
                                 std::size_t rows, std::size_t columns);

}  // namespace velloran::mcalc
