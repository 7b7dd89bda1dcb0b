#include "filters/UsmSliders.h"

#include <gtest/gtest.h>

#include <limits>

namespace velloran {
namespace {

constexpr int kLeast = std::numeric_limits<int>::min(), kMost = std::numeric_limits<int>::max();

struct Pair {
    int position, value;
};

TEST(UsmSliders, AmountIsFineUpTo200AndCoarserInThreeSteps) {
    for (const auto& [position, value] : {Pair{1, 1},
                                          {50, 50},
                                          {200, 200},
                                          {201, 203},
                                          {233, 299},
                                          {234, 306},
                                          {250, 402},
                                          {251, 410},
                                          {260, 500},
                                          {0, 1},
                                          {261, 500},
                                          {kLeast, 1},
                                          {kMost, 500}})
        EXPECT_EQ(UsmAmountAt(position), value) << position;
}

TEST(UsmSliders, EveryPositionOfTheAmountComesBack) {
    for (int position = 1; position <= 260; ++position)
        EXPECT_EQ(UsmAmountPosition(UsmAmountAt(position)), position);
    EXPECT_EQ(UsmAmountPosition(202), 200);  // between two positions
    EXPECT_EQ(UsmAmountPosition(301), 233);
    EXPECT_EQ(UsmAmountPosition(401), 250);
    EXPECT_EQ(UsmAmountPosition(-7), -7);
    EXPECT_EQ(UsmAmountPosition(kMost), 250 + (kMost - 400) / 10);
    EXPECT_EQ(UsmAmountPosition(kLeast), kLeast);
}

TEST(UsmSliders, RadiusReaches250PixelsInFourSteps) {
    for (const auto& [position, value] : {Pair{0, 0},
                                          {1, 1},
                                          {10, 10},
                                          {100, 100},
                                          {101, 106},
                                          {250, 1000},
                                          {251, 1030},
                                          {260, 1300},
                                          {261, 1360},
                                          {280, 2500},
                                          {-1, 0},
                                          {281, 2500},
                                          {kLeast, 0},
                                          {kMost, 2500}})
        EXPECT_EQ(UsmRadiusAt(position), value) << position;
}

TEST(UsmSliders, RadiusComesBackByItsOwnBends) {
    for (int position = 0; position <= 125; ++position)  // 25 pixels
        EXPECT_EQ(UsmRadiusPosition(UsmRadiusAt(position)), position);
    for (const auto& [position, value] : {Pair{100, 105},
                                          {250, 251},
                                          {250, 260},
                                          {260, 261},
                                          {272, 1000},
                                          {297, 2500},
                                          {-3, -3},
                                          {kLeast, kLeast},
                                          {260 + (kMost - 260) / 60, kMost}})
        EXPECT_EQ(UsmRadiusPosition(value), position) << value;
}

TEST(UsmSliders, ThresholdEndsInStepsOfFive) {
    for (const auto& [position, value] : {Pair{0, 0},
                                          {201, 201},
                                          {202, 210},
                                          {211, 255},
                                          {-1, 0},
                                          {212, 255},
                                          {kLeast, 0},
                                          {kMost, 255}})
        EXPECT_EQ(UsmThresholdAt(position), value) << position;
    for (int position = 0; position <= 211; ++position)
        EXPECT_EQ(UsmThresholdPosition(UsmThresholdAt(position)), position);
    EXPECT_EQ(UsmThresholdPosition(209), 201);
    EXPECT_EQ(UsmThresholdPosition(kMost), 200 + (kMost - 200) / 5);
}

}  // namespace
}  // namespace velloran
