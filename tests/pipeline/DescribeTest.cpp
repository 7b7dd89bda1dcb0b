#include "pipeline/Describe.h"

#include <gtest/gtest.h>

#include <ostream>
#include <utility>
#include <vector>

#include "params/ParaBlock.h"
#include "text/Text.h"

namespace velloran {
namespace {

using Describer = void (*)(const ParaValues&, std::u16string&);
using Values = std::vector<std::pair<int, std::int32_t>>;

/// As the lines stand in the text of a block.
void DescribeCropAndLayout(const ParaValues& values, std::u16string& text) {
    DescribeCrop(values, text);
    DescribeLayout(values, text);
}

std::string Lines(Describer describe, const Values& values) {
    CParaBlock block;
    for (const auto& [index, value] : values)
        block.SetPara(index, value);
    std::u16string text;
    describe(block.GetValues(), text);
    return ToUtf8(text);
}

struct LineCase {
    const char* name;
    Describer describe;
    Values values;
    const char* lines;
};
void PrintTo(const LineCase& c, std::ostream* out) {
    *out << c.name;
}

class DescribedStep : public testing::TestWithParam<LineCase> {};

TEST_P(DescribedStep, WritesItsLines) {
    EXPECT_EQ(Lines(GetParam().describe, GetParam().values), GetParam().lines);
}

// clang-format off
const LineCase kBeforeCases[] = {
    {"GrayTestStrict", DescribeGrayTest, {{PARA_DECREASE_CHECK_GRAY, 1}}, "载入时判断灰度图像: 严格判断\r\n"},
    {"GrayTestNone", DescribeGrayTest, {{PARA_DECREASE_CHECK_GRAY, 2}}, "载入时判断灰度图像: 不判断\r\n"},
    {"GrayTestNoPosition", DescribeGrayTest, {{PARA_DECREASE_CHECK_GRAY, -4}}, "载入时判断灰度图像: -4\r\n"},
    {"Cmyk", DescribeCmyk, {{PARA_REVERSE_CMYK, 1}}, "CMYK JPEG反白\r\n"},
};

const LineCase kGeometryCases[] = {
    {"RotateLeft", DescribeRotate, {{PARA_ROATE, 1}}, "左旋\r\n"},
    {"RotateFlip", DescribeRotate, {{PARA_ROATE, 5}}, "翻转\r\n"},
    {"RotateNegative", DescribeRotate, {{PARA_ROATE, -1}}, ""},
    {"SplitSingle", DescribeSplit,
        {{PARA_PAGE_SPLIT_TYPE, 1}, {PARA_PAGE_SPLIT_LEFT, 0x00100020}, {PARA_PAGE_SPLIT_RIGHT, -1}, {PARA_PAGE_SPLIT_MID, 5}},
        "分页: 单页: left=100020 right=FFFFFFFF\r\n"},
    {"SplitRightToLeft", DescribeSplit,
        {{PARA_PAGE_SPLIT_TYPE, 2}, {PARA_PAGE_SPLIT_LEFT, 1}, {PARA_PAGE_SPLIT_RIGHT, 2}, {PARA_PAGE_SPLIT_MID, 0xABC}},
        "分页: 双页右翻: left=1 right=2 center=ABC\r\n"},
    {"SplitOtherSide", DescribeSplit, {{PARA_PAGE_SPLIT_TYPE, 0x103}}, "分页: 双页左翻: left=0 right=0 center=0\r\n"},
    {"SplitNone", DescribeSplit, {{PARA_PAGE_SPLIT_TYPE, 0x100}}, ""},
    {"SplitUnknownKind", DescribeSplit, {{PARA_PAGE_SPLIT_TYPE, 4}}, ""},
    {"SplitAllBits", DescribeSplit, {{PARA_PAGE_SPLIT_TYPE, -1}}, ""},
    {"Trapezoid", DescribeCorrection,
        {{PARA_CRT_TYPE, 1}, {PARA_CRT_PT_LT, 0x20001}, {PARA_CRT_PT_RT, -1}, {PARA_CRT_PT_RB, 0}, {PARA_CRT_PT_LB, 0x1F}, {PARA_CRT_CROP, 6}, {PARA_CRT_SIZE, 0x640032}},
        "梯形矫正: LT=20001 RT=FFFFFFFF RB=0 LP=1F\r\n"},
    {"TrapezoidMeasured", DescribeCorrection, {{PARA_CRT_TYPE, 2}, {PARA_CRT_CROP, 0x201}},
        "梯形矫正+裁切: LT=0 RT=0 RB=0 LP=0\r\n"},
    // 0x0258 high is 600, 0x0190 low is 400
    {"TrapezoidRatioAndWidth", DescribeCorrection, {{PARA_CRT_TYPE, 2}, {PARA_CRT_CROP, 0x102}, {PARA_CRT_SIZE, 0x02580190}},
        "梯形矫正+裁切: LT=0 RT=0 RB=0 LP=0, w=400\r\n"},
    {"TrapezoidRatioAndHeight", DescribeCorrection, {{PARA_CRT_TYPE, 2}, {PARA_CRT_CROP, 3}, {PARA_CRT_SIZE, 0x02580190}},
        "梯形矫正+裁切: LT=0 RT=0 RB=0 LP=0, h=600\r\n"},
    {"TrapezoidWidth", DescribeCorrection, {{PARA_CRT_TYPE, 2}, {PARA_CRT_CROP, 4}, {PARA_CRT_SIZE, 0x02580190}},
        "梯形矫正+裁切: LT=0 RT=0 RB=0 LP=0, w=400\r\n"},
    {"TrapezoidHeight", DescribeCorrection, {{PARA_CRT_TYPE, 2}, {PARA_CRT_CROP, 5}, {PARA_CRT_SIZE, 0x02580190}},
        "梯形矫正+裁切: LT=0 RT=0 RB=0 LP=0, h=600\r\n"},
    {"TrapezoidBoth", DescribeCorrection, {{PARA_CRT_TYPE, 2}, {PARA_CRT_CROP, 6}, {PARA_CRT_SIZE, -65536 + 400}},
        "梯形矫正+裁切: LT=0 RT=0 RB=0 LP=0, w=400 h=-1\r\n"},
    {"Dewarp", DescribeCorrection, {{PARA_CRT_TYPE, 3}, {PARA_CRT_DEWARPING_TYPE, 2}}, "弯曲页面展平: 自动展平方法: 页边界\r\n"},
    {"CorrectionNoPosition", DescribeCorrection, {{PARA_CRT_TYPE, -7}}, "-7\r\n"},
    {"DeskewRows", DescribeDeskew, {{PARA_DESKEW, 1}}, "纠斜: 自动_横排, 边缘保留\r\n"},
    {"DeskewBoth", DescribeDeskew, {{PARA_DESKEW, 3}, {PARA_DESKEW_EDGE, 2}}, "纠斜: 自动_双向, 边缘扩展\r\n"},
    {"DeskewManual", DescribeDeskew, {{PARA_DESKEW, 4}, {PARA_DESKEW_ANGLE, -105}, {PARA_DESKEW_EDGE, 1}}, "纠斜: 手动, -1.05度, 边缘填白\r\n"},
    {"DeskewNegative", DescribeDeskew, {{PARA_DESKEW, -1}}, ""},
    {"Enlarge", DescribeEnlarge, {{PARA_RESIZE, 101}}, "缩放: 101%\r\n"},
    {"EnlargeNotWhenReduced", DescribeEnlarge, {{PARA_RESIZE, 99}}, ""},
    {"Reduce", DescribeReduceSize, {{PARA_RESIZE, 50}}, "缩放: 50%\r\n"},
    {"ReduceNotWhenEnlarged", DescribeReduceSize, {{PARA_RESIZE, 101}}, ""},
};

const LineCase kLayoutCases[] = {
    {"Margins", DescribeCropAndLayout,
        {{PARA_CROPPING_P_LEFT, 1}, {PARA_CROPPING_P_TOP, 50}, {PARA_CROPPING_P_RIGHT, 1000}, {PARA_CROPPING_P_BOTTOM, 123}},
        "上=5.0%, 下=12.3%, 左=0.1%, 右=100.0%, \r\n"},
    {"Search", DescribeCropAndLayout, {{PARA_FIND_CNT_BOX, 1}},
        "手动选择范围内自动选择, 不计黑边, 忽略斑点直径: 8, 斑点补偿\r\n"},
    {"SearchInsideMargins", DescribeCropAndLayout,
        {{PARA_CROPPING_P_TOP, 20}, {PARA_FIND_CNT_BOX, 1}, {PARA_CBF_BK_MORE, 1}, {PARA_CBF_SPECKLE_SIZE, 20}},
        "上=2.0%, 手动选择范围内自动选择, 不计黑边, 强力去背景, 忽略斑点直径: 20, 斑点补偿\r\n"},
    {"SearchBare", DescribeCropAndLayout,
        {{PARA_FIND_CNT_BOX, 1}, {PARA_CBF_REMOVE_BLACK_EDGE, 0}, {PARA_CBF_SPECKLE_SIZE, 0}, {PARA_CBF_SPECKLE_COMPENSATION, 0}},
        "手动选择范围内自动选择\r\n"},
    {"SearchOptionsAloneSayNothing", DescribeCropAndLayout, {{PARA_CBF_BK_MORE, 1}}, ""},
    {"Dpi", DescribeCropAndLayout, {{PARA_DPI, 600}}, "DPI=600\r\n"},
    {"PageBySize", DescribeCropAndLayout, {{PARA_PAGE_SIZE, 25}},
        "页面大小: A4（公文）, 厘米\r\n水平对齐: 居中, 垂直对齐: 不变\r\n内容框大于版心时: 溢出, 内容框小于版心时: 放大\r\n"},
    {"PageInCentimetres", DescribeCropAndLayout,
        {{PARA_PAGE_SIZE, 5}, {PARA_PAGE_WIDTH, 2100}, {PARA_PAGE_HEIGHT, 2970}, {PARA_MARGIN_TOP, 150}, {PARA_MARGIN_LEFT, 5}, {PARA_ALIGN_H, 1}, {PARA_ALIGN_V, 2}, {PARA_BIG_CNT_BOX, 1}, {PARA_SMALL_CNT_BOX, 0}},
        "页面大小: 指定宽、高, 厘米, 宽度=21.00, 高度=29.70\r\n页边空: 上=1.50, 下=0.00, 左=0.05, 右=0.00\r\n水平对齐: 靠左, 垂直对齐: 靠下\r\n内容框大于版心时: 缩图, 内容框小于版心时: 填白\r\n"},
    {"PageInPixels", DescribeCropAndLayout,
        {{PARA_PAGE_SIZE, 3}, {PARA_PAGE_SIZE_UNIT, 1}, {PARA_PAGE_WIDTH, 1600}, {PARA_PAGE_HEIGHT, 9}, {PARA_MARGIN_RIGHT, 40}},
        "页面大小: 指定宽度, 像素, 宽度=1600\r\n页边空: 上=0, 下=0, 左=0, 右=40\r\n水平对齐: 居中, 垂直对齐: 不变\r\n内容框大于版心时: 溢出, 内容框小于版心时: 放大\r\n"},
    {"PageByHeight", DescribeCropAndLayout, {{PARA_PAGE_SIZE, 4}, {PARA_PAGE_WIDTH, 1}, {PARA_PAGE_HEIGHT, 99}},
        "页面大小: 指定高度, 厘米, 高度=0.99\r\n水平对齐: 居中, 垂直对齐: 不变\r\n内容框大于版心时: 溢出, 内容框小于版心时: 放大\r\n"},
    {"PageNoPositions", DescribeCropAndLayout,
        {{PARA_PAGE_SIZE, 36}, {PARA_PAGE_SIZE_UNIT, 2}, {PARA_ALIGN_H, 9}, {PARA_ALIGN_V, -9}, {PARA_BIG_CNT_BOX, 3}, {PARA_SMALL_CNT_BOX, 2}},
        "页面大小: 36, 2\r\n水平对齐: 9, 垂直对齐: -9\r\n内容框大于版心时: 3, 内容框小于版心时: 2\r\n"},
};

const LineCase kToneCases[] = {
    {"ReplaceColor", DescribeReplaceColor,
        {{PARA_REPLACE_COLOR_TYPE, 1}, {PARA_REPLACE_COLOR_FROM, 0x030201}, {PARA_REPLACE_COLOR_TO, 0xFF8000}},
        "颜色替换: 替换条件: RGB分量与样本差小于阀值, 阀值: 15, (1, 2, 3) -> (0, 128, 255)\r\n"},
    {"ReplaceColorExtremes", DescribeReplaceColor,
        {{PARA_REPLACE_COLOR_TYPE, 99}, {PARA_REPLACE_COLOR_FROM, -1}, {PARA_REPLACE_COLOR_THRESHOLD, INT32_MAX}},
        "颜色替换: 替换条件: 99, 阀值: 2147483648, (255, 255, 255) -> (255, 255, 255)\r\n"},
    {"SwapChannel", DescribeSwapChannel, {{PARA_SWAP_CHANNEL, 3}}, "通道互换: 蓝<->绿\r\n"},
    {"Negate", DescribeNegate, {{PARA_NEGATE, 1}}, "反白\r\n"},
    {"CombineChannel", DescribeCombineChannel, {{PARA_COMBINE_CHANNEL, 13}}, "通道混合: 乌贼漂白\r\n"},
    {"Illumination", DescribeIllumination, {{PARA_LUM_CORRECT, 6}}, "黑白文字+红章\r\n"},
    {"Unshadow", DescribeUnshadow, {{PARA_ADJUST_UNSHADOW, 20}}, "去除背景阴影: 20\r\n"},
    {"UnshadowKeepsRed", DescribeUnshadow, {{PARA_ADJUST_UNSHADOW, -20}}, "去除背景阴影: 20, 红章\r\n"},
    {"UnshadowSmallest", DescribeUnshadow, {{PARA_ADJUST_UNSHADOW, INT32_MIN}}, "去除背景阴影: 2147483648, 红章\r\n"},
    {"WhiteBalance", DescribeWhiteBalance, {{PARA_WHITE_BALANCE, 2}}, "白平衡: 白点+黑点\r\n"},
    {"AutoLevels", DescribeLevelsStep, {{PARA_AUTO_LEVELS, 12}}, "自动漂白4\r\n"},
    {"ManualLevels", DescribeLevelsStep, {{PARA_LEVELS_SHADOW, 0x10000000}, {PARA_LEVELS_LIGHT, 0x7FFFFFFF}}, "色阶: 10000000, 7FFFFFFF\r\n"},
    {"ManualLevelsShadowAlone", DescribeLevelsStep, {{PARA_LEVELS_SHADOW, 0xA}}, "色阶: A, FFFFFFFF\r\n"},
    {"NoManualLevelsUnderAutomaticOnes", DescribeLevelsStep, {{PARA_AUTO_LEVELS, 1}, {PARA_LEVELS_SHADOW, 0xA}}, "自动色阶1\r\n"},
    {"Vibrance", DescribeVibrance, {{PARA_ADJUST_VIBRANCE, -30}}, "自然饱和度: -30\r\n"},
    {"Highlight", DescribePixelMapping, {{PARA_HIGHLIGHT, 120}}, "高亮度: 120, 高亮值=190\r\n"},
    {"HighlightThresholdAlone", DescribePixelMapping, {{PARA_THRESHOLD, 200}}, ""},
    {"Brightness", DescribePixelMapping, {{PARA_BRIGHTNESS, 0}}, "亮度: 0\r\n"},
    {"Contrast", DescribePixelMapping, {{PARA_CONTRAST, 120}}, "对比度: 120\r\n"},
    {"Gamma", DescribePixelMapping, {{PARA_GAMMA, 300}}, "Gamma校正: 300\r\n"},
    {"CurveTuning", DescribePixelMapping, {{PARA_CURVE_DIV, 30}, {PARA_CURVE_OFFSET, 5}}, "曲线参数调节: 画面=30, 背景=5\r\n"},
    {"CurveTuningWithoutOffset", DescribePixelMapping, {{PARA_CURVE_DIV, 254}}, "曲线参数调节: 画面=254, 背景=0\r\n"},
    {"CurveTuningOffsetAlone", DescribePixelMapping, {{PARA_CURVE_OFFSET, 5}}, ""},
    {"CurveTuningNeutralDivisor", DescribePixelMapping, {{PARA_CURVE_DIV, 255}, {PARA_CURVE_OFFSET, 5}}, ""},
    {"Curve", DescribePixelMapping, {{PARA_CURVE, 150}, {PARA_CURVE_1, 0}, {PARA_CURVE_2, 110}, {PARA_CURVE_3, 255}}, "曲线: X1=150, Y1=0, X2=110, Y2=255\r\n"},
    {"CurveUnset", DescribePixelMapping, {{PARA_CURVE_2, 0}, {PARA_CURVE_3, 0}}, ""},
    {"CurveOneEndMoved", DescribePixelMapping, {{PARA_CURVE_3, 0}}, "曲线: X1=0, Y1=0, X2=255, Y2=0\r\n"},
    {"MappingStagesInTheirOrder", DescribePixelMapping,
        {{PARA_GAMMA, 90}, {PARA_CURVE, 1}, {PARA_CONTRAST, 110}, {PARA_CURVE_DIV, 7}, {PARA_BRIGHTNESS, 105}, {PARA_HIGHLIGHT, 101}},
        "高亮度: 101, 高亮值=190\r\n亮度: 105\r\n曲线参数调节: 画面=7, 背景=0\r\n对比度: 110\r\n曲线: X1=1, Y1=0, X2=255, Y2=255\r\nGamma校正: 90\r\n"},
    {"LightShadow", DescribeLight, {{PARA_LIGHT_LOW, 40}}, "光线: 阴影=40, 高光=0\r\n"},
    {"LightHighlight", DescribeLight, {{PARA_LIGHT_HIGH, -100}}, "光线: 阴影=0, 高光=-100\r\n"},
    {"AutoLevelsPost", DescribeAutoLevelsPost, {{PARA_AUTO_LEVELS_POST, 8}}, "后处理: 自动亮度3\r\n"},
    {"AutoLevelsPostNoPosition", DescribeAutoLevelsPost, {{PARA_AUTO_LEVELS_POST, 9}}, "后处理: 9\r\n"},
    {"Equalize", DescribeEqualize, {{PARA_HIST_EQUALIZE, 1}}, "色调均化\r\n"},
};

const LineCase kFilterCases[] = {
    {"MultiScale", DescribeMultiScale, {{PARA_ADJUST_MULTI_SCALE_R, 12}}, "多尺度细节增强: 12\r\n"},
    {"Erode", DescribeErode, {{PARA_ERODE, 16}}, "闭0404\r\n"},
    {"Blur", DescribeBlur, {{PARA_BLUR, 6}}, "柔化: a1级\r\n"},
    {"Gaussian", DescribeGaussian, {{PARA_ADJUST_BLUR_RADIUS, 15}}, "高斯模糊半径: 1.5\r\n"},
    {"SurfaceBlur", DescribeSurfaceBlur, {{PARA_SURFACE_BLUR_TIMES, 2}}, "遍数: 2, 算法: Photoshop, 半径: 5, 阀值: 20\r\n"},
    {"SurfaceBlurExtremes", DescribeSurfaceBlur,
        {{PARA_SURFACE_BLUR_TIMES, 4}, {PARA_SURFACE_BLUR_ALGRITHOM, -1}, {PARA_SURFACE_BLUR_RADIUS, INT32_MAX}, {PARA_SURFACE_BLUR_THRESHOLD, INT32_MAX}},
        "遍数: 4, 算法: -1, 半径: 2147483648, 阀值: 2147483649\r\n"},
    {"SurfaceBlurSettingsAlone", DescribeSurfaceBlur, {{PARA_SURFACE_BLUR_RADIUS, 1}}, ""},
    {"Sharpen", DescribeSharpen, {{PARA_SHARPEN, 12}}, "锐化: a3级\r\n"},
    {"AdjustSharpen", DescribeAdjustSharpen, {{PARA_ADJUST_SHARPEN_PERCENT, 10}, {PARA_ADJUST_SHARPEN_SIZE, 9}}, "高斯锐化半径: 10\r\n阶数: 25\r\n"},
    {"AdjustSharpenExtremes", DescribeAdjustSharpen, {{PARA_ADJUST_SHARPEN_PERCENT, -1}, {PARA_ADJUST_SHARPEN_SIZE, INT32_MAX}}, "高斯锐化半径: -1\r\n阶数: 4294967301\r\n"},
    {"AdjustSharpenSizeAlone", DescribeAdjustSharpen, {{PARA_ADJUST_SHARPEN_SIZE, 9}}, ""},
    {"Usm", DescribeUsm, {{PARA_USM_TIMES, 1}, {PARA_USM_RADIUS, 25}, {PARA_USM_THRESHOLD, 3}}, "遍数: 1, 数量: 50, 半径: 2.5, 阀值: 3\r\n"},
    {"UsmSettingsAlone", DescribeUsm, {{PARA_USM_AMOUNT, 100}}, ""},
};

const LineCase kColorCases[] = {
    {"AsItIs", DescribeColorReduction, {}, "色彩数: 保持原样\r\n"},
    {"AsItIsHasNoOptions", DescribeColorReduction, {{PARA_DECREASE_BPP_DITHER, 1}, {PARA_DECREASE_DESPECKLE_SIZE, 3}}, "色彩数: 保持原样\r\n"},
    {"AsItIsTransparent", DescribeColorReduction, {{PARA_DECREASE_TRANSPARENT, 1}}, "色彩数: 保持原样, 索引色PNG、GIF设置背景透明\r\n"},
    {"TrueColor", DescribeColorReduction, {{PARA_COLOR, 0}, {PARA_DECREASE_TRANSPARENT, 1}}, "色彩数: 24位色\r\n"},
    {"Gray256", DescribeColorReduction, {{PARA_COLOR, 1}, {PARA_DECREASE_BPP_DITHER, 1}}, "色彩数: 256级灰度\r\n"},
    {"Palette", DescribeColorReduction, {{PARA_COLOR, 3}}, "色彩数: 256色, 调色板量化算法: Xiaolin Wu\r\n"},
    {"PaletteDithered", DescribeColorReduction, {{PARA_COLOR, 11}, {PARA_DECREASE_BPP_DITHER, 1}, {PARA_DECREASE_BPP_QUANTIZE, 0}, {PARA_DECREASE_TRANSPARENT, 1}},
        "色彩数: 16色, 抖动, 调色板量化算法: 八叉树, 索引色PNG、GIF设置背景透明\r\n"},
    {"Grays", DescribeColorReduction, {{PARA_COLOR, 4}, {PARA_DECREASE_BPP_QUANTIZE, 4}}, "色彩数: 16级灰度, 调色板量化算法: 神经网络\r\n"},
    {"GraysDitheredTakeAnEvenRamp", DescribeColorReduction, {{PARA_COLOR, 17}, {PARA_DECREASE_BPP_DITHER, 1}}, "色彩数: 32级灰度, 抖动\r\n"},
    {"HighColor", DescribeColorReduction, {{PARA_COLOR, 18}, {PARA_DECREASE_TRANSPARENT, 1}}, "色彩数: 16位色565\r\n"},
    {"HighColorDithered", DescribeColorReduction, {{PARA_COLOR, 19}, {PARA_DECREASE_BPP_DITHER, 1}}, "色彩数: 16位色555, 抖动\r\n"},
    {"BlackWhite", DescribeColorReduction, {{PARA_COLOR, 7}}, "色彩数: 纯黑白, 阀值算法: Otsu\r\n"},
    {"BlackWhiteByPalette", DescribeColorReduction, {{PARA_COLOR, 7}, {PARA_DECREASE_THRESHOLD_METHOD, 0}}, "色彩数: 纯黑白, 调色板量化算法: Xiaolin Wu, 阀值算法: 同调色板量化算法\r\n"},
    {"BlackWhiteWindow", DescribeColorReduction, {{PARA_COLOR, 7}, {PARA_DECREASE_THRESHOLD_METHOD, 2}}, "色彩数: 纯黑白, 阀值算法: Wolf, 窗口尺寸: 50\r\n"},
    {"BlackWhiteCleaned", DescribeColorReduction,
        {{PARA_COLOR, 7}, {PARA_DECREASE_THRESHOLD_METHOD, 2}, {PARA_DECREASE_WINDOW_SIZE, 49}, {PARA_DECREASE_DESPECKLE_SIZE, 3},
         {PARA_DECREASE_BLOCK_WIDTH, 100}, {PARA_DECREASE_BLOCK_HEIGHT, 50}, {PARA_DECREASE_BLOCK_HEIGHT_CONDITION, 1},
         {PARA_DECREASE_DE_BLACK, 1}, {PARA_DECREASE_DE_SMOOTH, 1}, {PARA_DECREASE_TRANSPARENT, 1}},
        "色彩数: 纯黑白, 索引色PNG、GIF设置背景透明, 阀值算法: Wolf, 窗口尺寸: 500, 去斑直径: 3, 去除符合下列条件的黑色区域: 宽度大于100, 高度小于50, 去除与边缘接触的黑色区域, 边缘去毛刺\r\n"},
    {"BlackWhiteBlockNeedsBothSizes", DescribeColorReduction, {{PARA_COLOR, 7}, {PARA_DECREASE_BLOCK_WIDTH, 100}}, "色彩数: 纯黑白, 阀值算法: Otsu\r\n"},
    {"BlackWhiteDithered", DescribeColorReduction,
        {{PARA_COLOR, 7}, {PARA_DECREASE_BPP_DITHER, 1}, {PARA_DECREASE_BW_DITHER_METHOD, 1}, {PARA_DECREASE_DESPECKLE_SIZE, 3}, {PARA_DECREASE_DE_BLACK, 1}},
        "色彩数: 纯黑白, 抖动, 抖动算法: Floyd Steinberg\r\n"},
    {"BlackWhiteExtremes", DescribeColorReduction, {{PARA_COLOR, 7}, {PARA_DECREASE_THRESHOLD_METHOD, 3}, {PARA_DECREASE_WINDOW_SIZE, INT32_MAX}},
        "色彩数: 纯黑白, 阀值算法: 3, 窗口尺寸: 21474836480\r\n"},
    {"NoPosition", DescribeColorReduction, {{PARA_COLOR, 20}, {PARA_DECREASE_BPP_DITHER, 1}}, "色彩数: 20\r\n"},
    {"NegativePosition", DescribeColorReduction, {{PARA_COLOR, INT32_MIN}}, "色彩数: -2147483648\r\n"},
};

const LineCase kOutputCases[] = {
    {"Quality", DescribeOutput, {{PARA_QUALITY, 90}}, "Jpg质量: 90\r\n"},
    {"Jp2Rate", DescribeOutput, {{PARA_JP2_RATE, 20}}, "Jp2压缩: 20\r\n"},
    {"SwitchedOff", DescribeOutput, {{JPG_OPTIMIZE, 0}, {JPG_PROGRESSIVE, 0}}, "优化编码=FALSE, 渐进式=FALSE\r\n"},
    {"SwitchedOn", DescribeOutput, {{JPG_SRC_SAMPLE, 1}, {JPG_SRC_QUALITY, 1}, {JPG_SRC_CODE, 1}},
        "优先使用原JPG采样参数, 优先使用原JPG质量系数, 优先使用原JPG编码参数\r\n"},
    {"ManualSampling", DescribeOutput, {{JPG_RESAMPLE_TYPE, 1}, {JPG_RESAMPLE_H, 0}}, "方式: 手动, 水平方向缩一半=FALSE\r\n"},
    {"AllInOrder", DescribeOutput, {{PARA_QUALITY, 10}, {JPG_RESAMPLE_V, 0}, {PARA_JP2_RATE, 1}}, "Jpg质量: 10\r\n垂直方向缩一半=FALSE\r\nJp2压缩: 1\r\n"},
    {"NoPosition", DescribeOutput, {{JPG_RESAMPLE_TYPE, 5}}, "方式: 5\r\n"},
};
// clang-format on

std::string CaseName(const testing::TestParamInfo<LineCase>& instance) {
    return instance.param.name;
}

INSTANTIATE_TEST_SUITE_P(Before, DescribedStep, testing::ValuesIn(kBeforeCases), CaseName);
INSTANTIATE_TEST_SUITE_P(Geometry, DescribedStep, testing::ValuesIn(kGeometryCases), CaseName);
INSTANTIATE_TEST_SUITE_P(Layout, DescribedStep, testing::ValuesIn(kLayoutCases), CaseName);
INSTANTIATE_TEST_SUITE_P(Tone, DescribedStep, testing::ValuesIn(kToneCases), CaseName);
INSTANTIATE_TEST_SUITE_P(Filters, DescribedStep, testing::ValuesIn(kFilterCases), CaseName);
INSTANTIATE_TEST_SUITE_P(Color, DescribedStep, testing::ValuesIn(kColorCases), CaseName);
INSTANTIATE_TEST_SUITE_P(Output, DescribedStep, testing::ValuesIn(kOutputCases), CaseName);

constexpr Describer kAllDescribers[] = {
    DescribeGrayTest,       DescribeCmyk,         DescribeRotate,         DescribeSplit,
    DescribeCorrection,     DescribeDeskew,       DescribeCropAndLayout,  DescribeReplaceColor,
    DescribeSwapChannel,    DescribeNegate,       DescribeCombineChannel, DescribeIllumination,
    DescribeUnshadow,       DescribeWhiteBalance, DescribeEnlarge,        DescribeLevelsStep,
    DescribeVibrance,       DescribePixelMapping, DescribeLight,          DescribeMultiScale,
    DescribeAutoLevelsPost, DescribeEqualize,     DescribeErode,          DescribeBlur,
    DescribeGaussian,       DescribeSurfaceBlur,  DescribeReduceSize,     DescribeSharpen,
    DescribeAdjustSharpen,  DescribeUsm,          DescribeNothing,        DescribeOutput,
};

TEST(Describe, NoStepButColorReductionSpeaksOfADefaultBlock) {
    for (const Describer describe : kAllDescribers)
        EXPECT_EQ(Lines(describe, {}), "");
}

TEST(Describe, ADefaultBlockIsOneLine) {
    EXPECT_EQ(ToUtf8(CParaBlock().Describe()), "色彩数: 保持原样\r\n");
}

/// A block in which every step has something to say.
CParaBlock FullBlock() {
    CParaBlock block;
    const Values values = {{PARA_DECREASE_CHECK_GRAY, 1},
                           {PARA_REVERSE_CMYK, 1},
                           {PARA_ROATE, 2},
                           {PARA_PAGE_SPLIT_TYPE, 1},
                           {PARA_CRT_TYPE, 3},
                           {PARA_DESKEW, 2},
                           {PARA_CROPPING_P_TOP, 30},
                           {PARA_DPI, 400},
                           {PARA_REPLACE_COLOR_TYPE, 3},
                           {PARA_SWAP_CHANNEL, 1},
                           {PARA_NEGATE, 1},
                           {PARA_COMBINE_CHANNEL, 1},
                           {PARA_LUM_CORRECT, 1},
                           {PARA_ADJUST_UNSHADOW, 5},
                           {PARA_WHITE_BALANCE, 1},
                           {PARA_RESIZE, 150},
                           {PARA_AUTO_LEVELS, 3},
                           {PARA_LEVELS_SHADOW, 7},
                           {PARA_ADJUST_VIBRANCE, 9},
                           {PARA_HIGHLIGHT, 110},
                           {PARA_BRIGHTNESS, 90},
                           {PARA_CURVE_DIV, 1},
                           {PARA_CONTRAST, 101},
                           {PARA_CURVE, 2},
                           {PARA_GAMMA, 80},
                           {PARA_LIGHT_LOW, 1},
                           {PARA_ADJUST_MULTI_SCALE_R, 4},
                           {PARA_AUTO_LEVELS_POST, 1},
                           {PARA_HIST_EQUALIZE, 1},
                           {PARA_ERODE, 1},
                           {PARA_BLUR, 1},
                           {PARA_ADJUST_BLUR_RADIUS, 7},
                           {PARA_SURFACE_BLUR_TIMES, 1},
                           {PARA_SHARPEN, 1},
                           {PARA_ADJUST_SHARPEN_PERCENT, 3},
                           {PARA_USM_TIMES, 2},
                           {PARA_COLOR, 0},
                           {PARA_QUALITY, 80},
                           {JPG_PROGRESSIVE, 0},
                           {PARA_JP2_RATE, 30}};
    for (const auto& [index, value] : values)
        block.SetPara(index, value);
    return block;
}

TEST(Describe, LinesStandInTheOrderOfThePipeline) {
    EXPECT_EQ(ToUtf8(FullBlock().Describe()),
              "载入时判断灰度图像: 严格判断\r\n"
              "CMYK JPEG反白\r\n"
              "右旋\r\n"
              "分页: 单页: left=0 right=0\r\n"
              "弯曲页面展平: 自动展平方法: 扩展文本行\r\n"
              "纠斜: 自动_竖排, 边缘保留\r\n"
              "上=3.0%, \r\n"
              "DPI=400\r\n"
              "颜色替换: 替换条件: RG分量差值大于阀值, 阀值: 15, (0, 0, 0) -> (255, 255, 255)\r\n"
              "通道互换: 红<->蓝\r\n"
              "反白\r\n"
              "通道混合: 红\r\n"
              "照度修正\r\n"
              "去除背景阴影: 5\r\n"
              "白平衡: 白点矫正\r\n"
              "缩放: 150%\r\n"
              "自动对比1\r\n"
              "自然饱和度: 9\r\n"
              "高亮度: 110, 高亮值=190\r\n"
              "亮度: 90\r\n"
              "曲线参数调节: 画面=1, 背景=0\r\n"
              "对比度: 101\r\n"
              "曲线: X1=2, Y1=0, X2=255, Y2=255\r\n"
              "Gamma校正: 80\r\n"
              "光线: 阴影=1, 高光=0\r\n"
              "多尺度细节增强: 4\r\n"
              "后处理: 自动色阶1\r\n"
              "色调均化\r\n"
              "加粗01\r\n"
              "柔化: 01级\r\n"
              "高斯模糊半径: 0.7\r\n"
              "遍数: 1, 算法: Photoshop, 半径: 5, 阀值: 20\r\n"
              "锐化: 01级\r\n"
              "高斯锐化半径: 3\r\n"
              "阶数: 7\r\n"
              "遍数: 2, 数量: 50, 半径: 1.0, 阀值: 0\r\n"
              "色彩数: 24位色\r\n"
              "Jpg质量: 80\r\n"
              "渐进式=FALSE\r\n"
              "Jp2压缩: 30\r\n");
}

TEST(Describe, AReductionInSizeStandsBehindTheBlurs) {
    CParaBlock block;
    block.SetPara(PARA_RESIZE, 50);
    block.SetPara(PARA_BLUR, 1);
    block.SetPara(PARA_SHARPEN, 1);
    block.SetPara(PARA_CONTRAST, 101);
    EXPECT_EQ(ToUtf8(block.Describe()),
              "对比度: 101\r\n柔化: 01级\r\n缩放: 50%\r\n锐化: 01级\r\n色彩数: 保持原样\r\n");
}

TEST(Describe, LeavesTheBlockAsItIs) {
    const CParaBlock block = FullBlock();
    block.Describe();
    EXPECT_TRUE(block.Equals(FullBlock()));
}

TEST(Describe, AnyValuesAreDescribedInWholeLines) {
    for (const std::int32_t value :
         {INT32_MIN, -65536, -1, 0, 1, 2, 3, 7, 255, 256, 65535, INT32_MAX}) {
        CParaBlock block;
        for (int i = 0; i < kParaCount; ++i)
            block.SetPara(i, value);
        const std::u16string text = block.Describe();
        EXPECT_TRUE(text.ends_with(u"\r\n"));
        for (std::size_t at = text.find(u'\n'); at != text.npos; at = text.find(u'\n', at + 1))
            EXPECT_EQ(text[at - 1], u'\r');
        EXPECT_EQ(text.find(u"\r\n\r\n"), text.npos);
        EXPECT_FALSE(block.CropSummary().find(u'\n') != std::u16string::npos);
    }
}

TEST(Describe, ATextRunEndsAtItsStop) {
    CParaBlock block = FullBlock();
    std::u16string text;
    block.RunPipeline(nullptr, nullptr, nullptr, {}, kStopNothing, &text);
    EXPECT_EQ(ToUtf8(text), "");
    block.RunPipeline(nullptr, nullptr, nullptr, {}, kStopSplit, &text);
    EXPECT_EQ(ToUtf8(text), "右旋\r\n分页: 单页: left=0 right=0\r\n");
}

}  // namespace
}  // namespace velloran
