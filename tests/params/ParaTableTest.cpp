#include "params/ParaTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

#include "text/Text.h"

namespace velloran {
namespace {

constexpr std::optional<std::int32_t> kNone;

struct RowCase {
    std::string_view name;
    std::int32_t defaultValue;
    std::optional<std::int32_t> min, max;
    std::u16string_view list;  // the texts, joined by |
};

// One row a line, in index order.
// clang-format off
constexpr RowCase kRowCases[] = {
    {"PARA_BRIGHTNESS", 100, 0, 200, u""},
    {"PARA_CONTRAST", 100, 0, 200, u""},
    {"PARA_HIGHLIGHT", 100, 100, 200, u""},
    {"PARA_GAMMA", 100, 0, 300, u""},
    {"PARA_CURVE", 0, 0, 255, u""},
    {"PARA_RESIZE", 100, 0, 200, u""},
    {"PARA_QUALITY", 70, 10, 100, u""},
    {"PARA_JP2_RATE", 15, 1, 100, u""},
    {"PARA_CROPPING", 100, kNone, kNone, u""},
    {"PARA_SHARPEN", 0, 0, 12, u"无|01级|02级|03级|04级|05级|06级|07级|08级|09级|a1级|a2级|a3级"},
    {"PARA_BLUR", 0, 0, 10, u"无|01级|02级|03级|04级|05级|a1级|a2级|a3级|a4级|a5级"},
    {"PARA_COLOR", 2, 0, 19, u"24位色|256级灰度|保持原样|256色|16级灰度|8级灰度|4级灰度|纯黑白|128色|64色|32色|16色|8色|4色|2色|128级灰度|64级灰度|32级灰度|16位色565|16位色555"},
    {"PARA_GO_SUB_DIR", 1, 0, 1, u""},
    {"PARA_THRESHOLD", 190, 150, 255, u""},
    {"PARA_AUTO_LEVELS", 0, 0, 12, u"（无）|自动色阶1|自动色阶2|自动对比1|自动对比2|自动对比3|自动亮度1|自动亮度2|自动亮度3|自动漂白1|自动漂白2|自动漂白3|自动漂白4"},
    {"PARA_AUTO_LEVELS_POST", 0, 0, 8, u"（无）|自动色阶1|自动色阶2|自动对比1|自动对比2|自动对比3|自动亮度1|自动亮度2|自动亮度3"},
    {"PARA_ERODE", 0, 0, 16, u"无|加粗01|加粗02|加粗03|加粗04|变细01|变细02|变细03|变细04|开0101|开0202|开0303|开0404|闭0101|闭0202|闭0303|闭0404"},
    {"PARA_NEGATE", 0, 0, 1, u""},
    {"PARA_SWAP_CHANNEL", 0, 0, 3, u"(无)|红<->蓝|红<->绿|蓝<->绿"},
    {"PARA_COMBINE_CHANNEL", 0, 0, 13, u"(无)|红|绿|蓝|(红+蓝)/2|(红+绿)/2|(绿+蓝)/2|色调|饱和度|亮度|对比度|灰度|(红+绿+蓝)/3|乌贼漂白"},
    {"PARA_REPLACE_COLOR_TYPE", 0, 0, 8, u"不替换|RGB分量与样本差小于阀值|色调与样本差小于阀值|RG分量差值大于阀值|RB分量差值大于阀值|BG分量差值大于阀值|R分量占比超过阀值|G分量占比超过阀值|B分量占比超过阀值"},
    {"PARA_REPLACE_COLOR_FROM", 0, kNone, kNone, u""},
    {"PARA_REPLACE_COLOR_TO", 0xFFFFFF, kNone, kNone, u""},
    {"PARA_REPLACE_COLOR_THRESHOLD", 14, 0, 254, u""},
    {"PARA_LUM_CORRECT", 0, 0, 6, u"（无）|照度修正|照度归一、增亮|照度归一|F.M.Retinex|黑白文字|黑白文字+红章"},
    {"PARA_HIST_EQUALIZE", 0, 0, 1, u""},
    {"PARA_SURFACE_BLUR_TIMES", 0, 0, 3, u"(无)|1|2|3"},
    {"PARA_SURFACE_BLUR_RADIUS", 4, 0, 14, u"1|2|3|4|5|6|7|8|9|10|11|12|13|14|15"},
    {"PARA_SURFACE_BLUR_THRESHOLD", 18, 0, 48, u"2|3|4|5|6|7|8|9|10|11|12|13|14|15|16|17|18|19|20|21|22|23|24|25|26|27|28|29|30|31|32|33|34|35|36|37|38|39|40|41|42|43|44|45|46|47|48|49|50"},
    {"PARA_SURFACE_BLUR_ALGRITHOM", 0, 0, 3, u"Photoshop|引导滤波|选择性高斯模糊|选择性模糊"},
    {"PARA_DECREASE_BPP_DITHER", 0, 0, 1, u""},
    {"PARA_DECREASE_BPP_QUANTIZE", 2, 0, 4, u"八叉树|中位切分|Xiaolin Wu|固定调色板|神经网络"},
    {"PARA_DECREASE_TRANSPARENT", 0, 0, 1, u""},
    {"PARA_DECREASE_CHECK_GRAY", 0, 0, 2, u"容错判断|严格判断|不判断"},
    {"PARA_DECREASE_THRESHOLD_METHOD", 1, 0, 2, u"同调色板量化算法|Otsu|Wolf"},
    {"PARA_DECREASE_WINDOW_SIZE", 4, 0, 49, u"10|20|30|40|50|60|70|80|90|100|110|120|130|140|150|160|170|180|190|200|210|220|230|240|250|260|270|280|290|300|310|320|330|340|350|360|370|380|390|400|410|420|430|440|450|460|470|480|490|500"},
    {"PARA_DECREASE_DESPECKLE_SIZE", 0, 0, 20, u""},
    {"PARA_DECREASE_BW_DITHER_METHOD", 0, 0, 2, u"JJN|Floyd Steinberg|Bayer"},
    {"PARA_DECREASE_BLOCK_WIDTH", 0, 0, 500, u""},
    {"PARA_DECREASE_BLOCK_HEIGHT", 0, 0, 500, u""},
    {"PARA_DECREASE_BLOCK_WIDTH_CONDITION", 0, 0, 1, u"大于|小于"},
    {"PARA_DECREASE_BLOCK_HEIGHT_CONDITION", 0, 0, 1, u"大于|小于"},
    {"PARA_DECREASE_DE_BLACK", 0, 0, 1, u""},
    {"PARA_DECREASE_DE_SMOOTH", 0, 0, 1, u""},
    {"PARA_USM_TIMES", 0, 0, 3, u"(无)|1|2|3"},
    {"PARA_USM_AMOUNT", 50, 1, 500, u""},
    {"PARA_USM_THRESHOLD", 0, 0, 255, u""},
    {"PARA_USM_RADIUS", 10, 1, 2500, u""},
    {"PARA_ROATE", 0, 0, 5, u"(无)|左旋|右旋|颠倒|镜像|翻转"},
    {"PARA_CURVE_1", 0, 0, 255, u""},
    {"PARA_CURVE_2", 255, 0, 255, u""},
    {"PARA_CURVE_3", 255, 0, 255, u""},
    {"PARA_CURVE_DIV", 0, 0, 255, u""},
    {"PARA_CURVE_OFFSET", 0, 0, 255, u""},
    {"PARA_SLIDE_INTV", 1, kNone, kNone, u""},
    {"PARA_SRC_FILES", 0, 0, 10, u"*.jpg;*.jpeg;*.gif;*.ufo;*.bmp;*.png;*.tif;*.tiff;*.wmf;*.jpf;*.jpx;*.jp2;*.j2k;*.jpc;*.j2c;*.webp;*.nef;*.crw;*.cr2;*.dng|*.jpg;*.jpeg|*.gif|*.ufo|*.bmp;*.dib|*.png|*.tif;*.tiff|*.wmf;*.emf|*.jpf;*.jpx;*.jp2;*.j2k;*.jpc;*.j2c;|*.webp|*.nef;*.crw;*.cr2;*.dng"},
    {"PARA_TGT_FILES", 0, kNone, kNone, u""},
    {"PARA_CROPPING_P_LEFT", 0, 0, 1000, u""},
    {"PARA_CROPPING_P_TOP", 0, 0, 1000, u""},
    {"PARA_CROPPING_P_RIGHT", 0, 0, 1000, u""},
    {"PARA_CROPPING_P_BOTTOM", 0, 0, 1000, u""},
    {"PARA_PAGE_SIZE", 0, 0, 35, u"保持不变，内容框外填白|内容框大小|内容框+页边空|指定宽度|指定高度|指定宽、高|787x1092mm, 1/16|787x1092mm, 1/32|787x1092mm, 1/64|787x1092mm, 1/128|850x1168mm, 1/16|850x1168mm, 1/32|850x1168mm, 1/64|850x1168mm, 1/128|889x1194mm, 1/16|889x1194mm, 1/32|889x1194mm, 1/64|889x1194mm, 1/128|890x1240mm, 1/16|890x1240mm, 1/32|890x1240mm, 1/64|890x1240mm, 1/128|1000x1400mm, 1/32|1000x1400mm, 1/64|1000x1400mm, 1/128|A4（公文）|A5|A6|B5|B6|B7|4开报纸|8开报纸|A2（WORD 2013）|A3（WORD 2013）|A4（WORD 2013）"},
    {"PARA_PAGE_SIZE_UNIT", 0, 0, 1, u"厘米|像素"},
    {"PARA_PAGE_WIDTH", 0, kNone, kNone, u""},
    {"PARA_PAGE_HEIGHT", 0, kNone, kNone, u""},
    {"PARA_MARGIN_LEFT", 0, kNone, kNone, u""},
    {"PARA_MARGIN_RIGHT", 0, kNone, kNone, u""},
    {"PARA_MARGIN_TOP", 0, kNone, kNone, u""},
    {"PARA_MARGIN_BOTTOM", 0, kNone, kNone, u""},
    {"PARA_ALIGN_H", 3, 0, 3, u"不变|靠左|靠右|居中"},
    {"PARA_ALIGN_V", 0, 0, 3, u"不变|靠上|靠下|居中"},
    {"PARA_FILL_BLANK_COLOR", 0xFFFFFF, kNone, kNone, u""},
    {"PARA_BIG_CNT_BOX", 0, 0, 2, u"溢出|缩图|裁剪"},
    {"PARA_SMALL_CNT_BOX", 1, 0, 1, u"填白|放大"},
    {"PARA_DESKEW", 0, 0, 4, u"(无)|自动_横排|自动_竖排|自动_双向|手动"},
    {"PARA_DESKEW_ANGLE", 0, kNone, kNone, u""},
    {"PARA_DESKEW_EDGE", 0, 0, 2, u"边缘保留|边缘填白|边缘扩展"},
    {"PARA_FIND_CNT_BOX", 0, 0, 1, u""},
    {"PARA_CBF_REMOVE_BLACK_EDGE", 1, 0, 1, u""},
    {"PARA_CBF_SPECKLE_SIZE", 8, 0, 20, u""},
    {"PARA_CBF_SPECKLE_COMPENSATION", 1, 0, 1, u""},
    {"PARA_CBF_BK_MORE", 0, 0, 1, u""},
    {"PARA_PREVIEW_FILE_OPEN", 0, kNone, kNone, u""},
    {"PARA_KEEP_FILE_TIME", 0, 0, 1, u""},
    {"PARA_DPI", 300, 0, 8000, u""},
    {"PARA_LIGHT_LOW", 0, -100, 100, u""},
    {"PARA_LIGHT_HIGH", 0, -100, 100, u""},
    {"PARA_ADJUST_BLUR_RADIUS", 0, 0, 2500, u""},
    {"PARA_ADJUST_SHARPEN_PERCENT", 0, 0, 40, u""},
    {"PARA_ADJUST_SHARPEN_SIZE", 0, 0, 9, u"7|9|11|13|15|17|19|21|23|25"},
    {"PARA_ADJUST_MULTI_SCALE_R", 0, 0, 40, u""},
    {"PARA_ADJUST_VIBRANCE", 0, -100, 200, u""},
    {"PARA_ADJUST_UNSHADOW", 0, -50, 50, u""},
    {"PARA_REVERSE_CMYK", 0, 0, 1, u""},
    {"PARA_WHITE_BALANCE", 0, 0, 2, u"(无)|白点矫正|白点+黑点"},
    {"PARA_LEVELS_SHADOW", 0, kNone, kNone, u""},
    {"PARA_LEVELS_LIGHT", -1, kNone, kNone, u""},
    {"PARA_CRT_TYPE", 0, 0, 3, u"无矫正|梯形矫正|梯形矫正+裁切|弯曲页面展平"},
    {"PARA_CRT_PT_LT", 0, kNone, kNone, u""},
    {"PARA_CRT_PT_RT", 0, kNone, kNone, u""},
    {"PARA_CRT_PT_RB", 0, kNone, kNone, u""},
    {"PARA_CRT_PT_LB", 0, kNone, kNone, u""},
    {"PARA_CRT_CROP", 0, kNone, kNone, u""},
    {"PARA_CRT_SIZE", 0, kNone, kNone, u""},
    {"PARA_CRT_DEWARPING_TYPE", 0, 0, 3, u"扩展文本行|文本行|页边界|干净文本行"},
    {"PARA_CRT_DEWARPING_ILLUM", 1, 0, 2, u"不均匀|一般|很均匀"},
    {"PARA_CRT_DEWARPING_TOP_1", 0, kNone, kNone, u""},
    {"PARA_CRT_DEWARPING_TOP_2", 0, kNone, kNone, u""},
    {"PARA_CRT_DEWARPING_TOP_3", 0, kNone, kNone, u""},
    {"PARA_CRT_DEWARPING_TOP_4", 0, kNone, kNone, u""},
    {"PARA_CRT_DEWARPING_TOP_5", 0, kNone, kNone, u""},
    {"PARA_CRT_DEWARPING_TOP_6", 0, kNone, kNone, u""},
    {"PARA_CRT_DEWARPING_TOP_7", 0, kNone, kNone, u""},
    {"PARA_CRT_DEWARPING_TOP_8", 0, kNone, kNone, u""},
    {"PARA_CRT_DEWARPING_BTM_1", 0, kNone, kNone, u""},
    {"PARA_CRT_DEWARPING_BTM_2", 0, kNone, kNone, u""},
    {"PARA_CRT_DEWARPING_BTM_3", 0, kNone, kNone, u""},
    {"PARA_CRT_DEWARPING_BTM_4", 0, kNone, kNone, u""},
    {"PARA_CRT_DEWARPING_BTM_5", 0, kNone, kNone, u""},
    {"PARA_CRT_DEWARPING_BTM_6", 0, kNone, kNone, u""},
    {"PARA_CRT_DEWARPING_BTM_7", 0, kNone, kNone, u""},
    {"PARA_CRT_DEWARPING_BTM_8", 0, kNone, kNone, u""},
    {"PARA_PAGE_SPLIT_TYPE", 0, kNone, kNone, u""},
    {"PARA_PAGE_SPLIT_LEFT", 0, kNone, kNone, u""},
    {"PARA_PAGE_SPLIT_RIGHT", 0, kNone, kNone, u""},
    {"PARA_PAGE_SPLIT_MID", 0, kNone, kNone, u""},
    {"JPG_RESAMPLE_TYPE", 0, 0, 1, u"自动|手动"},
    {"JPG_RESAMPLE_H", 1, 0, 1, u""},
    {"JPG_RESAMPLE_V", 1, 0, 1, u""},
    {"JPG_SRC_SAMPLE", 0, 0, 1, u""},
    {"JPG_SRC_QUALITY", 0, 0, 1, u""},
    {"JPG_SRC_CODE", 0, 0, 1, u""},
    {"JPG_OPTIMIZE", 1, 0, 1, u""},
    {"JPG_PROGRESSIVE", 1, 0, 1, u""},
};
// clang-format on

std::string Joined(std::span<const Label> list) {
    std::u16string joined;
    for (const Label& text : list) {
        if (!joined.empty())
            joined += u'|';
        joined += text;
    }
    return ToUtf8(joined);
}

TEST(ParaTable, Has134Rows) {
    EXPECT_EQ(static_cast<int>(kParaCount), 134);
    EXPECT_EQ(std::size(kRowCases), 134U);
}

TEST(ParaTable, EveryRowHasItsNameDefaultRangeAndList) {
    for (int i = 0; i < kParaCount; ++i) {
        const RowCase& expected = kRowCases[i];
        const ParaRow& row = ParaRowOf(i);
        SCOPED_TRACE(std::to_string(i) + " " + std::string(expected.name));
        EXPECT_EQ(row.name, expected.name);
        EXPECT_EQ(row.defaultValue, expected.defaultValue);
        EXPECT_EQ(row.min, expected.min);
        EXPECT_EQ(row.max, expected.max);
        EXPECT_EQ(Joined(row.list), ToUtf8(expected.list));
    }
}

TEST(ParaTable, EveryNameLeadsBackToItsIndex) {
    for (int i = 0; i < kParaCount; ++i)
        EXPECT_EQ(FindPara(kRowCases[i].name), i);
}

TEST(ParaTable, TheIndexesOfTheFileFormatsStand) {
    EXPECT_EQ(static_cast<int>(PARA_BRIGHTNESS), 0);
    EXPECT_EQ(static_cast<int>(PARA_AUTO_LEVELS), 14);
    EXPECT_EQ(static_cast<int>(PARA_ROATE), 48);
    EXPECT_EQ(static_cast<int>(PARA_TGT_FILES), 56);
    EXPECT_EQ(static_cast<int>(PARA_DPI), 84);
    EXPECT_EQ(static_cast<int>(PARA_CRT_DEWARPING_TOP_8), 113);
    EXPECT_EQ(static_cast<int>(PARA_PAGE_SPLIT_TYPE), 122);
    EXPECT_EQ(static_cast<int>(JPG_PROGRESSIVE), 133);
}

TEST(ParaTable, NamesAreFoundExactlyOrNotAtAll) {
    EXPECT_EQ(FindPara("PARA_CONTRAST"), 1);
    EXPECT_EQ(FindPara("para_contrast"), std::nullopt);
    EXPECT_EQ(FindPara("PARA_CONTRAS"), std::nullopt);
    EXPECT_EQ(FindPara("PARA_CONTRAST "), std::nullopt);
    EXPECT_EQ(FindPara(""), std::nullopt);
    EXPECT_EQ(FindPara("ZZZ"), std::nullopt);
}

TEST(ParaTable, AValueThatIsNoListPositionHasNoText) {
    EXPECT_EQ(ToUtf8(ParaListText(PARA_COLOR, 7)), "纯黑白");
    EXPECT_TRUE(ParaListText(PARA_COLOR, 20).empty());
    EXPECT_TRUE(ParaListText(PARA_COLOR, -1).empty());
    EXPECT_TRUE(ParaListText(PARA_COLOR, INT32_MIN).empty());
    EXPECT_TRUE(ParaListText(PARA_BRIGHTNESS, 0).empty());
}

TEST(ParaTable, EveryRowSaysWhatItMeans) {
    for (int i = 0; i < kParaCount; ++i)
        EXPECT_FALSE(ParaRowOf(i).meaning.empty()) << ParaRowOf(i).name;
}

TEST(ParaTable, KindsFitRangesAndLists) {
    for (int i = 0; i < kParaCount; ++i) {
        const ParaRow& row = ParaRowOf(i);
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.kind == ParaKind::kList, !row.list.empty());
        EXPECT_EQ(row.min.has_value(), row.max.has_value());
        if (row.kind == ParaKind::kFlag) {
            EXPECT_EQ(row.min, 0);
            EXPECT_EQ(row.max, 1);
        }
    }
    EXPECT_EQ(ParaRowOf(PARA_FILL_BLANK_COLOR).kind, ParaKind::kColor);
    EXPECT_EQ(ParaRowOf(PARA_CRT_PT_LT).kind, ParaKind::kPackedPair);
    EXPECT_EQ(ParaRowOf(PARA_LEVELS_LIGHT).kind, ParaKind::kPacked);
    EXPECT_EQ(ParaRowOf(PARA_CROPPING).kind, ParaKind::kKept);
    EXPECT_EQ(ParaRowOf(PARA_PREVIEW_FILE_OPEN).kind, ParaKind::kKept);
}

bool IsEnglish(const Label& text) {
    return std::ranges::all_of(text.In(Language::kEnglish),
                               [](char16_t unit) { return unit < 0x80; });
}

TEST(ParaTable, EveryTextIsThereInEnglish) {
    for (int i = 0; i < kParaCount; ++i) {
        const ParaRow& row = ParaRowOf(i);
        EXPECT_TRUE(IsEnglish(row.label)) << row.name;
        EXPECT_TRUE(IsEnglish(row.meaning)) << row.name;
        EXPECT_EQ(row.label.empty(), row.label.In(Language::kEnglish).empty()) << row.name;
        EXPECT_FALSE(row.meaning.In(Language::kEnglish).empty()) << row.name;
        for (const Label& text : row.list) {
            EXPECT_TRUE(IsEnglish(text)) << row.name << ": " << ToUtf8(text);
            EXPECT_FALSE(text.In(Language::kEnglish).empty()) << row.name;
        }
    }
}

TEST(ParaTable, TextsOfAListDifferInEachLanguage) {
    for (int i = 0; i < kParaCount; ++i)
        for (const Language language : {Language::kChinese, Language::kEnglish}) {
            std::set<std::u16string_view> texts;
            for (const Label& text : ParaRowOf(i).list)
                EXPECT_TRUE(texts.insert(text.In(language)).second)
                    << ParaRowOf(i).name << ": " << ToUtf8(text.In(language));
        }
}

}  // namespace
}  // namespace velloran
