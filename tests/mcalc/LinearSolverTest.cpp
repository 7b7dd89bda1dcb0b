#include "mcalc/LinearSolver.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

namespace velloran::test {
namespace {

using mcalc::DynamicPoolAllocator;
using mcalc::LinearSolver;
using mcalc::StaticPoolAllocator;

/// What `work` throws, as text; empty when it throws nothing.
template <typename Work>
std::string TextThrown(Work&& work) {
    try {
        work();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return {};
}

TEST(LinearSolver, SolvesWithTheLargestPivotOfEachColumn) {
    // The first pivot is 0: 2 y = 4, 3 x + y = 11.
    const double a[] = {0, 2, 3, 1}, b[] = {4, 11};
    double x[2];
    StaticPoolAllocator<double, 36, 3> pool;
    LinearSolver(2, 2, 1).solve(a, x, b, pool);
    EXPECT_DOUBLE_EQ(x[0], 3);
    EXPECT_DOUBLE_EQ(x[1], 2);
}

TEST(LinearSolver, SolvesForSeveralRightSidesAtOnce) {
    // The inverse of a matrix, by hand: determinant 1.
    const double a[] = {2, 3, 1, 2}, unit[] = {1, 0, 0, 1};
    double x[4];
    DynamicPoolAllocator<double> pool;
    LinearSolver(2, 2, 2).solve(a, x, unit, pool);
    const double inverse[] = {2, -3, -1, 2};
    for (int i = 0; i < 4; ++i)
        EXPECT_NEAR(x[i], inverse[i], 1e-14);
}

TEST(LinearSolver, MoreRowsThanUnknownsMayAgree) {
    const double a[] = {1, 1, 1, -1, 2, 5}, b[] = {5, 1, 16};  // x = 3, y = 2
    double x[2];
    DynamicPoolAllocator<double> pool;
    LinearSolver(3, 2, 1).solve(a, x, b, pool);
    EXPECT_NEAR(x[0], 3, 1e-14);
    EXPECT_NEAR(x[1], 2, 1e-14);
}

TEST(LinearSolver, TellsWhyItCannotSolve) {
    double x[3];
    DynamicPoolAllocator<double> pool;
    EXPECT_EQ(TextThrown([] { LinearSolver(2, 3, 1); }),
              "LinearSolver: can's solve underdetermined systems");
    const double dependent[] = {1, 2, 2, 4}, right[] = {1, 2};
    EXPECT_EQ(TextThrown([&] { LinearSolver(2, 2, 1).solve(dependent, x, right, pool); }),
              "LinearSolver: not a full rank matrix");
    const double rows[] = {1, 0, 0, 1, 1, 1}, wrong[] = {1, 2, 4};
    EXPECT_EQ(TextThrown([&] { LinearSolver(3, 2, 1).solve(rows, x, wrong, pool); }),
              "LinearSolver: inconsistent overdetermined system");
    const double noNumbers[] = {std::nan(""), 1, 1, 1};
    EXPECT_EQ(TextThrown([&] { LinearSolver(2, 2, 1).solve(noNumbers, x, right, pool); }),
              "LinearSolver: not a full rank matrix");
}

TEST(LinearSolver, ThePivotMustBeAboveTheRootOfTheSmallestStep) {
    const double tolerance = std::sqrt(2.220446049250313e-16), right[] = {1};
    double x[1];
    DynamicPoolAllocator<double> pool;
    const double above = tolerance * 1.001;
    LinearSolver(1, 1, 1).solve(&above, x, right, pool);
    EXPECT_DOUBLE_EQ(x[0], 1 / above);
    EXPECT_NE(TextThrown([&] { LinearSolver(1, 1, 1).solve(&tolerance, x, right, pool); }), "");
}

TEST(LinearSolver, WhatItFindsSolvesRandomSystems) {
    std::mt19937 random(7);
    const auto value = [&random] { return static_cast<double>(random() % 2001) / 100 - 10; };
    for (std::size_t n = 1; n <= 20; ++n) {
        std::vector<double> a(n * n), b(n), x(n);
        for (double& element : a)
            element = value();
        for (double& element : b)
            element = value();
        DynamicPoolAllocator<double> pool;
        LinearSolver(n, n, 1).solve(a.data(), x.data(), b.data(), pool);
        for (std::size_t row = 0; row < n; ++row) {
            double sum = 0;
            for (std::size_t column = 0; column < n; ++column)
                sum += a[row * n + column] * x[column];
            EXPECT_NEAR(sum, b[row], 1e-8) << "row " << row << " of " << n;
        }
    }
}

TEST(StaticPool, RunningPastItThrows) {
    StaticPoolAllocator<double, 4, 9> pool;
    pool.allocate(3);
    EXPECT_EQ(TextThrown([&] { pool.allocate(2); }), "StaticPool overflow");
    EXPECT_NE(pool.allocate(1), nullptr);
    EXPECT_NE(pool.allocateRows(4), nullptr);
    EXPECT_EQ(TextThrown([&] { pool.allocateRows(1); }), "StaticPool overflow");
}

TEST(StaticPool, GivesOutNoMoreBlocksThanItHas) {
    StaticPoolAllocator<double, 36, 3> pool;
    double* first = pool.allocate(1);
    double* second = pool.allocate(1);
    EXPECT_EQ(second, first + 1);
    pool.allocateRows(1);
    EXPECT_EQ(TextThrown([&] { pool.allocate(1); }), "StaticPool overflow");
}

TEST(StaticPool, HoldsAHomography) {
    StaticPoolAllocator<double, 128, 9> pool;
    std::vector<double> unit(64), b(8, 2.0), x(8);
    for (std::size_t i = 0; i < 8; ++i)
        unit[9 * i] = 4;
    LinearSolver(8, 8, 1).solve(unit.data(), x.data(), b.data(), pool);
    for (const double value : x)
        EXPECT_EQ(value, 0.5);
}

}  // namespace
}  // namespace velloran::test
