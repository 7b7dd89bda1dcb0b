#include "filters/FitIntoBox.h"

#include <gtest/gtest.h>

namespace velloran {
namespace {

TEST(FitIntoBox, ASizeThatFitsStays) {
    EXPECT_EQ(FitIntoBox({1000, 1000}, {1000, 1000}), (BoxSize{1000, 1000}));
    EXPECT_EQ(FitIntoBox({900, 700}, {1000, 1000}), (BoxSize{900, 700}));
    EXPECT_EQ(FitIntoBox({1, 1}, {1, 1}), (BoxSize{1, 1}));
}

TEST(FitIntoBox, TheTighterSideTakesTheBoxsAndTheOtherFollows) {
    EXPECT_EQ(FitIntoBox({2000, 1000}, {1000, 1000}), (BoxSize{1000, 500}));
    EXPECT_EQ(FitIntoBox({1000, 2000}, {1000, 1000}), (BoxSize{500, 1000}));
    EXPECT_EQ(FitIntoBox({1200, 600}, {300, 100}), (BoxSize{200, 100}));
    EXPECT_EQ(FitIntoBox({500, 3000}, {1000, 1000}), (BoxSize{167, 1000}));   // 166.67
    EXPECT_EQ(FitIntoBox({2480, 3508}, {1000, 1000}), (BoxSize{707, 1000}));  // 706.96
    EXPECT_EQ(FitIntoBox({3508, 2480}, {1000, 1000}), (BoxSize{1000, 707}));
}

TEST(FitIntoBox, HalvesGoUp) {
    EXPECT_EQ(FitIntoBox({2000, 1001}, {1000, 1000}), (BoxSize{1000, 501}));  // 500.5
}

TEST(FitIntoBox, AThinSideMayVanish) {
    EXPECT_EQ(FitIntoBox({100000, 10}, {1000, 1000}), (BoxSize{1000, 0}));  // 0.1
}

TEST(FitIntoBox, TheOtherSideNeverPassesTheBox) {
    for (int width = 1; width < 60; ++width)
        for (int height = 1; height < 60; ++height) {
            const BoxSize fit = FitIntoBox({width, height}, {13, 7});
            EXPECT_LE(fit.width, 13);
            EXPECT_LE(fit.height, 7);
        }
}

}  // namespace
}  // namespace velloran
