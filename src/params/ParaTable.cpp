#include "params/ParaTable.h"

#include <algorithm>
#include <array>
#include <cassert>

#include "params/ParaLists.h"
#include "text/Labels.h"
#include "text/NumberText.h"

namespace velloran {

namespace {

using Name = std::string_view;
using Text = Label;
using Texts = std::span<const Text>;
using Limit = std::optional<std::int32_t>;

constexpr std::int32_t kLowest = ParaRange::kLowest, kHighest = ParaRange::kHighest;

/// A row, and behind it what its values mean.
struct Row : ParaRow {
    /// Its place in a tab, from 1.
    constexpr Row In(ParaTab in, int place, ParaSet among) const {
        Row row = *this;
        row.tab = in;
        row.tabPlace = place;
        row.set = among;
        return row;
    }
    constexpr Row Among(ParaSet among) const {
        Row row = *this;
        row.set = among;
        return row;
    }
    constexpr Row Unit(ParaUnit shown) const {
        Row row = *this;
        row.unit = shown;
        return row;
    }
    constexpr Row Tenths(ParaUnit shown) const {
        Row row = Unit(shown);
        row.scale.divisor = 10;
        return row;
    }
    constexpr Row Hundredths(ParaUnit shown) const {
        Row row = Unit(shown);
        row.scale.divisor = 100;
        return row;
    }
    /// Shown as value * factor + offset.
    constexpr Row Counts(std::int32_t factor, std::int32_t offset,
                         ParaUnit shown = ParaUnit::kNoUnit) const {
        Row row = Unit(shown);
        row.scale = {factor, offset, 1};
        return row;
    }
    constexpr Row Neutral(std::int32_t value) const {
        Row row = *this;
        row.neutral = value;
        return row;
    }
    /// A step has work at these values; the default is neutral.
    constexpr Row Runs(int step, std::int32_t from, std::int32_t to) const {
        Row row = Neutral(defaultValue);
        for (ParaGate& gate : row.gates)
            if (gate.step == 0) {
                gate = {step, {from, to}};
                break;
            }
        return row;
    }
    /// A step has work at every value but the default.
    constexpr Row RunsUnlessNeutral(int step) const {
        const Row row = defaultValue == kLowest ? *this : Runs(step, kLowest, defaultValue - 1);
        return row.Runs(step, defaultValue + 1, kHighest);
    }
    constexpr Row Packs(std::span<const ParaField> packed) const {
        Row row = *this;
        row.fields = packed;
        return row;
    }
    constexpr Row When(ParaIndex other, ParaRange values) const {
        Row row = *this;
        row.enabled = {other, {values}, 1};
        return row;
    }
    constexpr Row When(ParaIndex other, ParaRange values, ParaRange orThese) const {
        Row row = *this;
        row.enabled = {other, {values, orThese}, 2};
        return row;
    }
};

constexpr Row Number(Name name, std::int32_t value, Limit min, Limit max, Text label,
                     Text meaning) {
    return {{name, value, ParaKind::kNumber, min, max, {}, label, meaning}};
}

constexpr Row List(Name name, std::int32_t value, Texts list, Text label, Text meaning) {
    return {{name, value, ParaKind::kList, 0, static_cast<std::int32_t>(list.size()) - 1, list,
             label, meaning}};
}

constexpr Row Flag(Name name, std::int32_t value, Text label, Text meaning) {
    return {{name, value, ParaKind::kFlag, 0, 1, {}, label, meaning}};
}

constexpr Row Unbound(ParaKind kind, Name name, std::int32_t value, Text label, Text meaning) {
    return {{name, value, kind, {}, {}, {}, label, meaning}};
}

constexpr Row Pair(Name name, Text meaning) {
    return Unbound(ParaKind::kPackedPair, name, 0, {}, meaning);
}

constexpr auto kAny = std::nullopt;
using enum ParaKind;
using enum ParaTab;
using enum ParaSet;
using enum ParaUnit;

constexpr ParaField kPoint[] = {{.name = "x", .bits = 16, .isSigned = true},
                                {.name = "y", .shift = 16, .bits = 16, .isSigned = true}};
constexpr ParaField kLineEnds[] = {{.name = "top", .bits = 16, .isSigned = true},
                                   {.name = "bottom", .shift = 16, .bits = 16, .isSigned = true}};
constexpr ParaField kSize[] = {{.name = "width", .bits = 16, .isSigned = true},
                               {.name = "height", .shift = 16, .bits = 16, .isSigned = true}};
constexpr ParaField kCropFields[] = {
    {.name = "mode", .list = lists::kCorrectionSizeMode},
    {.name = "ratio", .shift = 8, .list = lists::kCorrectionRatio}};
constexpr ParaField kSplitFields[] = {{.name = "kind", .list = lists::kSplitKind},
                                      {.name = "secondSide", .shift = 8, .bits = 1}};
constexpr ParaField kTargetFields[] = {
    {.name = "extension", .bits = 4, .list = lists::kTargetFormat},
    {.name = "other", .shift = 4, .bits = 4, .list = lists::kTargetFormat},
    {.name = "blackWhite", .shift = 8, .bits = 4, .list = lists::kTargetFormat},
    {.name = "gray256", .shift = 12, .bits = 4, .list = lists::kTargetFormat},
    {.name = "color24", .shift = 16, .bits = 4, .list = lists::kTargetFormat},
    {.name = "cropGif", .shift = 20, .bits = 4}};
constexpr ParaField kColorFields[] = {
    {.name = "red"}, {.name = "green", .shift = 8}, {.name = "blue", .shift = 16}};
constexpr ParaField kLevelsFields[] = {{.name = "red"},
                                       {.name = "green", .shift = 8},
                                       {.name = "blue", .shift = 16},
                                       {.name = "all", .shift = 24}};

// clang-format off
constexpr std::array<ParaRow, kParaCount> kRows = {
    Number("PARA_BRIGHTNESS", 100, 0, 200, {u"亮度:", u"Brightness:"}, {u"亮度，百分比，100为不变", u"Brightness in percent, 100 leaves it"}).In(kImage, 1, kTone).Unit(kPercent).RunsUnlessNeutral(16),
    Number("PARA_CONTRAST", 100, 0, 200, {u"对比度:", u"Contrast:"}, {u"对比度，百分比，100为不变", u"Contrast in percent, 100 leaves it"}).In(kImage, 2, kTone).Unit(kPercent).RunsUnlessNeutral(16),
    Number("PARA_HIGHLIGHT", 100, 100, 200, {u"高亮度:", u"Highlight:"}, {u"高亮部分的增益，百分比，100为关闭", u"Gain of the highlights in percent, 100 is off"}).In(kImage, 3, kTone).Unit(kPercent).RunsUnlessNeutral(16),
    Number("PARA_GAMMA", 100, 0, 300, {u"Gamma校正:", u"Gamma:"}, {u"Gamma，百分比，100为不变", u"Gamma in percent, 100 leaves it"}).In(kImage, 5, kTone).Unit(kPercent).RunsUnlessNeutral(16),
    Number("PARA_CURVE", 0, 0, 255, u"X1", {u"曲线控制点X1", u"Curve point X1"}).In(kImage, 11, kCurve).RunsUnlessNeutral(16),
    Number("PARA_RESIZE", 100, 0, 200, {u"尺寸缩放:", u"Scale:"}, {u"尺寸缩放，百分比", u"Scale of the size in percent"}).Among(kOptions).Unit(kPercent).Runs(13, 101, kHighest).Runs(25, kLowest, 99),
    Number("PARA_QUALITY", 70, 10, 100, {u"JPG质量:", u"JPEG quality:"}, {u"JPEG质量系数", u"JPEG quality"}).In(kOutput, 1, kFileQuality),
    Number("PARA_JP2_RATE", 15, 1, 100, {u"JP2压缩比:", u"JPEG 2000 rate:"}, {u"JPEG 2000压缩比", u"JPEG 2000 compression ratio"}).In(kOutput, 2, kFileQuality),
    Unbound(kKept, "PARA_CROPPING", 100, {}, {u"保留，不使用", u"Kept, not used"}),
    List("PARA_SHARPEN", 0, lists::kSharpen, labels::kSharpen, {u"锐化级别", u"Level of sharpening"}).In(kImage, 6, kTone).Runs(26, 1, 12),
    List("PARA_BLUR", 0, lists::kBlur, labels::kSoften, {u"柔化级别", u"Level of softening"}).In(kImage, 7, kTone).Runs(22, 1, 10),
    List("PARA_COLOR", 2, lists::kColor, labels::kColorCount, {u"目标色彩数", u"Target color depth"}).In(kOutput, 11, kReduction).Neutral(2),
    Flag("PARA_GO_SUB_DIR", 1, {u"包括子文件夹", u"With subfolders"}, {u"批量转换包括子文件夹", u"Batch: descend into subfolders"}).Among(kBatch),
    Number("PARA_THRESHOLD", 190, 150, 255, {u"高亮值:", u"Highlights from:"}, {u"高亮度从该灰度值起作用", u"Level from which the highlight gain acts"}).In(kImage, 4, kTone).When(PARA_HIGHLIGHT, {101, kHighest}),
    List("PARA_AUTO_LEVELS", 0, lists::kAutoLevels, {}, {u"像素映射前的自动色阶", u"Automatic levels before pixel mapping"}).In(kImage, 42, kLevels).Runs(14, 1, 12),
    List("PARA_AUTO_LEVELS_POST", 0, Texts(lists::kAutoLevels).first(lists::kAutoLevelsPostCount), labels::kPostProcessing, {u"细节增强后的自动色阶", u"Automatic levels after the detail steps"}).In(kImage, 10, kTone).Runs(19, 1, 12),
    List("PARA_ERODE", 0, lists::kErode, {}, {u"笔画加粗、变细、开、闭", u"Embolden, thin, open or close the strokes"}).In(kImage, 9, kTone).Runs(21, 1, 16),
    Flag("PARA_NEGATE", 0, labels::kNegate, {u"反白（负片）", u"Negative"}).In(kImage, 26, kChannels).RunsUnlessNeutral(8),
    List("PARA_SWAP_CHANNEL", 0, lists::kSwapChannel, labels::kSwapChannel, {u"通道互换", u"Swap of two channels"}).In(kImage, 23, kChannels).Runs(7, 1, 3),
    List("PARA_COMBINE_CHANNEL", 0, lists::kCombineChannel, labels::kCombineChannel, {u"通道混合为灰度", u"Mix of channels to gray"}).In(kImage, 24, kChannels).Runs(9, 1, 13),
    List("PARA_REPLACE_COLOR_TYPE", 0, lists::kReplaceColor, labels::kReplaceCondition, {u"颜色替换条件", u"Condition of color replacement"}).In(kImage, 28, kChannels).Runs(6, 1, 8),
    Unbound(kColor, "PARA_REPLACE_COLOR_FROM", 0, {}, {u"颜色替换的样本颜色", u"Sample color of color replacement"}).In(kImage, 29, kChannels).Packs(kColorFields).When(PARA_REPLACE_COLOR_TYPE, {1, 8}),
    Unbound(kColor, "PARA_REPLACE_COLOR_TO", 0xFFFFFF, {}, {u"颜色替换的目标颜色", u"New color of color replacement"}).In(kImage, 30, kChannels).Packs(kColorFields).When(PARA_REPLACE_COLOR_TYPE, {1, 8}),
    Number("PARA_REPLACE_COLOR_THRESHOLD", 14, 0, 254, labels::kThresholdValue, {u"颜色替换阀值减1", u"Threshold of color replacement, less 1"}).In(kImage, 31, kChannels).Counts(1, 1).When(PARA_REPLACE_COLOR_TYPE, {1, 8}),
    List("PARA_LUM_CORRECT", 0, lists::kLumCorrect, {}, {u"照度修正", u"Illumination correction"}).In(kImage, 8, kTone).Runs(10, 1, 6),
    Flag("PARA_HIST_EQUALIZE", 0, labels::kEqualize, {u"色调均化", u"Histogram equalization"}).Among(kOptions).RunsUnlessNeutral(20),
    List("PARA_SURFACE_BLUR_TIMES", 0, lists::kTimes, labels::kPasses, {u"表面模糊遍数", u"Passes of surface blur"}).In(kImage, 32, kSurfaceBlur).Runs(24, 1, kHighest),
    List("PARA_SURFACE_BLUR_RADIUS", 4, lists::kSurfaceBlurRadius, labels::kRadius, {u"表面模糊半径减1", u"Radius of surface blur, less 1"}).In(kImage, 34, kSurfaceBlur).Counts(1, 1, kPixels).When(PARA_SURFACE_BLUR_TIMES, {1, kHighest}),
    List("PARA_SURFACE_BLUR_THRESHOLD", 18, lists::kSurfaceBlurThreshold, labels::kThresholdValue, {u"表面模糊阀值减2", u"Threshold of surface blur, less 2"}).In(kImage, 33, kSurfaceBlur).Counts(1, 2).When(PARA_SURFACE_BLUR_TIMES, {1, kHighest}),
    List("PARA_SURFACE_BLUR_ALGRITHOM", 0, lists::kSurfaceBlurAlgorithm, labels::kAlgorithm, {u"表面模糊算法", u"Algorithm of surface blur"}).In(kImage, 35, kSurfaceBlur).When(PARA_SURFACE_BLUR_TIMES, {1, kHighest}),
    Flag("PARA_DECREASE_BPP_DITHER", 0, labels::kDither, {u"减色时抖动", u"Dither when colors are reduced"}).In(kOutput, 12, kReduction).When(PARA_COLOR, {3, 19}),
    List("PARA_DECREASE_BPP_QUANTIZE", 2, lists::kQuantize, labels::kQuantizer, {u"调色板量化算法", u"Algorithm of the palette"}).In(kOutput, 13, kReduction).When(PARA_COLOR, {3, 17}),
    Flag("PARA_DECREASE_TRANSPARENT", 0, labels::kTransparent, {u"索引色PNG、GIF背景透明", u"Transparent background in indexed PNG and GIF"}).In(kOutput, 14, kReduction).When(PARA_COLOR, {2, 17}),
    List("PARA_DECREASE_CHECK_GRAY", 0, lists::kCheckGray, labels::kCheckGray, {u"载入时如何判断灰度图像", u"How a loaded picture is judged to be gray"}).In(kOutput, 15, kReduction),
    List("PARA_DECREASE_THRESHOLD_METHOD", 1, lists::kThresholdMethod, labels::kThresholdMethod, {u"纯黑白阀值算法", u"Threshold algorithm of black and white"}).In(kOutput, 16, kReduction).When(PARA_COLOR, {7, 7}),
    List("PARA_DECREASE_WINDOW_SIZE", 4, lists::kWindowSize, labels::kWindowSize, {u"阀值窗口尺寸，(值+1)*10像素", u"Window of the threshold, (value + 1) * 10 pixels"}).In(kOutput, 17, kReduction).Counts(10, 10, kPixels).When(PARA_DECREASE_THRESHOLD_METHOD, {2, 2}),
    Number("PARA_DECREASE_DESPECKLE_SIZE", 0, 0, 20, labels::kDespeckle, {u"去斑直径，像素", u"Diameter of specks to remove, pixels"}).In(kOutput, 18, kReduction).Unit(kPixels).When(PARA_COLOR, {7, 7}),
    List("PARA_DECREASE_BW_DITHER_METHOD", 0, lists::kBwDitherMethod, labels::kDitherMethod, {u"纯黑白抖动算法", u"Dither algorithm of black and white"}).In(kOutput, 19, kReduction).When(PARA_COLOR, {7, 7}),
    Number("PARA_DECREASE_BLOCK_WIDTH", 0, 0, 500, labels::kWidth, {u"去除黑色区域：宽度，像素", u"Black regions to remove: width, pixels"}).In(kOutput, 20, kReduction).Unit(kPixels).When(PARA_COLOR, {7, 7}),
    Number("PARA_DECREASE_BLOCK_HEIGHT", 0, 0, 500, labels::kHeight, {u"去除黑色区域：高度，像素", u"Black regions to remove: height, pixels"}).In(kOutput, 21, kReduction).Unit(kPixels).When(PARA_COLOR, {7, 7}),
    List("PARA_DECREASE_BLOCK_WIDTH_CONDITION", 0, lists::kBlockCondition, labels::kWidth, {u"去除黑色区域：宽度条件", u"Black regions to remove: sense of the width"}).In(kOutput, 22, kReduction).When(PARA_COLOR, {7, 7}),
    List("PARA_DECREASE_BLOCK_HEIGHT_CONDITION", 0, lists::kBlockCondition, labels::kHeight, {u"去除黑色区域：高度条件", u"Black regions to remove: sense of the height"}).In(kOutput, 23, kReduction).When(PARA_COLOR, {7, 7}),
    Flag("PARA_DECREASE_DE_BLACK", 0, labels::kRemoveEdgeContact, {u"去除与边缘接触的黑色区域", u"Remove black regions that touch the edge"}).In(kOutput, 24, kReduction).When(PARA_COLOR, {7, 7}),
    Flag("PARA_DECREASE_DE_SMOOTH", 0, labels::kSmoothEdges, {u"边缘去毛刺", u"Smooth ragged edges"}).In(kOutput, 25, kReduction).When(PARA_COLOR, {7, 7}),
    List("PARA_USM_TIMES", 0, lists::kTimes, labels::kPasses, {u"USM锐化遍数，0为关闭", u"Passes of the unsharp mask, 0 is off"}).In(kImage, 36, kUsm).Runs(28, 1, kHighest),
    Number("PARA_USM_AMOUNT", 50, 1, 500, labels::kAmount, {u"USM锐化数量", u"Amount of the unsharp mask"}).In(kImage, 37, kUsm).When(PARA_USM_TIMES, {1, kHighest}),
    Number("PARA_USM_THRESHOLD", 0, 0, 255, labels::kThresholdValue, {u"USM锐化阀值", u"Threshold of the unsharp mask"}).In(kImage, 38, kUsm).When(PARA_USM_TIMES, {1, kHighest}),
    Number("PARA_USM_RADIUS", 10, 1, 2500, labels::kRadius, {u"USM锐化半径，0.1像素", u"Radius of the unsharp mask, tenths of a pixel"}).In(kImage, 39, kUsm).Tenths(kPixels).When(PARA_USM_TIMES, {1, kHighest}),
    List("PARA_ROATE", 0, lists::kRotate, {}, {u"最先做的旋转或镜像", u"Rotation or mirror, first of all"}).In(kPaper, 1, kRotation).Runs(1, 1, 5),
    Number("PARA_CURVE_1", 0, 0, 255, u"Y1", {u"曲线控制点Y1", u"Curve point Y1"}).In(kImage, 12, kCurve).RunsUnlessNeutral(16),
    Number("PARA_CURVE_2", 255, 0, 255, u"X2", {u"曲线控制点X2", u"Curve point X2"}).In(kImage, 13, kCurve).RunsUnlessNeutral(16),
    Number("PARA_CURVE_3", 255, 0, 255, u"Y2", {u"曲线控制点Y2", u"Curve point Y2"}).In(kImage, 14, kCurve).RunsUnlessNeutral(16),
    Number("PARA_CURVE_DIV", 0, 0, 255, labels::kCurveDivisor, {u"曲线参数调节：画面", u"Curve tuning: picture"}).In(kImage, 15, kCurve).Runs(16, kLowest, -1).Runs(16, 1, 254).Runs(16, 256, kHighest),
    Number("PARA_CURVE_OFFSET", 0, 0, 255, labels::kCurveOffset, {u"曲线参数调节：背景", u"Curve tuning: background"}).In(kImage, 16, kCurve).When(PARA_CURVE_DIV, {1, 254}),
    Number("PARA_SLIDE_INTV", 1, kAny, kAny, {u"自动播放时间间隔:", u"Slide show interval:"}, {u"自动播放时间间隔，秒", u"Interval of the slide show, seconds"}).Among(kViewer).Unit(kSeconds),
    List("PARA_SRC_FILES", 0, lists::kSourceFiles, {u"源文件:", u"Source files:"}, {u"批量转换的源文件类型", u"Batch: types of the source files"}).Among(kBatch),
    Unbound(kPacked, "PARA_TGT_FILES", 0, {u"新文件扩展名:", u"Extension of new files:"}, {u"批量转换的新文件扩展名规则", u"Batch: rule of the extension of new files"}).Among(kBatch).Packs(kTargetFields),
    Number("PARA_CROPPING_P_LEFT", 0, 0, 1000, labels::kLeft, {u"左切边，千分比", u"Left crop, per mille"}).In(kLayout, 4, kContentBox).Tenths(kPercent).RunsUnlessNeutral(5),
    Number("PARA_CROPPING_P_TOP", 0, 0, 1000, labels::kTop, {u"上切边，千分比", u"Top crop, per mille"}).In(kLayout, 5, kContentBox).Tenths(kPercent).RunsUnlessNeutral(5),
    Number("PARA_CROPPING_P_RIGHT", 0, 0, 1000, labels::kRight, {u"右切边，千分比", u"Right crop, per mille"}).In(kLayout, 6, kContentBox).Tenths(kPercent).RunsUnlessNeutral(5),
    Number("PARA_CROPPING_P_BOTTOM", 0, 0, 1000, labels::kBottom, {u"下切边，千分比", u"Bottom crop, per mille"}).In(kLayout, 7, kContentBox).Tenths(kPercent).RunsUnlessNeutral(5),
    List("PARA_PAGE_SIZE", 0, lists::kPageSize, labels::kPageSize, {u"页面大小", u"Page size"}).In(kLayout, 13, kPageSize),
    List("PARA_PAGE_SIZE_UNIT", 0, lists::kPageSizeUnit, {}, {u"页面尺寸单位", u"Unit of page measures"}).In(kLayout, 16, kPageSize),
    Number("PARA_PAGE_WIDTH", 0, kAny, kAny, labels::kWidth, {u"页面宽度，0.01厘米或像素", u"Page width, 0.01 cm or pixels"}).In(kLayout, 14, kPageSize).Hundredths(kPageMeasure).When(PARA_PAGE_SIZE, {3, 3}, {5, 5}),
    Number("PARA_PAGE_HEIGHT", 0, kAny, kAny, labels::kHeight, {u"页面高度，0.01厘米或像素", u"Page height, 0.01 cm or pixels"}).In(kLayout, 15, kPageSize).Hundredths(kPageMeasure).When(PARA_PAGE_SIZE, {4, 5}),
    Number("PARA_MARGIN_LEFT", 0, kAny, kAny, labels::kLeft, {u"左页边空，0.01厘米或像素", u"Left page margin, 0.01 cm or pixels"}).In(kLayout, 18, kPageSize).Hundredths(kPageMeasure),
    Number("PARA_MARGIN_RIGHT", 0, kAny, kAny, labels::kRight, {u"右页边空，0.01厘米或像素", u"Right page margin, 0.01 cm or pixels"}).In(kLayout, 19, kPageSize).Hundredths(kPageMeasure),
    Number("PARA_MARGIN_TOP", 0, kAny, kAny, labels::kTop, {u"上页边空，0.01厘米或像素", u"Top page margin, 0.01 cm or pixels"}).In(kLayout, 20, kPageSize).Hundredths(kPageMeasure),
    Number("PARA_MARGIN_BOTTOM", 0, kAny, kAny, labels::kBottom, {u"下页边空，0.01厘米或像素", u"Bottom page margin, 0.01 cm or pixels"}).In(kLayout, 21, kPageSize).Hundredths(kPageMeasure),
    List("PARA_ALIGN_H", 3, lists::kAlignH, labels::kAlignH, {u"内容框水平对齐", u"Horizontal alignment of the content box"}).In(kLayout, 22, kPageSize),
    List("PARA_ALIGN_V", 0, lists::kAlignV, labels::kAlignV, {u"内容框垂直对齐", u"Vertical alignment of the content box"}).In(kLayout, 23, kPageSize),
    Unbound(kColor, "PARA_FILL_BLANK_COLOR", 0xFFFFFF, labels::kFillColor, {u"空白处填充颜色", u"Color of filled areas"}).In(kLayout, 26, kPageSize).Packs(kColorFields),
    List("PARA_BIG_CNT_BOX", 0, lists::kBigContentBox, labels::kBigContentBox, {u"内容框大于版心时的处理", u"What is done with a content box larger than the type area"}).In(kLayout, 24, kPageSize),
    List("PARA_SMALL_CNT_BOX", 1, lists::kSmallContentBox, labels::kSmallContentBox, {u"内容框小于版心时的处理", u"What is done with a content box smaller than the type area"}).In(kLayout, 25, kPageSize),
    List("PARA_DESKEW", 0, lists::kDeskew, labels::kDeskew, {u"纠斜方式", u"Way of deskewing"}).In(kLayout, 1, kDeskew).Runs(4, 1, 4),
    Number("PARA_DESKEW_ANGLE", 0, kAny, kAny, labels::kDegrees, {u"手动纠斜角度，0.01度", u"Angle of deskewing by hand, 0.01 degrees"}).In(kLayout, 2, kDeskew).Hundredths(kDegrees).When(PARA_DESKEW, {4, 4}),
    List("PARA_DESKEW_EDGE", 0, lists::kDeskewEdge, {}, {u"旋转后边缘的处理", u"What a rotation does at the edges"}).In(kLayout, 3, kDeskew).When(PARA_DESKEW, {1, 4}),
    Flag("PARA_FIND_CNT_BOX", 0, labels::kFindContentBox, {u"在手动选择范围内自动选择内容框", u"Find the content box inside the margins"}).In(kLayout, 8, kContentBox).RunsUnlessNeutral(5),
    Flag("PARA_CBF_REMOVE_BLACK_EDGE", 1, labels::kIgnoreBlackEdge, {u"选择内容框时不计黑边", u"Content box: ignore black edges"}).In(kLayout, 9, kContentBox).When(PARA_FIND_CNT_BOX, {1, 1}),
    Number("PARA_CBF_SPECKLE_SIZE", 8, 0, 20, labels::kIgnoreSpeckles, {u"选择内容框时忽略的斑点直径，像素", u"Content box: diameter of specks to ignore, pixels"}).In(kLayout, 10, kContentBox).Unit(kPixels).When(PARA_FIND_CNT_BOX, {1, 1}),
    Flag("PARA_CBF_SPECKLE_COMPENSATION", 1, labels::kSpeckleCompensation, {u"选择内容框时斑点补偿", u"Content box: speck compensation"}).In(kLayout, 11, kContentBox).When(PARA_FIND_CNT_BOX, {1, 1}),
    Flag("PARA_CBF_BK_MORE", 0, labels::kStrongBackground, {u"选择内容框时强力去背景", u"Content box: strong background removal"}).In(kLayout, 12, kContentBox).When(PARA_FIND_CNT_BOX, {1, 1}),
    Unbound(kKept, "PARA_PREVIEW_FILE_OPEN", 0, {}, {u"保留，不使用", u"Kept, not used"}),
    Flag("PARA_KEEP_FILE_TIME", 0, {u"复制文件日期、时间", u"Copy date and time"}, {u"批量转换复制文件日期、时间", u"Batch: copy date and time of the source"}).Among(kBatch),
    Number("PARA_DPI", 300, 0, 8000, u"DPI:", {u"输出分辨率，点每英寸", u"Output resolution, dots per inch"}).In(kLayout, 17, kPageSize).Unit(kDotsPerInch),
    Number("PARA_LIGHT_LOW", 0, -100, 100, {u"阴影:", u"Shadows:"}, {u"光线：阴影", u"Light: shadows"}).In(kImage, 40, kLight).RunsUnlessNeutral(17),
    Number("PARA_LIGHT_HIGH", 0, -100, 100, {u"高光:", u"Highlights:"}, {u"光线：高光", u"Light: highlights"}).In(kImage, 41, kLight).RunsUnlessNeutral(17),
    Number("PARA_ADJUST_BLUR_RADIUS", 0, 0, 2500, labels::kGaussianRadius, {u"高斯模糊半径，0.1像素", u"Radius of Gaussian blur, tenths of a pixel"}).In(kImage, 17, kAdjust).Tenths(kPixels).RunsUnlessNeutral(23),
    Number("PARA_ADJUST_SHARPEN_PERCENT", 0, 0, 40, labels::kGaussianSharpenRadius, {u"调节锐化强度", u"Strength of adjust sharpen"}).In(kImage, 19, kAdjust).Runs(27, 1, kHighest),
    List("PARA_ADJUST_SHARPEN_SIZE", 0, lists::kSharpenSize, labels::kKernelOrder, {u"调节锐化阶数，值*2+7", u"Kernel size of adjust sharpen, value * 2 + 7"}).In(kImage, 18, kAdjust).Counts(2, 7, kPixels).When(PARA_ADJUST_SHARPEN_PERCENT, {1, kHighest}),
    Number("PARA_ADJUST_MULTI_SCALE_R", 0, 0, 40, labels::kMultiScale, {u"多尺度细节增强", u"Multi-scale detail enhancement"}).In(kImage, 20, kAdjust).Runs(18, 1, kHighest),
    Number("PARA_ADJUST_VIBRANCE", 0, -100, 200, labels::kVibrance, {u"自然饱和度", u"Vibrance"}).In(kImage, 21, kAdjust).RunsUnlessNeutral(15),
    Number("PARA_ADJUST_UNSHADOW", 0, -50, 50, labels::kUnshadow, {u"去除背景阴影强度，负值保留红章", u"Strength of background shadow removal, negative keeps red seals"}).In(kImage, 22, kAdjust).RunsUnlessNeutral(11),
    Flag("PARA_REVERSE_CMYK", 0, labels::kReverseCmyk, {u"载入CMYK JPEG时反白", u"Negate CMYK JPEG on loading"}).In(kImage, 27, kChannels),
    List("PARA_WHITE_BALANCE", 0, lists::kWhiteBalance, labels::kWhiteBalance, {u"白平衡", u"White balance"}).In(kImage, 25, kChannels).Runs(12, 1, kHighest),
    Unbound(kPacked, "PARA_LEVELS_SHADOW", 0, {u"阴影:", u"Shadows:"}, {u"色阶黑点，每字节一个通道：红、绿、蓝、全部", u"Black point of levels, a byte a channel: red, green, blue, all"}).In(kImage, 43, kLevels).RunsUnlessNeutral(14).Packs(kLevelsFields).When(PARA_AUTO_LEVELS, {0, 0}),
    Unbound(kPacked, "PARA_LEVELS_LIGHT", -1, {u"高光:", u"Highlights:"}, {u"色阶白点，每字节一个通道：红、绿、蓝、全部", u"White point of levels, a byte a channel: red, green, blue, all"}).In(kImage, 44, kLevels).RunsUnlessNeutral(14).Packs(kLevelsFields).When(PARA_AUTO_LEVELS, {0, 0}),
    List("PARA_CRT_TYPE", 0, lists::kCorrectionType, {}, {u"页面矫正类型", u"Type of page correction"}).In(kPage, 1, kCorrection).Runs(3, 1, 3),
    Pair("PARA_CRT_PT_LT", {u"左上角点，四点均为-1时自动查找", u"Left top corner; all four -1: found automatically"}).In(kPage, 2, kCorrection).Packs(kPoint).When(PARA_CRT_TYPE, {1, 2}),
    Pair("PARA_CRT_PT_RT", {u"右上角点", u"Right top corner"}).In(kPage, 3, kCorrection).Packs(kPoint).When(PARA_CRT_TYPE, {1, 2}),
    Pair("PARA_CRT_PT_RB", {u"右下角点", u"Right bottom corner"}).In(kPage, 4, kCorrection).Packs(kPoint).When(PARA_CRT_TYPE, {1, 2}),
    Pair("PARA_CRT_PT_LB", {u"左下角点", u"Left bottom corner"}).In(kPage, 5, kCorrection).Packs(kPoint).When(PARA_CRT_TYPE, {1, 2}),
    Unbound(kPacked, "PARA_CRT_CROP", 0, {}, {u"裁切尺寸方式与比例", u"Size mode and ratio of the cut"}).In(kPage, 6, kCorrection).Packs(kCropFields).When(PARA_CRT_TYPE, {2, 2}),
    Pair("PARA_CRT_SIZE", {u"裁切指定尺寸：宽、高，像素", u"Given size of the cut: width, height, pixels"}).In(kPage, 7, kCorrection).Unit(kPixels).Packs(kSize).When(PARA_CRT_TYPE, {2, 2}),
    List("PARA_CRT_DEWARPING_TYPE", 0, lists::kDewarpMethod, labels::kDewarpMethod, {u"自动展平方法", u"Method of automatic dewarping"}).In(kPage, 8, kCorrection).When(PARA_CRT_TYPE, {3, 3}),
    List("PARA_CRT_DEWARPING_ILLUM", 1, lists::kDewarpIllumination, labels::kDewarpIllumination, {u"页面光照情况", u"Illumination of the page"}).In(kPage, 9, kCorrection).When(PARA_CRT_TYPE, {3, 3}),
    Pair("PARA_CRT_DEWARPING_TOP_1", {u"上曲线控制点1", u"Point 1 of the top curve"}).In(kPage, 10, kCorrection).Packs(kPoint).When(PARA_CRT_TYPE, {3, 3}),
    Pair("PARA_CRT_DEWARPING_TOP_2", {u"上曲线控制点2", u"Point 2 of the top curve"}).In(kPage, 11, kCorrection).Packs(kPoint).When(PARA_CRT_TYPE, {3, 3}),
    Pair("PARA_CRT_DEWARPING_TOP_3", {u"上曲线控制点3", u"Point 3 of the top curve"}).In(kPage, 12, kCorrection).Packs(kPoint).When(PARA_CRT_TYPE, {3, 3}),
    Pair("PARA_CRT_DEWARPING_TOP_4", {u"上曲线控制点4", u"Point 4 of the top curve"}).In(kPage, 13, kCorrection).Packs(kPoint).When(PARA_CRT_TYPE, {3, 3}),
    Pair("PARA_CRT_DEWARPING_TOP_5", {u"上曲线控制点5", u"Point 5 of the top curve"}).In(kPage, 14, kCorrection).Packs(kPoint).When(PARA_CRT_TYPE, {3, 3}),
    Pair("PARA_CRT_DEWARPING_TOP_6", {u"上曲线控制点6", u"Point 6 of the top curve"}).In(kPage, 15, kCorrection).Packs(kPoint).When(PARA_CRT_TYPE, {3, 3}),
    Pair("PARA_CRT_DEWARPING_TOP_7", {u"上曲线控制点7", u"Point 7 of the top curve"}).In(kPage, 16, kCorrection).Packs(kPoint).When(PARA_CRT_TYPE, {3, 3}),
    Pair("PARA_CRT_DEWARPING_TOP_8", {u"上曲线控制点8", u"Point 8 of the top curve"}).In(kPage, 17, kCorrection).Packs(kPoint).When(PARA_CRT_TYPE, {3, 3}),
    Pair("PARA_CRT_DEWARPING_BTM_1", {u"下曲线控制点1", u"Point 1 of the bottom curve"}).In(kPage, 18, kCorrection).Packs(kPoint).When(PARA_CRT_TYPE, {3, 3}),
    Pair("PARA_CRT_DEWARPING_BTM_2", {u"下曲线控制点2", u"Point 2 of the bottom curve"}).In(kPage, 19, kCorrection).Packs(kPoint).When(PARA_CRT_TYPE, {3, 3}),
    Pair("PARA_CRT_DEWARPING_BTM_3", {u"下曲线控制点3", u"Point 3 of the bottom curve"}).In(kPage, 20, kCorrection).Packs(kPoint).When(PARA_CRT_TYPE, {3, 3}),
    Pair("PARA_CRT_DEWARPING_BTM_4", {u"下曲线控制点4", u"Point 4 of the bottom curve"}).In(kPage, 21, kCorrection).Packs(kPoint).When(PARA_CRT_TYPE, {3, 3}),
    Pair("PARA_CRT_DEWARPING_BTM_5", {u"下曲线控制点5", u"Point 5 of the bottom curve"}).In(kPage, 22, kCorrection).Packs(kPoint).When(PARA_CRT_TYPE, {3, 3}),
    Pair("PARA_CRT_DEWARPING_BTM_6", {u"下曲线控制点6", u"Point 6 of the bottom curve"}).In(kPage, 23, kCorrection).Packs(kPoint).When(PARA_CRT_TYPE, {3, 3}),
    Pair("PARA_CRT_DEWARPING_BTM_7", {u"下曲线控制点7", u"Point 7 of the bottom curve"}).In(kPage, 24, kCorrection).Packs(kPoint).When(PARA_CRT_TYPE, {3, 3}),
    Pair("PARA_CRT_DEWARPING_BTM_8", {u"下曲线控制点8", u"Point 8 of the bottom curve"}).In(kPage, 25, kCorrection).Packs(kPoint).When(PARA_CRT_TYPE, {3, 3}),
    Unbound(kPacked, "PARA_PAGE_SPLIT_TYPE", 0, labels::kSplit, {u"分页：低字节为类型（0无分页、1单页、2双页右翻、3双页左翻），第8位选择双页的另一侧", u"Split: low byte the kind (0 none, 1 single, 2 double turned to the right, 3 double turned to the left), bit 8 the other side of a double page"}).In(kPaper, 2, kSplit).Runs(2, 1, 3).Runs(2, 0x101, 0x103).Packs(kSplitFields),
    Pair("PARA_PAGE_SPLIT_LEFT", {u"分页左线：顶行x、底行x", u"Left line of the split: x in the top row, in the bottom row"}).In(kPaper, 3, kSplit).Packs(kLineEnds).When(PARA_PAGE_SPLIT_TYPE, {1, 3}, {0x101, 0x103}),
    Pair("PARA_PAGE_SPLIT_RIGHT", {u"分页右线：顶行x、底行x", u"Right line of the split: x in the top row, in the bottom row"}).In(kPaper, 4, kSplit).Packs(kLineEnds).When(PARA_PAGE_SPLIT_TYPE, {1, 3}, {0x101, 0x103}),
    Pair("PARA_PAGE_SPLIT_MID", {u"分页中线：顶行x、底行x", u"Middle line of the split: x in the top row, in the bottom row"}).In(kPaper, 5, kSplit).Packs(kLineEnds).When(PARA_PAGE_SPLIT_TYPE, {2, 3}, {0x102, 0x103}),
    List("JPG_RESAMPLE_TYPE", 0, lists::kJpegSampling, labels::kJpegSampling, {u"JPEG色度采样方式", u"JPEG chroma sampling"}).In(kOutput, 3, kJpeg),
    Flag("JPG_RESAMPLE_H", 1, labels::kHalveH, {u"手动采样：色度水平方向缩一半", u"Sampling by hand: halve chroma horizontally"}).In(kOutput, 4, kJpeg).When(JPG_RESAMPLE_TYPE, {1, 1}),
    Flag("JPG_RESAMPLE_V", 1, labels::kHalveV, {u"手动采样：色度垂直方向缩一半", u"Sampling by hand: halve chroma vertically"}).In(kOutput, 5, kJpeg).When(JPG_RESAMPLE_TYPE, {1, 1}),
    Flag("JPG_SRC_SAMPLE", 0, labels::kSourceSampling, {u"优先使用原JPG采样参数", u"Prefer the sampling of the source JPEG"}).In(kOutput, 6, kJpeg),
    Flag("JPG_SRC_QUALITY", 0, labels::kSourceQuality, {u"优先使用原JPG质量系数", u"Prefer the quality of the source JPEG"}).In(kOutput, 7, kJpeg),
    Flag("JPG_SRC_CODE", 0, labels::kSourceCoding, {u"优先使用原JPG编码参数", u"Prefer the coding of the source JPEG"}).In(kOutput, 8, kJpeg),
    Flag("JPG_OPTIMIZE", 1, labels::kOptimize, {u"优化Huffman编码", u"Optimized Huffman tables"}).In(kOutput, 9, kJpeg),
    Flag("JPG_PROGRESSIVE", 1, labels::kProgressive, {u"渐进式编码", u"Progressive coding"}).In(kOutput, 10, kJpeg),
};
// clang-format on

constexpr auto kByName = [] {
    std::array<int, kParaCount> order{};
    for (int i = 0; i < kParaCount; ++i)
        order[static_cast<std::size_t>(i)] = i;
    std::sort(order.begin(), order.end(), [](int a, int b) {
        return kRows[static_cast<std::size_t>(a)].name < kRows[static_cast<std::size_t>(b)].name;
    });
    return order;
}();

}  // namespace

const ParaRow& ParaRowOf(int index) {
    assert(index >= 0 && index < kParaCount);
    return kRows[static_cast<std::size_t>(index)];
}

std::optional<int> FindPara(std::string_view name) {
    const auto found = std::lower_bound(
        kByName.begin(), kByName.end(), name,
        [](int index, std::string_view wanted) { return ParaRowOf(index).name < wanted; });
    if (found == kByName.end() || ParaRowOf(*found).name != name)
        return std::nullopt;
    return *found;
}

std::vector<ParaIndex> ParaIndexesOf(ParaTab tab) {
    std::vector<ParaIndex> indexes;
    for (int i = 0; i < kParaCount; ++i)
        if (ParaRowOf(i).tab == tab && tab != ParaTab::kNone)
            indexes.push_back(static_cast<ParaIndex>(i));
    std::ranges::sort(indexes, {}, [](ParaIndex index) { return ParaRowOf(index).tabPlace; });
    return indexes;
}

bool IsGateOpen(int step, int index, std::int32_t value) {
    return std::ranges::any_of(ParaRowOf(index).gates, [&](const ParaGate& gate) {
        return gate.step == step && gate.values.Has(value);
    });
}

bool HasOpenGate(int step, std::span<const std::int32_t, kParaCount> values) {
    for (int i = 0; i < kParaCount; ++i)
        if (IsGateOpen(step, i, values[static_cast<std::size_t>(i)]))
            return true;
    return false;
}

bool IsEnabled(int index, std::span<const std::int32_t, kParaCount> values) {
    const ParaCondition& condition = ParaRowOf(index).enabled;
    const std::int32_t value = values[static_cast<std::size_t>(condition.index)];
    return condition.count == 0 ||
           std::ranges::any_of(condition.Ranges(),
                               [&](const ParaRange& range) { return range.Has(value); });
}

std::u16string ShownText(int index, std::int32_t value) {
    const ParaScale& scale = ParaRowOf(index).scale;
    if (scale.divisor == 10)
        return TenthsText(value);
    if (scale.divisor == 100)
        return HundredthsText(value);
    return DecimalText(std::int64_t{value} * scale.factor + scale.offset);
}

std::u16string_view ParaListText(int index, std::int32_t value) {
    const std::span<const Label> list = ParaRowOf(index).list;
    if (value < 0 || static_cast<std::size_t>(value) >= list.size())
        return {};
    return list[static_cast<std::size_t>(value)];
}

}  // namespace velloran
