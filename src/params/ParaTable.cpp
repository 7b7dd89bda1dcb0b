#include "params/ParaTable.h"

#include <algorithm>
#include <array>
#include <cassert>

#include "params/ParaLists.h"
#include "text/Labels.h"

namespace velloran {

namespace {

using Name = std::string_view;
using Text = Label;
using Texts = std::span<const Text>;
using Limit = std::optional<std::int32_t>;

constexpr ParaRow Number(Name name, std::int32_t value, Limit min, Limit max, Text label,
                         Text meaning) {
    return {name, value, ParaKind::kNumber, min, max, {}, label, meaning};
}

constexpr ParaRow List(Name name, std::int32_t value, Texts list, Text label, Text meaning) {
    return {name, value, ParaKind::kList, 0, static_cast<std::int32_t>(list.size()) - 1,
            list, label, meaning};
}

constexpr ParaRow Flag(Name name, std::int32_t value, Text label, Text meaning) {
    return {name, value, ParaKind::kFlag, 0, 1, {}, label, meaning};
}

constexpr ParaRow Unbound(ParaKind kind, Name name, std::int32_t value, Text label, Text meaning) {
    return {name, value, kind, {}, {}, {}, label, meaning};
}

constexpr ParaRow Pair(Name name, Text meaning) {
    return Unbound(ParaKind::kPackedPair, name, 0, {}, meaning);
}

constexpr auto kAny = std::nullopt;
using enum ParaKind;

// clang-format off
constexpr std::array<ParaRow, kParaCount> kRows = {
    Number("PARA_BRIGHTNESS", 100, 0, 200, u"亮度:", u"亮度，百分比，100为不变"),
    Number("PARA_CONTRAST", 100, 0, 200, u"对比度:", u"对比度，百分比，100为不变"),
    Number("PARA_HIGHLIGHT", 100, 100, 200, u"高亮度:", u"高亮部分的增益，百分比，100为关闭"),
    Number("PARA_GAMMA", 100, 0, 300, u"Gamma校正:", u"Gamma，百分比，100为不变"),
    Number("PARA_CURVE", 0, 0, 255, u"X1", u"曲线控制点X1"),
    Number("PARA_RESIZE", 100, 0, 200, u"尺寸缩放:", u"尺寸缩放，百分比"),
    Number("PARA_QUALITY", 70, 10, 100, u"JPG质量:", u"JPEG质量系数"),
    Number("PARA_JP2_RATE", 15, 1, 100, u"JP2压缩比:", u"JPEG 2000压缩比"),
    Unbound(kKept, "PARA_CROPPING", 100, {}, u"保留，不使用"),
    List("PARA_SHARPEN", 0, lists::kSharpen, labels::kSharpen, u"锐化级别"),
    List("PARA_BLUR", 0, lists::kBlur, labels::kSoften, u"柔化级别"),
    List("PARA_COLOR", 2, lists::kColor, labels::kColorCount, u"目标色彩数"),
    Flag("PARA_GO_SUB_DIR", 1, u"包括子文件夹", u"批量转换包括子文件夹"),
    Number("PARA_THRESHOLD", 190, 150, 255, u"高亮值:", u"高亮度从该灰度值起作用"),
    List("PARA_AUTO_LEVELS", 0, lists::kAutoLevels, {}, u"像素映射前的自动色阶"),
    List("PARA_AUTO_LEVELS_POST", 0, Texts(lists::kAutoLevels).first(lists::kAutoLevelsPostCount), labels::kPostProcessing, u"细节增强后的自动色阶"),
    List("PARA_ERODE", 0, lists::kErode, {}, u"笔画加粗、变细、开、闭"),
    Flag("PARA_NEGATE", 0, labels::kNegate, u"反白（负片）"),
    List("PARA_SWAP_CHANNEL", 0, lists::kSwapChannel, labels::kSwapChannel, u"通道互换"),
    List("PARA_COMBINE_CHANNEL", 0, lists::kCombineChannel, labels::kCombineChannel, u"通道混合为灰度"),
    List("PARA_REPLACE_COLOR_TYPE", 0, lists::kReplaceColor, labels::kReplaceCondition, u"颜色替换条件"),
    Unbound(kColor, "PARA_REPLACE_COLOR_FROM", 0, {}, u"颜色替换的样本颜色"),
    Unbound(kColor, "PARA_REPLACE_COLOR_TO", 0xFFFFFF, {}, u"颜色替换的目标颜色"),
    Number("PARA_REPLACE_COLOR_THRESHOLD", 14, 0, 254, labels::kThresholdValue, u"颜色替换阀值减1"),
    List("PARA_LUM_CORRECT", 0, lists::kLumCorrect, {}, u"照度修正"),
    Flag("PARA_HIST_EQUALIZE", 0, labels::kEqualize, u"色调均化"),
    List("PARA_SURFACE_BLUR_TIMES", 0, lists::kTimes, labels::kPasses, u"表面模糊遍数"),
    List("PARA_SURFACE_BLUR_RADIUS", 4, lists::kSurfaceBlurRadius, labels::kRadius, u"表面模糊半径减1"),
    List("PARA_SURFACE_BLUR_THRESHOLD", 18, lists::kSurfaceBlurThreshold, labels::kThresholdValue, u"表面模糊阀值减2"),
    List("PARA_SURFACE_BLUR_ALGRITHOM", 0, lists::kSurfaceBlurAlgorithm, labels::kAlgorithm, u"表面模糊算法"),
    Flag("PARA_DECREASE_BPP_DITHER", 0, labels::kDither, u"减色时抖动"),
    List("PARA_DECREASE_BPP_QUANTIZE", 2, lists::kQuantize, labels::kQuantizer, u"调色板量化算法"),
    Flag("PARA_DECREASE_TRANSPARENT", 0, labels::kTransparent, u"索引色PNG、GIF背景透明"),
    List("PARA_DECREASE_CHECK_GRAY", 0, lists::kCheckGray, labels::kCheckGray, u"载入时如何判断灰度图像"),
    List("PARA_DECREASE_THRESHOLD_METHOD", 1, lists::kThresholdMethod, labels::kThresholdMethod, u"纯黑白阀值算法"),
    List("PARA_DECREASE_WINDOW_SIZE", 4, lists::kWindowSize, labels::kWindowSize, u"阀值窗口尺寸，(值+1)*10像素"),
    Number("PARA_DECREASE_DESPECKLE_SIZE", 0, 0, 20, labels::kDespeckle, u"去斑直径，像素"),
    List("PARA_DECREASE_BW_DITHER_METHOD", 0, lists::kBwDitherMethod, labels::kDitherMethod, u"纯黑白抖动算法"),
    Number("PARA_DECREASE_BLOCK_WIDTH", 0, 0, 500, labels::kWidth, u"去除黑色区域：宽度，像素"),
    Number("PARA_DECREASE_BLOCK_HEIGHT", 0, 0, 500, labels::kHeight, u"去除黑色区域：高度，像素"),
    List("PARA_DECREASE_BLOCK_WIDTH_CONDITION", 0, lists::kBlockCondition, labels::kWidth, u"去除黑色区域：宽度条件"),
    List("PARA_DECREASE_BLOCK_HEIGHT_CONDITION", 0, lists::kBlockCondition, labels::kHeight, u"去除黑色区域：高度条件"),
    Flag("PARA_DECREASE_DE_BLACK", 0, labels::kRemoveEdgeContact, u"去除与边缘接触的黑色区域"),
    Flag("PARA_DECREASE_DE_SMOOTH", 0, labels::kSmoothEdges, u"边缘去毛刺"),
    List("PARA_USM_TIMES", 0, lists::kTimes, labels::kPasses, u"USM锐化遍数，0为关闭"),
    Number("PARA_USM_AMOUNT", 50, 1, 500, labels::kAmount, u"USM锐化数量"),
    Number("PARA_USM_THRESHOLD", 0, 0, 255, labels::kThresholdValue, u"USM锐化阀值"),
    Number("PARA_USM_RADIUS", 10, 1, 2500, labels::kRadius, u"USM锐化半径，0.1像素"),
    List("PARA_ROATE", 0, lists::kRotate, {}, u"最先做的旋转或镜像"),
    Number("PARA_CURVE_1", 0, 0, 255, u"Y1", u"曲线控制点Y1"),
    Number("PARA_CURVE_2", 255, 0, 255, u"X2", u"曲线控制点X2"),
    Number("PARA_CURVE_3", 255, 0, 255, u"Y2", u"曲线控制点Y2"),
    Number("PARA_CURVE_DIV", 0, 0, 255, labels::kCurveDivisor, u"曲线参数调节：画面"),
    Number("PARA_CURVE_OFFSET", 0, 0, 255, labels::kCurveOffset, u"曲线参数调节：背景"),
    Number("PARA_SLIDE_INTV", 1, kAny, kAny, u"自动播放时间间隔:", u"自动播放时间间隔，秒"),
    List("PARA_SRC_FILES", 0, lists::kSourceFiles, u"源文件:", u"批量转换的源文件类型"),
    Unbound(kPacked, "PARA_TGT_FILES", 0, u"新文件扩展名:", u"批量转换的新文件扩展名规则"),
    Number("PARA_CROPPING_P_LEFT", 0, 0, 1000, labels::kLeft, u"左切边，千分比"),
    Number("PARA_CROPPING_P_TOP", 0, 0, 1000, labels::kTop, u"上切边，千分比"),
    Number("PARA_CROPPING_P_RIGHT", 0, 0, 1000, labels::kRight, u"右切边，千分比"),
    Number("PARA_CROPPING_P_BOTTOM", 0, 0, 1000, labels::kBottom, u"下切边，千分比"),
    List("PARA_PAGE_SIZE", 0, lists::kPageSize, labels::kPageSize, u"页面大小"),
    List("PARA_PAGE_SIZE_UNIT", 0, lists::kPageSizeUnit, {}, u"页面尺寸单位"),
    Number("PARA_PAGE_WIDTH", 0, kAny, kAny, labels::kWidth, u"页面宽度，0.01厘米或像素"),
    Number("PARA_PAGE_HEIGHT", 0, kAny, kAny, labels::kHeight, u"页面高度，0.01厘米或像素"),
    Number("PARA_MARGIN_LEFT", 0, kAny, kAny, labels::kLeft, u"左页边空，0.01厘米或像素"),
    Number("PARA_MARGIN_RIGHT", 0, kAny, kAny, labels::kRight, u"右页边空，0.01厘米或像素"),
    Number("PARA_MARGIN_TOP", 0, kAny, kAny, labels::kTop, u"上页边空，0.01厘米或像素"),
    Number("PARA_MARGIN_BOTTOM", 0, kAny, kAny, labels::kBottom, u"下页边空，0.01厘米或像素"),
    List("PARA_ALIGN_H", 3, lists::kAlignH, labels::kAlignH, u"内容框水平对齐"),
    List("PARA_ALIGN_V", 0, lists::kAlignV, labels::kAlignV, u"内容框垂直对齐"),
    Unbound(kColor, "PARA_FILL_BLANK_COLOR", 0xFFFFFF, labels::kFillColor, u"空白处填充颜色"),
    List("PARA_BIG_CNT_BOX", 0, lists::kBigContentBox, labels::kBigContentBox, u"内容框大于版心时的处理"),
    List("PARA_SMALL_CNT_BOX", 1, lists::kSmallContentBox, labels::kSmallContentBox, u"内容框小于版心时的处理"),
    List("PARA_DESKEW", 0, lists::kDeskew, labels::kDeskew, u"纠斜方式"),
    Number("PARA_DESKEW_ANGLE", 0, kAny, kAny, labels::kDegrees, u"手动纠斜角度，0.01度"),
    List("PARA_DESKEW_EDGE", 0, lists::kDeskewEdge, {}, u"旋转后边缘的处理"),
    Flag("PARA_FIND_CNT_BOX", 0, labels::kFindContentBox, u"在手动选择范围内自动选择内容框"),
    Flag("PARA_CBF_REMOVE_BLACK_EDGE", 1, labels::kIgnoreBlackEdge, u"选择内容框时不计黑边"),
    Number("PARA_CBF_SPECKLE_SIZE", 8, 0, 20, labels::kIgnoreSpeckles, u"选择内容框时忽略的斑点直径，像素"),
    Flag("PARA_CBF_SPECKLE_COMPENSATION", 1, labels::kSpeckleCompensation, u"选择内容框时斑点补偿"),
    Flag("PARA_CBF_BK_MORE", 0, labels::kStrongBackground, u"选择内容框时强力去背景"),
    Unbound(kKept, "PARA_PREVIEW_FILE_OPEN", 0, {}, u"保留，不使用"),
    Flag("PARA_KEEP_FILE_TIME", 0, u"复制文件日期、时间", u"批量转换复制文件日期、时间"),
    Number("PARA_DPI", 300, 0, 8000, u"DPI:", u"输出分辨率，点每英寸"),
    Number("PARA_LIGHT_LOW", 0, -100, 100, u"阴影:", u"光线：阴影"),
    Number("PARA_LIGHT_HIGH", 0, -100, 100, u"高光:", u"光线：高光"),
    Number("PARA_ADJUST_BLUR_RADIUS", 0, 0, 2500, labels::kGaussianRadius, u"高斯模糊半径，0.1像素"),
    Number("PARA_ADJUST_SHARPEN_PERCENT", 0, 0, 40, labels::kGaussianSharpenRadius, u"调节锐化强度"),
    List("PARA_ADJUST_SHARPEN_SIZE", 0, lists::kSharpenSize, labels::kKernelOrder, u"调节锐化阶数，值*2+7"),
    Number("PARA_ADJUST_MULTI_SCALE_R", 0, 0, 40, labels::kMultiScale, u"多尺度细节增强"),
    Number("PARA_ADJUST_VIBRANCE", 0, -100, 200, labels::kVibrance, u"自然饱和度"),
    Number("PARA_ADJUST_UNSHADOW", 0, -50, 50, labels::kUnshadow, u"去除背景阴影强度，负值保留红章"),
    Flag("PARA_REVERSE_CMYK", 0, labels::kReverseCmyk, u"载入CMYK JPEG时反白"),
    List("PARA_WHITE_BALANCE", 0, lists::kWhiteBalance, labels::kWhiteBalance, u"白平衡"),
    Unbound(kPacked, "PARA_LEVELS_SHADOW", 0, u"阴影:", u"色阶黑点，每字节一个通道：红、绿、蓝、全部"),
    Unbound(kPacked, "PARA_LEVELS_LIGHT", -1, u"高光:", u"色阶白点，每字节一个通道：红、绿、蓝、全部"),
    List("PARA_CRT_TYPE", 0, lists::kCorrectionType, {}, u"页面矫正类型"),
    Pair("PARA_CRT_PT_LT", u"左上角点，四点均为-1时自动查找"),
    Pair("PARA_CRT_PT_RT", u"右上角点"),
    Pair("PARA_CRT_PT_RB", u"右下角点"),
    Pair("PARA_CRT_PT_LB", u"左下角点"),
    Unbound(kPacked, "PARA_CRT_CROP", 0, {}, u"裁切尺寸方式与比例"),
    Pair("PARA_CRT_SIZE", u"裁切指定尺寸：宽、高，像素"),
    List("PARA_CRT_DEWARPING_TYPE", 0, lists::kDewarpMethod, labels::kDewarpMethod, u"自动展平方法"),
    List("PARA_CRT_DEWARPING_ILLUM", 1, lists::kDewarpIllumination, labels::kDewarpIllumination, u"页面光照情况"),
    Pair("PARA_CRT_DEWARPING_TOP_1", u"上曲线控制点1"),
    Pair("PARA_CRT_DEWARPING_TOP_2", u"上曲线控制点2"),
    Pair("PARA_CRT_DEWARPING_TOP_3", u"上曲线控制点3"),
    Pair("PARA_CRT_DEWARPING_TOP_4", u"上曲线控制点4"),
    Pair("PARA_CRT_DEWARPING_TOP_5", u"上曲线控制点5"),
    Pair("PARA_CRT_DEWARPING_TOP_6", u"上曲线控制点6"),
    Pair("PARA_CRT_DEWARPING_TOP_7", u"上曲线控制点7"),
    Pair("PARA_CRT_DEWARPING_TOP_8", u"上曲线控制点8"),
    Pair("PARA_CRT_DEWARPING_BTM_1", u"下曲线控制点1"),
    Pair("PARA_CRT_DEWARPING_BTM_2", u"下曲线控制点2"),
    Pair("PARA_CRT_DEWARPING_BTM_3", u"下曲线控制点3"),
    Pair("PARA_CRT_DEWARPING_BTM_4", u"下曲线控制点4"),
    Pair("PARA_CRT_DEWARPING_BTM_5", u"下曲线控制点5"),
    Pair("PARA_CRT_DEWARPING_BTM_6", u"下曲线控制点6"),
    Pair("PARA_CRT_DEWARPING_BTM_7", u"下曲线控制点7"),
    Pair("PARA_CRT_DEWARPING_BTM_8", u"下曲线控制点8"),
    Unbound(kPacked, "PARA_PAGE_SPLIT_TYPE", 0, labels::kSplit, u"分页：低字节为类型（0无分页、1单页、2双页右翻、3双页左翻），第8位选择双页的另一侧"),
    Pair("PARA_PAGE_SPLIT_LEFT", u"分页左线：顶行x、底行x"),
    Pair("PARA_PAGE_SPLIT_RIGHT", u"分页右线：顶行x、底行x"),
    Pair("PARA_PAGE_SPLIT_MID", u"分页中线：顶行x、底行x"),
    List("JPG_RESAMPLE_TYPE", 0, lists::kJpegSampling, labels::kJpegSampling, u"JPEG色度采样方式"),
    Flag("JPG_RESAMPLE_H", 1, labels::kHalveH, u"手动采样：色度水平方向缩一半"),
    Flag("JPG_RESAMPLE_V", 1, labels::kHalveV, u"手动采样：色度垂直方向缩一半"),
    Flag("JPG_SRC_SAMPLE", 0, labels::kSourceSampling, u"优先使用原JPG采样参数"),
    Flag("JPG_SRC_QUALITY", 0, labels::kSourceQuality, u"优先使用原JPG质量系数"),
    Flag("JPG_SRC_CODE", 0, labels::kSourceCoding, u"优先使用原JPG编码参数"),
    Flag("JPG_OPTIMIZE", 1, labels::kOptimize, u"优化Huffman编码"),
    Flag("JPG_PROGRESSIVE", 1, labels::kProgressive, u"渐进式编码"),
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

std::u16string_view ParaListText(int index, std::int32_t value) {
    const std::span<const Label> list = ParaRowOf(index).list;
    if (value < 0 || static_cast<std::size_t>(value) >= list.size())
        return {};
    return list[static_cast<std::size_t>(value)];
}

}  // namespace velloran
