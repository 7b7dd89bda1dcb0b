#include "pipeline/StepTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "core/DibImage.h"
#include "core/Pipeline.h"
#include "params/ParaBlock.h"
#include "pipeline/RunState.h"
#include "support/Images.h"

namespace velloran {
namespace {

const Step& Row(int number) {
    return Steps()[static_cast<std::size_t>(number - 1)];
}

TEST(StepTable, HasThirtyRowsInOrder) {
    ASSERT_EQ(Steps().size(), 30U);
    for (int number = 1; number <= 30; ++number)
        EXPECT_EQ(Row(number).number, number);
}

TEST(StepTable, OnlyTwoRowsAreFollowedByNoPoll) {
    std::vector<int> unpolled;
    for (const Step& step : Steps())
        if (step.poll == Poll::kNone)
            unpolled.push_back(step.number);
    EXPECT_EQ(unpolled, (std::vector{11, 25}));
}

TEST(StepTable, SixRowsTellTheirLabelAlways) {
    std::vector<int> standing;
    for (const Step& step : Steps())
        if (step.told == Told::kAlways)
            standing.push_back(step.number);
    EXPECT_EQ(standing, (std::vector{1, 2, 14, 16, 29, 30}));
}

TEST(StepTable, EveryStopCodeEndsBehindOneRow) {
    const auto rowOf = [](int stop) {
        std::vector<int> rows;
        for (const Step& step : Steps())
            if (std::find(step.stops.begin(), step.stops.end(), stop) != step.stops.end())
                rows.push_back(step.number);
        return rows;
    };
    EXPECT_EQ(rowOf(97), std::vector{2});
    EXPECT_EQ(rowOf(135), std::vector{2});
    EXPECT_EQ(rowOf(74), std::vector{3});
    EXPECT_EQ(rowOf(136), std::vector{3});
    EXPECT_EQ(rowOf(77), std::vector{4});
    EXPECT_EQ(rowOf(20), std::vector{5});
    EXPECT_EQ(rowOf(137), std::vector{5});
    EXPECT_EQ(rowOf(14), std::vector{13});
    EXPECT_EQ(rowOf(91), std::vector{14});
    EXPECT_TRUE(rowOf(134).empty());
}

struct SizeCase {
    const char* name;
    int contentWidth, contentHeight;  // of an image of 20 by 10
    bool enlarges, reduces;
};
void PrintTo(const SizeCase& c, std::ostream* out) {
    *out << c.name;
}
constexpr SizeCase kSizeCases[] = {
    {"LargerInBoth", 21, 11, true, false},  {"SmallerInBoth", 19, 9, false, true},
    {"WiderAndLower", 21, 9, false, false}, {"NarrowerAndHigher", 19, 11, false, false},
    {"WiderOnly", 21, 10, false, false},    {"LowerOnly", 20, 9, false, false},
    {"Equal", 20, 10, false, false},        {"Unknown", 0, 0, false, false},
};
class StepTableSizes : public testing::TestWithParam<SizeCase> {};

TEST_P(StepTableSizes, EnlargingAndReducingNeverBothRun) {
    CParaBlock block;
    CDibImage image = test::Filled(20, 10, 8, 0);
    RunState state{.image = &image, .values = block.GetValues()};
    state.layout.contentWidth = GetParam().contentWidth;
    state.layout.contentHeight = GetParam().contentHeight;
    EXPECT_EQ(Row(13).runs(state.Known()), GetParam().enlarges);
    EXPECT_EQ(Row(25).runs(state.Known()), GetParam().reduces);
}

INSTANTIATE_TEST_SUITE_P(Contents, StepTableSizes, testing::ValuesIn(kSizeCases),
                         [](const auto& size) { return std::string(size.param.name); });

}  // namespace
}  // namespace velloran
