#include "params/ParaMeaning.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "params/ParaTable.h"
#include "params/Settings.h"
#include "params/TargetRule.h"
#include "text/Text.h"

namespace velloran {
namespace {

std::vector<ParaIndex> FromTo(ParaIndex first, ParaIndex last) {
    std::vector<ParaIndex> run;
    for (int index = first; index <= last; ++index)
        run.push_back(static_cast<ParaIndex>(index));
    return run;
}

TEST(ParaTab, HoldsItsParametersInTheOrderOfTheBook) {
    EXPECT_EQ(ParaIndexesOf(ParaTab::kPaper),
              (std::vector{PARA_ROATE, PARA_PAGE_SPLIT_TYPE, PARA_PAGE_SPLIT_LEFT,
                           PARA_PAGE_SPLIT_RIGHT, PARA_PAGE_SPLIT_MID}));
    EXPECT_EQ(ParaIndexesOf(ParaTab::kPage), FromTo(PARA_CRT_TYPE, PARA_CRT_DEWARPING_BTM_8));
    EXPECT_EQ(ParaIndexesOf(ParaTab::kLayout), (std::vector{PARA_DESKEW,
                                                            PARA_DESKEW_ANGLE,
                                                            PARA_DESKEW_EDGE,
                                                            PARA_CROPPING_P_LEFT,
                                                            PARA_CROPPING_P_TOP,
                                                            PARA_CROPPING_P_RIGHT,
                                                            PARA_CROPPING_P_BOTTOM,
                                                            PARA_FIND_CNT_BOX,
                                                            PARA_CBF_REMOVE_BLACK_EDGE,
                                                            PARA_CBF_SPECKLE_SIZE,
                                                            PARA_CBF_SPECKLE_COMPENSATION,
                                                            PARA_CBF_BK_MORE,
                                                            PARA_PAGE_SIZE,
                                                            PARA_PAGE_WIDTH,
                                                            PARA_PAGE_HEIGHT,
                                                            PARA_PAGE_SIZE_UNIT,
                                                            PARA_DPI,
                                                            PARA_MARGIN_LEFT,
                                                            PARA_MARGIN_RIGHT,
                                                            PARA_MARGIN_TOP,
                                                            PARA_MARGIN_BOTTOM,
                                                            PARA_ALIGN_H,
                                                            PARA_ALIGN_V,
                                                            PARA_BIG_CNT_BOX,
                                                            PARA_SMALL_CNT_BOX,
                                                            PARA_FILL_BLANK_COLOR}));
    const std::vector image = ParaIndexesOf(ParaTab::kImage);
    ASSERT_EQ(image.size(), 44U);
    EXPECT_EQ(image[0], PARA_BRIGHTNESS);
    EXPECT_EQ(image[9], PARA_AUTO_LEVELS_POST);
    EXPECT_EQ(image[17], PARA_ADJUST_SHARPEN_SIZE);
    EXPECT_EQ(image[18], PARA_ADJUST_SHARPEN_PERCENT);
    EXPECT_EQ(image[43], PARA_LEVELS_LIGHT);
    const std::vector output = ParaIndexesOf(ParaTab::kOutput);
    ASSERT_EQ(output.size(), 25U);
    EXPECT_EQ(output[0], PARA_QUALITY);
    EXPECT_EQ(output[10], PARA_COLOR);
    EXPECT_EQ(output[24], PARA_DECREASE_DE_SMOOTH);
}

TEST(ParaTab, NineParametersStandInNone) {
    std::vector<ParaIndex> tabless;
    for (int index = 0; index < kParaCount; ++index)
        if (ParaRowOf(index).tab == ParaTab::kNone)
            tabless.push_back(static_cast<ParaIndex>(index));
    EXPECT_EQ(tabless, (std::vector{PARA_RESIZE, PARA_CROPPING, PARA_GO_SUB_DIR, PARA_HIST_EQUALIZE,
                                    PARA_SLIDE_INTV, PARA_SRC_FILES, PARA_TGT_FILES,
                                    PARA_PREVIEW_FILE_OPEN, PARA_KEEP_FILE_TIME}));
    EXPECT_TRUE(ParaIndexesOf(ParaTab::kNone).empty());
}

TEST(ParaSet, EveryParameterThatIsReadStandsInOne) {
    for (int index = 0; index < kParaCount; ++index)
        EXPECT_EQ(ParaRowOf(index).set == ParaSet::kNoSet, ParaRowOf(index).kind == ParaKind::kKept)
            << ParaRowOf(index).name;
}

struct ShownCase {
    ParaIndex index;
    std::int32_t stored;
    const char* shown;
};
constexpr ShownCase kShownCases[] = {
    {PARA_CONTRAST, 120, "120"},          {PARA_CROPPING_P_TOP, 123, "12.3"},
    {PARA_USM_RADIUS, 25, "2.5"},         {PARA_ADJUST_BLUR_RADIUS, -5, "-0.5"},
    {PARA_DESKEW_ANGLE, -105, "-1.05"},   {PARA_PAGE_WIDTH, 2100, "21.00"},
    {PARA_MARGIN_LEFT, 5, "0.05"},        {PARA_REPLACE_COLOR_THRESHOLD, 14, "15"},
    {PARA_SURFACE_BLUR_RADIUS, 4, "5"},   {PARA_SURFACE_BLUR_THRESHOLD, 18, "20"},
    {PARA_DECREASE_WINDOW_SIZE, 4, "50"}, {PARA_DECREASE_WINDOW_SIZE, 2147483647, "21474836480"},
    {PARA_ADJUST_SHARPEN_SIZE, 9, "25"},
};

TEST(ParaScale, ShowsWhatTheUserSees) {
    for (const ShownCase& c : kShownCases)
        EXPECT_EQ(ToUtf8(ShownText(c.index, c.stored)), c.shown) << ParaRowOf(c.index).name;
}

TEST(ParaScale, AgreesWithTheTextsOfLists) {
    // A list that counts shows the same numbers as its scale.
    for (const ParaIndex index : {PARA_SURFACE_BLUR_RADIUS, PARA_SURFACE_BLUR_THRESHOLD,
                                  PARA_DECREASE_WINDOW_SIZE, PARA_ADJUST_SHARPEN_SIZE}) {
        const ParaRow& row = ParaRowOf(index);
        for (std::size_t i = 0; i < row.list.size(); ++i)
            EXPECT_EQ(row.list[i].Text(), ShownText(index, static_cast<std::int32_t>(i)));
    }
}

TEST(ParaField, CutsPackedValues) {
    const auto field = [](int index, const char* name, std::int32_t value) {
        for (const ParaField& candidate : ParaRowOf(index).fields)
            if (candidate.name == name)
                return candidate.Of(value);
        ADD_FAILURE() << name;
        return 0;
    };
    const auto pair = static_cast<std::int32_t>(0xFFFE0190);
    EXPECT_EQ(field(PARA_CRT_PT_LT, "x", pair), 400);
    EXPECT_EQ(field(PARA_CRT_PT_LT, "y", pair), -2);
    EXPECT_EQ(field(PARA_PAGE_SPLIT_MID, "bottom", pair), -2);
    EXPECT_EQ(field(PARA_CRT_SIZE, "width", pair), 400);
    EXPECT_EQ(field(PARA_CRT_CROP, "mode", 0x506), 6);
    EXPECT_EQ(field(PARA_CRT_CROP, "ratio", 0x506), 5);
    EXPECT_EQ(field(PARA_PAGE_SPLIT_TYPE, "kind", 0x103), 3);
    EXPECT_EQ(field(PARA_PAGE_SPLIT_TYPE, "secondSide", 0x103), 1);
    EXPECT_EQ(field(PARA_FILL_BLANK_COLOR, "red", 0x0A0B0C), 0x0C);
    EXPECT_EQ(field(PARA_FILL_BLANK_COLOR, "blue", 0x0A0B0C), 0x0A);
    EXPECT_EQ(field(PARA_LEVELS_LIGHT, "all", -1), 255);
}

TEST(ParaField, OfTheTargetRuleAreThoseThatItPacks) {
    TargetRule rule;
    rule.extension = TargetFormat::kWebp;
    rule.other = TargetFormat::kGif;
    rule.blackWhite = TargetFormat::kBmp;
    rule.gray256 = TargetFormat::kJp2;
    rule.color24 = TargetFormat::kPng;
    rule.cropGif = true;
    const std::int32_t packed = PackTargetRule(rule);
    std::map<std::string, std::string> texts;
    for (const ParaField& field : ParaRowOf(PARA_TGT_FILES).fields)
        texts[std::string(field.name)] =
            field.list.empty()
                ? std::to_string(field.Of(packed))
                : ToUtf8(field.list[static_cast<std::size_t>(field.Of(packed))].Text());
    EXPECT_EQ(texts, (std::map<std::string, std::string>{{"extension", "webp"},
                                                         {"other", "gif"},
                                                         {"blackWhite", "bmp"},
                                                         {"gray256", "jp2"},
                                                         {"color24", "png"},
                                                         {"cropGif", "1"}}));
}

TEST(ParaField, EveryPackedValueHasThemAndNoOtherBitsTwice) {
    for (int index = 0; index < kParaCount; ++index) {
        const ParaRow& row = ParaRowOf(index);
        const bool isPacked = row.kind == ParaKind::kPacked || row.kind == ParaKind::kPackedPair ||
                              row.kind == ParaKind::kColor;
        EXPECT_EQ(row.fields.empty(), !isPacked) << row.name;
        std::uint64_t taken = 0;
        for (const ParaField& field : row.fields) {
            const std::uint64_t bits = ((std::uint64_t{1} << field.bits) - 1) << field.shift;
            EXPECT_EQ(taken & bits, 0U) << row.name;
            EXPECT_LE(bits, 0xFFFFFFFFU) << row.name;
            taken |= bits;
        }
    }
}

TEST(ParaCondition, TellsWhenAParameterCounts) {
    Settings settings;
    EXPECT_TRUE(IsEnabled(PARA_CONTRAST, settings.values));
    EXPECT_FALSE(IsEnabled(PARA_USM_RADIUS, settings.values));
    settings.Set(PARA_USM_TIMES, 2);
    EXPECT_TRUE(IsEnabled(PARA_USM_RADIUS, settings.values));
    for (const auto& [size, width, height] : {std::tuple{0, false, false},
                                              {3, true, false},
                                              {4, false, true},
                                              {5, true, true},
                                              {6, false, false}}) {
        settings.Set(PARA_PAGE_SIZE, size);
        EXPECT_EQ(IsEnabled(PARA_PAGE_WIDTH, settings.values), width) << size;
        EXPECT_EQ(IsEnabled(PARA_PAGE_HEIGHT, settings.values), height) << size;
    }
    EXPECT_TRUE(IsEnabled(PARA_LEVELS_SHADOW, settings.values));
    settings.Set(PARA_AUTO_LEVELS, 3);
    EXPECT_FALSE(IsEnabled(PARA_LEVELS_SHADOW, settings.values));
}

TEST(ParaCondition, HangsOnAnotherParameterWithValuesOfItsOwn) {
    for (int index = 0; index < kParaCount; ++index) {
        const ParaRow& row = ParaRowOf(index);
        for (const ParaRange& range : row.enabled.Ranges()) {
            EXPECT_NE(row.enabled.index, index);
            EXPECT_LE(range.from, range.to) << row.name;
        }
    }
}

}  // namespace
}  // namespace velloran
