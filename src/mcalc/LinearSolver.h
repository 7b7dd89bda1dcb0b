#pragma once

// Systems of linear equations, square or with more rows than unknowns where these agree: Gaussian
// elimination with the largest pivot of each column. (G. Golub, C. Van Loan, "Matrix
// Computations", 1983.)

#include <cstddef>

#include "mcalc/PoolAllocator.h"

namespace velloran::mcalc {

class LinearSolver {
 public:
    /// A has rowsA rows of colsA, B as many of colsB. More unknowns than rows throw
    /// std::runtime_error.
    LinearSolver(std::size_t rowsA, std::size_t colsA, std::size_t colsB);

    /// Finds X (colsA rows of colsB) with A X = B. All matrices are row-major; the scratch holds
    /// scratchElements() and rowsA values. Throws std::runtime_error for a matrix that is not of
    /// full rank, values that are no numbers, and rows that do not agree.
    void solve(const double* a, double* x, const double* b, double* tempColumnMajor,
               std::size_t* tempRows) const;
    /// The same with scratch from a pool.
    void solve(const double* a, double* x, const double* b,
               AbstractAllocator<double>& allocator) const;

    std::size_t scratchElements() const { return rowsA_ * (colsA_ + colsB_); }

 private:
    void eliminate(double* columns, std::size_t* rows) const;
    void checkRest(const double* columns, const std::size_t* rows) const;

    std::size_t rowsA_, colsA_, colsB_;
};

}  // namespace velloran::mcalc
