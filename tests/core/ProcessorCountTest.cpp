#include "core/ProcessorCount.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace velloran::test {
namespace {

TEST(ProcessorCount, QuotasRoundUp) {
    EXPECT_EQ(ProcessorsOfCpuMax("200000 100000"), 2);
    EXPECT_EQ(ProcessorsOfCpuMax("150000 100000"), 2);
    EXPECT_EQ(ProcessorsOfCpuMax("1000 100000"), 1);
    for (const char* none : {"max 100000", "-1 100000", "", "x", "100000", "100000 0", "1 y"})
        EXPECT_EQ(ProcessorsOfCpuMax(none), 0) << none;
    EXPECT_EQ(ProcessorsOfCpuMax("9223372036854775807 1"), 4096);
}

TEST(ProcessorCount, TheEnvironmentGivesItsFirstNumber) {
    EXPECT_EQ(ThreadsOfEnvironment("4"), 4);
    EXPECT_EQ(ThreadsOfEnvironment(" 4,2"), 4);
    for (const char* none : {"", "0", "-3", "many", "4x", "99999999999"})
        EXPECT_EQ(ThreadsOfEnvironment(none), 0) << none;
}

TEST(ProcessorCount, ObeysTheEnvironment) {
    setenv("OMP_NUM_THREADS", "1", 1);
    EXPECT_EQ(CountProcessors(), 1);
    unsetenv("OMP_NUM_THREADS");
    EXPECT_GE(CountProcessors(), 1);
}

}  // namespace
}  // namespace velloran::test
