// What the steps of colors, light and levels do to a page in a run, and with which values.

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "core/DibImage.h"
#include "filters/MultiScaleDetail.h"
#include "params/ParaBlock.h"
#include "pipeline/RunRecord.h"
#include "support/Differ.h"
#include "support/Images.h"
#include "tone/AutoLevels.h"
#include "tone/Channels.h"
#include "tone/Levels.h"
#include "tone/Light.h"
#include "tone/LumCorrect.h"
#include "tone/PixelMap.h"
#include "tone/ReplaceColor.h"
#include "tone/Unshadow.h"
#include "tone/Vibrance.h"
#include "tone/WhiteBalance.h"

namespace velloran {
namespace {

using test::After;
using test::Differ;
using test::Values;
using Change = std::function<void(CDibImage&)>;

/// Values that switch on one step, and the call that they mean.
struct StepCase {
    std::string name;
    Values values;
    Change change;
};

std::vector<StepCase> ColorCases() {
    std::vector<StepCase> cases;
    for (int type = 1; type <= 8; ++type)
        for (const int position : {0, 14, 40, 254})
            cases.push_back({"replace " + std::to_string(type) + " at " + std::to_string(position),
                             {{PARA_REPLACE_COLOR_TYPE, type},
                              {PARA_REPLACE_COLOR_FROM, 0x6478C8},
                              {PARA_REPLACE_COLOR_TO, 0x0A96F0},
                              {PARA_REPLACE_COLOR_THRESHOLD, position}},
                             [=](CDibImage& image) {
                                 ReplaceColor(type, image, 0x6478C8, 0x0A96F0, position + 1);
                             }});
    for (int which = 1; which <= 3; ++which)
        cases.push_back({"swap " + std::to_string(which),
                         {{PARA_SWAP_CHANNEL, which}},
                         [=](CDibImage& image) { SwapChannels(image, which); }});
    cases.push_back({"negate", {{PARA_NEGATE, 1}}, Negate});
    for (int mode = 1; mode <= 13; ++mode)
        cases.push_back({"combine " + std::to_string(mode),
                         {{PARA_COMBINE_CHANNEL, mode}},
                         [=](CDibImage& image) { CombineChannels(image, mode); }});
    for (int mode = 1; mode <= 2; ++mode)
        cases.push_back({"white balance " + std::to_string(mode),
                         {{PARA_WHITE_BALANCE, mode}},
                         [=](CDibImage& image) { WhiteBalance(image, mode); }});
    return cases;
}

std::vector<StepCase> LightCases() {
    std::vector<StepCase> cases;
    for (int method = 1; method <= 6; ++method)
        cases.push_back({"illumination " + std::to_string(method),
                         {{PARA_LUM_CORRECT, method}},
                         [=](CDibImage& image) { LumCorrect(image, method); }});
    for (const int strength : {-50, -20, 1, 20, 50})
        cases.push_back({"unshadow " + std::to_string(strength),
                         {{PARA_ADJUST_UNSHADOW, strength}},
                         [=](CDibImage& image) { Unshadow(image, strength); }});
    for (const auto& [shadow, light] :
         {std::pair{0x10203040, -1}, {0, 0x70F0E0D0}, {0x05000010, -0x10000000}})
        cases.push_back({"levels " + std::to_string(shadow),
                         {{PARA_LEVELS_SHADOW, shadow}, {PARA_LEVELS_LIGHT, light}},
                         [=](CDibImage& image) {
                             ApplyLevels(image, static_cast<std::uint32_t>(shadow),
                                         static_cast<std::uint32_t>(light));
                         }});
    for (const int amount : {-100, -1, 1, 200})
        cases.push_back({"vibrance " + std::to_string(amount),
                         {{PARA_ADJUST_VIBRANCE, amount}},
                         [=](CDibImage& image) { Vibrance(image, amount); }});
    for (const auto& [low, high] : {std::pair{60, 0}, {0, -60}, {-100, 100}})
        cases.push_back({"light " + std::to_string(low) + ", " + std::to_string(high),
                         {{PARA_LIGHT_LOW, low}, {PARA_LIGHT_HIGH, high}},
                         [=](CDibImage& image) { AdjustLight(image, low, high); }});
    cases.push_back({"detail", {{PARA_ADJUST_MULTI_SCALE_R, 4}}, [](CDibImage& image) {
                         MultiScaleDetail(image, 4);
                     }});
    for (int mode = 1; mode <= 8; ++mode)
        cases.push_back({"levels behind " + std::to_string(mode),
                         {{PARA_AUTO_LEVELS_POST, mode}},
                         [=](CDibImage& image) { AutoLevels(image, mode); }});
    cases.push_back({"equalize", {{PARA_HIST_EQUALIZE, 1}}, HistEqualize});
    return cases;
}

std::vector<StepCase> AllCases() {
    std::vector<StepCase> cases = ColorCases();
    for (StepCase& c : LightCases())
        cases.push_back(std::move(c));
    return cases;
}

TEST(ToneStepsOfARun, TakeTheirValues) {
    for (const int bpp : {8, 24}) {
        const CDibImage page = test::Noise(40, 30, bpp, 9);
        for (const StepCase& c : AllCases()) {
            SCOPED_TRACE(c.name + " of " + std::to_string(bpp) + " bits");
            CDibImage expected = page;
            c.change(expected);
            test::ExpectSamePixels(After(c.values, page), expected);
        }
    }
}

TEST(ToneStepsOfARun, DoTheirWorkOnAColorPage) {
    // So that the comparison above is not one of pages that both stayed.
    CDibImage page = test::Noise(40, 30, 24, 9);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 20; ++x) {
            const test::Rgb c = test::PixelAt(page, x, y);
            test::SetPixel(page, x, y, {c.red / 2, c.green / 3 + 90, c.blue / 4});
        }
    test::SetPixel(page, 3, 3, {0xC8, 0x78, 0x64});  // the sample
    for (const StepCase& c : AllCases()) {
        if (c.name.ends_with("at 254"))
            continue;  // no difference and no share is as large
        SCOPED_TRACE(c.name);
        EXPECT_TRUE(Differ(After(c.values, page), page));
    }
}

TEST(ToneStepsOfARun, PassAPageOnWhoseValuesAreNeutralOrInNoList) {
    const CDibImage page = test::Noise(40, 30, 24, 9);
    constexpr int kLowest = std::numeric_limits<int>::min();
    constexpr int kHighest = std::numeric_limits<int>::max();
    for (const int value : {kLowest, -1, 0, 14, 100, kHighest})
        for (const ParaIndex index :
             {PARA_REPLACE_COLOR_TYPE, PARA_SWAP_CHANNEL, PARA_COMBINE_CHANNEL, PARA_LUM_CORRECT}) {
            SCOPED_TRACE(std::to_string(index) + " = " + std::to_string(value));
            test::ExpectSamePixels(After({{index, value}}, page), page);
        }
    for (const ParaIndex index :
         {PARA_NEGATE, PARA_ADJUST_UNSHADOW, PARA_WHITE_BALANCE, PARA_ADJUST_VIBRANCE,
          PARA_LIGHT_LOW, PARA_HIST_EQUALIZE, PARA_ADJUST_MULTI_SCALE_R, PARA_AUTO_LEVELS_POST})
        test::ExpectSamePixels(After({{index, 0}}, page), page);
    test::ExpectSamePixels(After({{PARA_WHITE_BALANCE, -1}}, page), page);
}

TEST(ToneStepsOfARun, AReplacedColorsThresholdIsOneByteAndCountsFromOne) {
    const CDibImage page = test::Noise(40, 30, 24, 9);
    const auto at = [&](int position) {
        return After({{PARA_REPLACE_COLOR_TYPE, 3}, {PARA_REPLACE_COLOR_THRESHOLD, position}},
                     page);
    };
    test::ExpectSamePixels(at(-1), page);   // a threshold of 0
    test::ExpectSamePixels(at(255), page);  // 256 is 0 in a byte
    test::ExpectSamePixels(at(256 + 99), at(99));
    test::ExpectSamePixels(at(std::numeric_limits<int>::max()), page);
}

TEST(ToneStepsOfARun, NegativeForAnyFlagThatIsNotZero) {
    const CDibImage page = test::Noise(40, 30, 24, 9);
    CDibImage negative = page;
    Negate(negative);
    for (const int flag : {-5, 2, std::numeric_limits<int>::max()})
        test::ExpectSamePixels(After({{PARA_NEGATE, flag}}, page), negative);
}

TEST(ToneStepsOfARun, ManualLevelsRunOnlyWithoutAutomaticOnes) {
    const CDibImage page = test::Noise(40, 30, 24, 9);
    CDibImage automatic = page, manual = page;
    AutoLevels(automatic, 5);
    ApplyLevels(manual, 0x20304050, 0xFFFFFFFF);
    test::ExpectSamePixels(After({{PARA_LEVELS_SHADOW, 0x20304050}, {PARA_AUTO_LEVELS, 5}}, page),
                           automatic);
    test::ExpectSamePixels(After({{PARA_LEVELS_SHADOW, 0x20304050}}, page), manual);
    // A mode that is in no list still keeps the manual ones out.
    test::ExpectSamePixels(After({{PARA_LEVELS_SHADOW, 0x20304050}, {PARA_AUTO_LEVELS, 99}}, page),
                           page);
}

TEST(ToneStepsOfARun, RunInTheirOrder) {
    const Values values = {{PARA_REPLACE_COLOR_TYPE, 3},
                           {PARA_REPLACE_COLOR_THRESHOLD, 120},
                           {PARA_REPLACE_COLOR_TO, 0x3264C8},
                           {PARA_SWAP_CHANNEL, 2},
                           {PARA_NEGATE, 1},
                           {PARA_LUM_CORRECT, 3},
                           {PARA_ADJUST_UNSHADOW, -4},
                           {PARA_WHITE_BALANCE, 2},
                           {PARA_LEVELS_SHADOW, 0x10203040},
                           {PARA_ADJUST_VIBRANCE, 60},
                           {PARA_BRIGHTNESS, 90},
                           {PARA_LIGHT_LOW, 50},
                           {PARA_LIGHT_HIGH, -50},
                           {PARA_ADJUST_MULTI_SCALE_R, 3},
                           {PARA_AUTO_LEVELS_POST, 3},
                           {PARA_HIST_EQUALIZE, 1}};
    const std::vector<Change> changes = {
        [](CDibImage& image) { ReplaceColor(3, image, 0, 0x3264C8, 121); },
        [](CDibImage& image) { SwapChannels(image, 2); },
        Negate,
        [](CDibImage& image) { LumCorrect(image, 3); },
        [](CDibImage& image) { Unshadow(image, -4); },
        [](CDibImage& image) { WhiteBalance(image, 2); },
        [](CDibImage& image) { ApplyLevels(image, 0x10203040, 0xFFFFFFFF); },
        [](CDibImage& image) { Vibrance(image, 60); },
        [](CDibImage& image) {
            PixelMap map = IdentityPixelMap();
            MapBrightness(90, map);
            ApplyPixelMap(map, image);
        },
        [](CDibImage& image) { AdjustLight(image, 50, -50); },
        [](CDibImage& image) { MultiScaleDetail(image, 3); },
        [](CDibImage& image) { AutoLevels(image, 3); },
        HistEqualize,
    };
    const CDibImage page = test::Noise(60, 50, 24, 9);
    CDibImage expected = page;
    for (const Change& change : changes)
        change(expected);
    test::ExpectSamePixels(After(values, page), expected);
    for (std::size_t i = 1; i < changes.size(); ++i) {  // the order of any two can be told
        std::vector<Change> exchanged = changes;
        std::swap(exchanged[i - 1], exchanged[i]);
        CDibImage other = page;
        for (const Change& change : exchanged)
            change(other);
        const bool isSwapAndNegative = i == 2;  // which commute
        EXPECT_EQ(Differ(other, expected), !isSwapAndNegative) << i;
    }
}

TEST(ToneStepsOfARun, ColorsAreMixedBehindTheNegativeAndBeforeTheLight) {
    const CDibImage page = test::Noise(60, 50, 24, 9);
    CDibImage expected = page;
    Negate(expected);
    CombineChannels(expected, 7);
    LumCorrect(expected, 4);
    test::ExpectSamePixels(
        After({{PARA_LUM_CORRECT, 4}, {PARA_COMBINE_CHANNEL, 7}, {PARA_NEGATE, 1}}, page),
        expected);
}

TEST(ToneStepsOfARun, TouchNoPageThatIsOnlyDescribed) {
    CParaBlock block;
    for (const StepCase& c : AllCases())
        for (const auto& [index, value] : c.values)
            block.SetPara(index, value);
    const CDibImage before = test::Noise(40, 30, 24, 9);
    CDibImage image = before;
    std::u16string text;
    block.RunPipeline(&image, nullptr, nullptr, nullptr, kStopWhole, &text);
    test::ExpectSamePixels(image, before);
    EXPECT_FALSE(text.empty());
}

}  // namespace
}  // namespace velloran
