#include "pipeline/Split.h"

#include <gtest/gtest.h>

namespace velloran {
namespace {

TEST(EffectiveSplit, ASinglePageKeepsLeftToRightOnEitherSide) {
    EXPECT_EQ(effectiveSplit(1), 1);
    EXPECT_EQ(effectiveSplit(0x101), 1);
}

TEST(EffectiveSplit, ADoublePageKeepsTheHalfThatBit8Selects) {
    EXPECT_EQ(effectiveSplit(2), 2);
    EXPECT_EQ(effectiveSplit(3), 2);
    EXPECT_EQ(effectiveSplit(0x102), 3);
    EXPECT_EQ(effectiveSplit(0x103), 3);
}

TEST(EffectiveSplit, AnyOtherKindIsNoSplit) {
    for (const int type : {0, 0x100, 4, 0x104, 255, -1, 0x200, -2147483647 - 1})
        EXPECT_EQ(effectiveSplit(type), 0) << type;
}

TEST(EffectiveSplit, BitsAboveTheSideAreIgnored) {
    EXPECT_EQ(effectiveSplit(0x7FFFFE02), 2);
    EXPECT_EQ(effectiveSplit(0x7FFFFF02), 3);
}

}  // namespace
}  // namespace velloran
