#pragma once

// All words that a user sees stand here, so that describe mode, messages and windows cannot
// differ. Texts of the parameter lists stand in params/ParaLists.h.

#include <string_view>

namespace velloran::labels {

using Text = std::u16string_view;

// Reading and writing files.
inline constexpr Text kLoadFailed = u"文件读取失败。";
inline constexpr Text kSaveFailed = u"文件存盘失败。";
inline constexpr Text kUnwritableType =
    u"抱歉，保存的文件名只能以jpg、jp2、png、bmp或tif为扩展名，请更正。";
inline constexpr Text kBmpOnlyFor16Bit = u"抱歉，16位色图像只能保存为BMP格式，请重新选择。";
inline constexpr Text kReducedTargets =
    u"抱歉，减色后的图像只能保存为PNG、GIF、BMP、TIFF或WEBP，请重新选择。";
inline constexpr Text kOnlyJpegAsk = u"图像文件只能保存为Jpeg格式，要继续吗？";
inline constexpr Text kInvalidPath = u"路径含无效字符：\r\n";

// Batch conversion.
inline constexpr Text kNoSourceFolder = u"请先选择存放源文件的文件夹。";
inline constexpr Text kNoTargetFolder = u"请先选择存放新文件的文件夹。";
inline constexpr Text kReducedOnlyPng = u"抱歉，减色后的图像只能保存为PNG格式，请重新选择。";
inline constexpr Text kSameFolderAsk =
    u"源文件夹与目标文件夹相同，源文件将被转换后的文件所覆盖。要继续吗？";
inline constexpr Text kCountingFiles = u"统计文件数";
inline constexpr Text kNothingToConvert = u"抱歉，在源文件夹下没有可供转换的文件。";
inline constexpr Text kFilesToConvert = u"个文件需要转换，\n";
inline constexpr Text kFilesConverted = u"个文件转换成功。";
inline constexpr Text kStoppedHalfway = u"\n您选择了中途停止。";
inline constexpr Text kSeeLogAsk = u"\n您想看结果记录吗？";
inline constexpr Text kStageRead = u"读取";
inline constexpr Text kStageCopy = u"复制";
inline constexpr Text kStageSave = u"存盘";

// What the run log says of a file, by row.
inline constexpr Text kLogRows[] = {u"创建失败",
                                    u"打开失败",
                                    u"写入失败",
                                    u"读取失败",
                                    u"添加失败",
                                    u"文件类型无法识别",
                                    u"内存不足",
                                    u"文件损坏",
                                    u"文件包含图像",
                                    u"文件包含HTML内容",
                                    u"文件包含PDF内容",
                                    u"文件不包含PDF内容",
                                    u"文件不存在",
                                    u"可能出现黑线",
                                    u"JPG数据错误，请修复",
                                    u"不是有效的JPG文件",
                                    u"修复失败，请用其他软件转存",
                                    u"是空文件",
                                    u"数据太少，无法修复，请重新下载",
                                    u"文件可能没有下完，或数据损坏",
                                    u"是索引文件，不能合并",
                                    u"是多页文件，不能建索引",
                                    u"是6xH文件，请先解密",
                                    u"是FFH文件，没救的，删了吧",
                                    u"缺少插图",
                                    u"转换失败",
                                    u"不是JFIF格式的JPEG文件",
                                    u"更名失败",
                                    u"复制失败"};

// The clipboard.
inline constexpr Text kClipboardMismatch = u"剪贴板数据格式不符";

// Labels of controls, with the colon that stands in the dialogs. They head lines of the text form.
inline constexpr Text kSplit = u"分页:";
inline constexpr Text kDeskew = u"纠斜:";
inline constexpr Text kDegrees = u"度";
inline constexpr Text kReplaceColor = u"颜色替换";
inline constexpr Text kReplaceCondition = u"替换条件:";
inline constexpr Text kThresholdValue = u"阀值:";
inline constexpr Text kSwapChannel = u"通道互换:";
inline constexpr Text kNegate = u"反白";
inline constexpr Text kCombineChannel = u"通道混合:";
inline constexpr Text kUnshadow = u"去除背景阴影:";
inline constexpr Text kRedSeal = u"红章";
inline constexpr Text kWhiteBalance = u"白平衡:";
inline constexpr Text kLevels = u"色阶";
inline constexpr Text kVibrance = u"自然饱和度:";
inline constexpr Text kHighlightFrom = u"高亮值";
inline constexpr Text kCurveTuning = u"曲线参数调节:";
inline constexpr Text kCurveDivisor = u"画面";
inline constexpr Text kCurveOffset = u"背景";
inline constexpr Text kLight = u"光线";
inline constexpr Text kLightShadow = u"阴影";
inline constexpr Text kLightHighlight = u"高光";
inline constexpr Text kMultiScale = u"多尺度细节增强:";
inline constexpr Text kPostProcessing = u"后处理:";
inline constexpr Text kEqualize = u"色调均化";
inline constexpr Text kSoften = u"柔化:";
inline constexpr Text kGaussianRadius = u"高斯模糊半径:";
inline constexpr Text kPasses = u"遍数:";
inline constexpr Text kAlgorithm = u"算法:";
inline constexpr Text kRadius = u"半径:";
inline constexpr Text kSharpen = u"锐化:";
inline constexpr Text kGaussianSharpenRadius = u"高斯锐化半径:";
inline constexpr Text kKernelOrder = u"阶数:";
inline constexpr Text kAmount = u"数量:";

// Colour depth.
inline constexpr Text kColorCount = u"色彩数:";
inline constexpr Text kDither = u"抖动";
inline constexpr Text kQuantizer = u"调色板量化算法:";
inline constexpr Text kTransparent = u"索引色PNG、GIF设置背景透明";
inline constexpr Text kCheckGray = u"载入时判断灰度图像:";
inline constexpr Text kReverseCmyk = u"CMYK JPEG反白";
inline constexpr Text kDitherMethod = u"抖动算法:";
inline constexpr Text kThresholdMethod = u"阀值算法:";
inline constexpr Text kWindowSize = u"窗口尺寸:";
inline constexpr Text kDespeckle = u"去斑直径:";
inline constexpr Text kBlockFilter = u"去除符合下列条件的黑色区域:";
inline constexpr Text kWidth = u"宽度";
inline constexpr Text kHeight = u"高度";
inline constexpr Text kRemoveEdgeContact = u"去除与边缘接触的黑色区域";
inline constexpr Text kSmoothEdges = u"边缘去毛刺";

// Crop and layout.
inline constexpr Text kTop = u"上:";
inline constexpr Text kBottom = u"下:";
inline constexpr Text kLeft = u"左:";
inline constexpr Text kRight = u"右:";
inline constexpr Text kFindContentBox = u"手动选择范围内自动选择";
inline constexpr Text kIgnoreBlackEdge = u"不计黑边";
inline constexpr Text kStrongBackground = u"强力去背景";
inline constexpr Text kIgnoreSpeckles = u"忽略斑点直径:";
inline constexpr Text kSpeckleCompensation = u"斑点补偿";
inline constexpr Text kPageSize = u"页面大小";
inline constexpr Text kPageMargins = u"页边空:";
inline constexpr Text kAlignH = u"水平对齐:";
inline constexpr Text kAlignV = u"垂直对齐:";
inline constexpr Text kFillColor = u"填充颜色:";
inline constexpr Text kBigContentBox = u"内容框大于版心时:";
inline constexpr Text kSmallContentBox = u"内容框小于版心时:";

// Page correction.
inline constexpr Text kDewarpMethod = u"自动展平方法:";
inline constexpr Text kDewarpIllumination = u"页面光照:";

// JPEG details.
inline constexpr Text kJpegSampling = u"方式:";
inline constexpr Text kHalveH = u"水平方向缩一半";
inline constexpr Text kHalveV = u"垂直方向缩一半";
inline constexpr Text kSourceSampling = u"优先使用原JPG采样参数";
inline constexpr Text kSourceQuality = u"优先使用原JPG质量系数";
inline constexpr Text kSourceCoding = u"优先使用原JPG编码参数";
inline constexpr Text kOptimize = u"优化编码";
inline constexpr Text kProgressive = u"渐进式";

// The crop summary under the batch options.
inline constexpr Text kSummaryLeft = u"左";
inline constexpr Text kSummaryTop = u"上";
inline constexpr Text kSummaryRight = u"右";
inline constexpr Text kSummaryBottom = u"下";
inline constexpr Text kSummaryFindBox = u"自动裁边";
inline constexpr Text kSummaryDeskewRows = u"自动纠斜_横排";
inline constexpr Text kSummaryDeskewColumns = u"自动纠斜_竖排";
inline constexpr Text kSummaryDeskewBoth = u"自动纠斜_双向";
inline constexpr Text kSummaryDeskewManual = u"手动纠斜";

// The ten groups, by position.
inline constexpr Text kGroups[] = {u"亮度", u"对比度",  u"高亮度",  u"Gamma校正", u"曲线",
                                   u"缩放", u"Jpg质量", u"Jp2压缩", u"切边",      u"其它"};

// Steps of the enhancement, told as each starts.
inline constexpr Text kStepRotate = u"旋转";
inline constexpr Text kStepSplit = u"分页";
inline constexpr Text kStepCorrection = u"页面矫正";
inline constexpr Text kStepDeskew = u"纠斜";
inline constexpr Text kStepCrop = u"切边";
inline constexpr Text kStepReplaceColor = u"颜色替换";
inline constexpr Text kStepSwapChannel = u"通道互换";
inline constexpr Text kStepNegate = u"反白";
inline constexpr Text kStepCombineChannel = u"通道混合";
inline constexpr Text kStepIllumination = u"去阴影";
inline constexpr Text kStepUnshadow = u"去除背景阴影";
inline constexpr Text kStepWhiteBalance = u"白平衡";
inline constexpr Text kStepEnlarge = u"放大";
inline constexpr Text kStepAutoLevels = u"自动色阶";
inline constexpr Text kStepLevels = u"色阶";
inline constexpr Text kStepVibrance = u"自然饱和度";
inline constexpr Text kStepPixelMapping = u"像素映射";
inline constexpr Text kStepLight = u"光线";
inline constexpr Text kStepMultiScale = u"多尺度细节增强";
inline constexpr Text kStepAutoLevelsPost = u"自动色阶_后处理";
inline constexpr Text kStepEqualize = u"色调均化";
inline constexpr Text kStepEmbolden = u"加粗";
inline constexpr Text kStepThin = u"变细";
inline constexpr Text kStepOpen = u"开";
inline constexpr Text kStepClose = u"闭";
inline constexpr Text kStepBlur = u"柔化";
inline constexpr Text kStepGaussian = u"高斯模糊";
inline constexpr Text kStepSurfaceBlur = u"表面模糊";
inline constexpr Text kStepReduceSize = u"缩小";
inline constexpr Text kStepSharpen = u"锐化";
inline constexpr Text kStepAdjustSharpen = u"调节锐化";
inline constexpr Text kStepUsm = u"USM锐化";
inline constexpr Text kStepColorReduction = u"减色";
inline constexpr Text kStepPlaceOnPage = u"填白";

}  // namespace velloran::labels
