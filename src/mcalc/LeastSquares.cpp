#include "mcalc/LeastSquares.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace velloran::mcalc {
namespace {

/// The length of column `k` below its diagonal, without overflow. From operations alone whose last
/// bit is the same everywhere: fits feed pixels.
double lengthOf(const std::vector<double>& a, std::size_t rows, std::size_t columns,
                std::size_t k) {
    double largest = 0;
    for (std::size_t i = k; i < rows; ++i)
        largest = std::max(largest, std::abs(a[i * columns + k]));
    if (largest == 0)
        return 0;
    const double scale = std::ldexp(1.0, -std::clamp(std::ilogb(largest), -1000, 1000));
    double square = 0;
    for (std::size_t i = k; i < rows; ++i) {
        const double value = a[i * columns + k] * scale;
        square += value * value;
    }
    return std::sqrt(square) / scale;
}

/// Turns column `k` below its diagonal to zero and returns whether it held anything new.
bool reflectColumn(std::vector<double>& a, std::vector<double>& b, std::size_t rows,
                   std::size_t columns, std::size_t k, double tolerance) {
    const double norm = lengthOf(a, rows, columns, k);
    if (norm <= tolerance)
        return false;
    std::vector<double> v(rows - k);
    for (std::size_t i = k; i < rows; ++i)
        v[i - k] = a[i * columns + k];
    v[0] += v[0] < 0 ? -norm : norm;
    double square = 0;
    for (const double value : v)
        square += value * value;
    const auto reflect = [&](double* first, std::size_t stride) {
        double dot = 0;
        for (std::size_t i = 0; i < v.size(); ++i)
            dot += v[i] * first[i * stride];
        const double scale = 2 * dot / square;
        for (std::size_t i = 0; i < v.size(); ++i)
            first[i * stride] -= scale * v[i];
    };
    for (std::size_t j = k; j < columns; ++j)
        reflect(&a[k * columns + j], columns);
    reflect(&b[k], 1);
    return true;
}

}  // namespace

std::vector<double> leastSquares(std::vector<double> matrix, std::vector<double> rightSide,
                                 std::size_t rows, std::size_t columns) {
    if (columns == 0 || rows < columns || matrix.size() != rows * columns ||
        rightSide.size() != rows)
        throw std::invalid_argument("leastSquares: sizes do not fit");
    double largest = 0;
    for (const double value : matrix)
        largest = std::max(largest, std::abs(value));
    const double tolerance = largest * static_cast<double>(rows) * 1e-14;
    std::vector<bool> usable(columns);
    for (std::size_t k = 0; k < columns; ++k)
        usable[k] = reflectColumn(matrix, rightSide, rows, columns, k, tolerance);
    std::vector<double> x(columns, 0.0);
    for (std::size_t k = columns; k-- > 0;) {
        if (!usable[k])
            continue;
        double value = rightSide[k];
        for (std::size_t j = k + 1; j < columns; ++j)
            value -= matrix[k * columns + j] * x[j];
        x[k] = value / matrix[k * columns + k];
    }
    return x;
}

}  // namespace velloran::mcalc
