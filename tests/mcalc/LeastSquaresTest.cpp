#include "mcalc/LeastSquares.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace velloran::mcalc {
namespace {

TEST(LeastSquares, SquareSystemIsSolvedExactly) {
    // 2x + y = 5, x - y = 1: x = 2, y = 1.
    const std::vector<double> x = leastSquares({2, 1, 1, -1}, {5, 1}, 2, 2);
    EXPECT_NEAR(x[0], 2, 1e-12);
    EXPECT_NEAR(x[1], 1, 1e-12);
}

TEST(LeastSquares, LineThroughScatteredPointsIsTheRegressionLine) {
    // (0, 1), (1, 3), (2, 4): slope 1.5, intercept 7 / 6 by the textbook formulas.
    const std::vector<double> x = leastSquares({1, 0, 1, 1, 1, 2}, {1, 3, 4}, 3, 2);
    EXPECT_NEAR(x[0], 7.0 / 6, 1e-12);
    EXPECT_NEAR(x[1], 1.5, 1e-12);
}

TEST(LeastSquares, DependentColumnGetsZero) {
    const std::vector<double> x = leastSquares({1, 2, 1, 2, 1, 2}, {3, 3, 3}, 3, 2);
    EXPECT_NEAR(x[0] + 2 * x[1], 3, 1e-12);
    EXPECT_EQ(x[1], 0);
}

TEST(LeastSquares, ColumnOfZerosGetsZero) {
    const std::vector<double> x = leastSquares({0, 1, 0, 2}, {2, 4}, 2, 2);
    EXPECT_EQ(x[0], 0);
    EXPECT_NEAR(x[1], 2, 1e-12);
}

TEST(LeastSquares, SizesThatDoNotFitThrow) {
    EXPECT_THROW(leastSquares({1, 2}, {1}, 1, 2), std::invalid_argument);
    EXPECT_THROW(leastSquares({}, {}, 0, 0), std::invalid_argument);
    EXPECT_THROW(leastSquares({1, 2}, {1}, 2, 1), std::invalid_argument);
}

}  // namespace
}  // namespace velloran::mcalc
