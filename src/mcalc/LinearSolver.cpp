#include "mcalc/LinearSolver.h"

#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>

namespace velloran::mcalc {
namespace {

double tolerance() {
    return std::sqrt(std::numeric_limits<double>::epsilon());
}

}  // namespace

LinearSolver::LinearSolver(std::size_t rowsA, std::size_t colsA, std::size_t colsB)
    : rowsA_(rowsA), colsA_(colsA), colsB_(colsB) {
    if (colsA > rowsA)
        throw std::runtime_error("LinearSolver: can's solve underdetermined systems");
}

void LinearSolver::eliminate(double* columns, std::size_t* rows) const {
    for (std::size_t k = 0; k < colsA_; ++k) {
        double* column = columns + k * rowsA_;
        std::size_t best = k;
        for (std::size_t i = k + 1; i < rowsA_; ++i)
            if (std::fabs(column[rows[i]]) > std::fabs(column[rows[best]]))
                best = i;
        // Written so that what is no number fails, too.
        if (!(std::fabs(column[rows[best]]) > tolerance()))
            throw std::runtime_error("LinearSolver: not a full rank matrix");
        std::swap(rows[k], rows[best]);
        for (std::size_t i = k + 1; i < rowsA_; ++i) {
            const double factor = column[rows[i]] / column[rows[k]];
            if (factor == 0)
                continue;
            for (std::size_t j = k + 1; j < colsA_ + colsB_; ++j)
                columns[j * rowsA_ + rows[i]] -= factor * columns[j * rowsA_ + rows[k]];
        }
    }
}

void LinearSolver::checkRest(const double* columns, const std::size_t* rows) const {
    for (std::size_t i = colsA_; i < rowsA_; ++i)
        for (std::size_t j = colsA_; j < colsA_ + colsB_; ++j)
            if (!(std::fabs(columns[j * rowsA_ + rows[i]]) <= tolerance()))
                throw std::runtime_error("LinearSolver: inconsistent overdetermined system");
}

void LinearSolver::solve(const double* a, double* x, const double* b, double* tempColumnMajor,
                         std::size_t* tempRows) const {
    for (std::size_t i = 0; i < rowsA_; ++i) {
        tempRows[i] = i;
        for (std::size_t j = 0; j < colsA_; ++j)
            tempColumnMajor[j * rowsA_ + i] = a[i * colsA_ + j];
        for (std::size_t j = 0; j < colsB_; ++j)
            tempColumnMajor[(colsA_ + j) * rowsA_ + i] = b[i * colsB_ + j];
    }
    eliminate(tempColumnMajor, tempRows);
    checkRest(tempColumnMajor, tempRows);
    for (std::size_t j = 0; j < colsB_; ++j) {
        const double* right = tempColumnMajor + (colsA_ + j) * rowsA_;
        for (std::size_t k = colsA_; k-- > 0;) {
            double value = right[tempRows[k]];
            for (std::size_t i = k + 1; i < colsA_; ++i)
                value -= tempColumnMajor[i * rowsA_ + tempRows[k]] * x[i * colsB_ + j];
            x[k * colsB_ + j] = value / tempColumnMajor[k * rowsA_ + tempRows[k]];
        }
    }
}

void LinearSolver::solve(const double* a, double* x, const double* b,
                         AbstractAllocator<double>& allocator) const {
    double* elements = allocator.allocate(scratchElements());
    solve(a, x, b, elements, allocator.allocateRows(rowsA_));
}

}  // namespace velloran::mcalc
