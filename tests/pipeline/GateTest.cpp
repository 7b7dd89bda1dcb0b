// What runs is described, and what is not described changes nothing, whatever the values.

#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <string>
#include <vector>

#include "core/DibImage.h"
#include "page/PageLayout.h"
#include "params/ParaBlock.h"
#include "pipeline/Layout.h"
#include "pipeline/Run.h"
#include "pipeline/RunState.h"
#include "pipeline/StepTable.h"
#include "support/Images.h"
#include "text/Text.h"

namespace velloran {
namespace {

/// Around the ends of what controls offer, of what the steps know, and of what 32 bits hold.
std::set<std::int32_t> ValuesToTry(int index) {
    using Limits = std::numeric_limits<std::int32_t>;
    std::set<std::int32_t> values = {Limits::min(), Limits::min() + 1, -1000, -2, -1,
                                     Limits::max(), Limits::max() - 1, 1000};
    for (std::int32_t value = 0; value <= 20; ++value)
        values.insert(value);
    for (const std::int32_t value :
         {50,  99,  100, 101, 102, 150,    200,    201,    254,     255,
          256, 257, 258, 259, 260, 0x7FFF, 0x8000, 0xFFFF, 0x10000, 0xFFFFFF})
        values.insert(value);
    const ParaRow& row = ParaRowOf(index);
    for (const auto& limit : {row.min, row.max})
        if (limit)
            for (int beside = -1; beside <= 1; ++beside)
                values.insert(*limit + beside);
    return values;
}

CDibImage Page() {
    return test::Noise(120, 110, 24, 3);
}

/// As a run would ask: with the sizes of this page. How the content grows or shrinks to its page is
/// told by the lines of the page; those of the two steps that resize tell of the percentage.
bool WouldRun(const Step& step, ParaValues values, CDibImage& page) {
    if (step.number == 13 || step.number == 25)
        values[PARA_PAGE_SIZE] = 0;
    RunState state{.image = &page, .values = values};
    state.layout = MakeLayoutRequest(values, page.GetWidth(), page.GetHeight());
    computeContentSize(state.layout);
    return step.runs(state.Known());
}

std::u16string LinesOf(const Step& step, const ParaValues& values) {
    std::u16string with, without;
    DescribeStep(step, values, with);
    if (step.describeBehind != nullptr)
        step.describeBehind(values, without);
    return with.substr(0, with.size() - without.size());
}

void ExpectAgreement(const ParaValues& values, const std::string& what) {
    CDibImage page = Page();
    for (const Step& step : Steps()) {
        if (step.number == 30)  // its settings stand behind the crop
            continue;
        EXPECT_EQ(!LinesOf(step, values).empty(), WouldRun(step, values, page))
            << "step " << step.number << ", " << what;
    }
}

TEST(Gate, AStepIsDescribedExactlyWhereItRuns) {
    for (int index = 0; index < kParaCount; ++index)
        for (const std::int32_t value : ValuesToTry(index)) {
            ParaValues values = DefaultParaValues();
            values[static_cast<std::size_t>(index)] = value;
            ExpectAgreement(values,
                            std::string(ParaRowOf(index).name) + "=" + std::to_string(value));
        }
}

TEST(Gate, AStepIsDescribedExactlyWhereItRunsBesideOtherValues) {
    std::uint32_t random = 12345;
    const auto next = [&](std::uint32_t below) {
        random = random * 1664525 + 1013904223;
        return (random >> 8) % below;
    };
    std::vector<std::vector<std::int32_t>> toTry;
    for (int index = 0; index < kParaCount; ++index) {
        const std::set<std::int32_t> values = ValuesToTry(index);
        toTry.emplace_back(values.begin(), values.end());
    }
    for (int round = 0; round < 2000; ++round) {
        ParaValues values = DefaultParaValues();
        for (std::size_t index = 0; index < toTry.size(); ++index)
            if (next(4) == 0)
                values[index] = toTry[index][next(static_cast<std::uint32_t>(toTry[index].size()))];
        ExpectAgreement(values, "round " + std::to_string(round));
    }
}

TEST(Gate, WhatIsNotDescribedChangesNoPixel) {
    const CDibImage page = Page();
    const std::u16string nothing = CParaBlock().Describe();
    for (int index = 0; index < kParaCount; ++index)
        for (const std::int32_t value : ValuesToTry(index)) {
            CParaBlock block;
            block.SetPara(index, value);
            if (block.Describe() != nothing)
                continue;
            CDibImage image = page;
            RunRequest request;
            request.image = &image;
            request.settings = block.GetSettings();
            EXPECT_TRUE(velloran::Run(request).IsWhole());
            test::ExpectSamePixels(image, page);
            if (testing::Test::HasFailure())
                FAIL() << ParaRowOf(index).name << "=" << value;
        }
}

TEST(Gate, TheMeasuredDisagreementsAreSettled) {
    struct Case {
        ParaIndex index;
        std::int32_t value;
        const char* text;  // without the line of the colours
    };
    constexpr Case kCases[] = {
        {PARA_DESKEW, 5, ""},
        {PARA_SWAP_CHANNEL, -1, ""},
        {PARA_ROATE, 6, ""},
        {PARA_ERODE, 17, ""},
        {PARA_SHARPEN, 13, ""},
        {PARA_AUTO_LEVELS, 13, ""},
        {PARA_LUM_CORRECT, 7, ""},
        {PARA_REPLACE_COLOR_TYPE, 9, ""},
        {PARA_USM_TIMES, -1, ""},
        {PARA_CRT_TYPE, -7, ""},
        {PARA_ADJUST_MULTI_SCALE_R, -3, ""},
        {PARA_WHITE_BALANCE, 5, "白平衡: 5\r\n"},
        {PARA_ADJUST_BLUR_RADIUS, -5, "高斯模糊半径: -0.5\r\n"},
        {PARA_NEGATE, -1, "反白\r\n"},
    };
    for (const Case& c : kCases) {
        CParaBlock block;
        block.SetPara(c.index, c.value);
        EXPECT_EQ(ToUtf8(block.Describe()), std::string(c.text) + "色彩数: 保持原样\r\n")
            << ParaRowOf(c.index).name;
    }
}

TEST(Gate, OfTheTableOpensWhereItsStepRuns) {
    CDibImage page = Page();
    for (int index = 0; index < kParaCount; ++index)
        for (const ParaGate& gate : ParaRowOf(index).gates) {
            if (gate.step == 0)
                continue;
            const Step& step = Steps()[static_cast<std::size_t>(gate.step - 1)];
            for (const std::int32_t value : ValuesToTry(index)) {
                if (!gate.values.Has(value))
                    continue;
                ParaValues values = DefaultParaValues();
                values[static_cast<std::size_t>(index)] = value;
                EXPECT_TRUE(step.runs({values, {}})) << ParaRowOf(index).name << "=" << value;
            }
        }
}

TEST(Gate, ANeutralValueOpensNone) {
    CDibImage page = Page();
    for (int index = 0; index < kParaCount; ++index) {
        const ParaRow& row = ParaRowOf(index);
        for (const ParaGate& gate : row.gates)
            if (gate.step != 0) {
                ASSERT_TRUE(row.neutral) << row.name;
                EXPECT_FALSE(gate.values.Has(*row.neutral)) << row.name;
            }
    }
}

}  // namespace
}  // namespace velloran
