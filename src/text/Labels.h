#pragma once

// All words that a user sees stand here in each language, so that describe mode, messages and
// windows cannot differ. Texts of the parameter lists stand in params/ParaLists.h.

#include "text/Label.h"

namespace velloran::labels {

// Reading and writing files.
inline constexpr Label kLoadFailed{u"文件读取失败。", u"The file could not be read."};
inline constexpr Label kSaveFailed{u"文件存盘失败。", u"The file could not be saved."};
inline constexpr Label kUnwritableType{
    u"抱歉，保存的文件名只能以jpg、jp2、png、bmp或tif为扩展名，请更正。",
    u"Sorry, files can only be saved with the extension jpg, jp2, png, bmp or tif; please correct "
    u"the name."};
inline constexpr Label kBmpOnlyFor16Bit{
    u"抱歉，16位色图像只能保存为BMP格式，请重新选择。",
    u"Sorry, 16-bit pictures can only be saved as BMP; please choose again."};
inline constexpr Label kReducedTargets{
    u"抱歉，减色后的图像只能保存为PNG、GIF、BMP、TIFF或WEBP，请重新选择。",
    u"Sorry, pictures of reduced colors can only be saved as PNG, GIF, BMP, TIFF or WEBP; please "
    u"choose again."};
inline constexpr Label kOnlyJpegAsk{u"图像文件只能保存为Jpeg格式，要继续吗？",
                                    u"The picture can only be saved as JPEG. Go on?"};
inline constexpr Label kInvalidPath{u"路径含无效字符：\r\n",
                                    u"The path holds invalid characters:\r\n"};

// Batch conversion.
inline constexpr Label kNoSourceFolder{u"请先选择存放源文件的文件夹。",
                                       u"Please choose the folder of the source files first."};
inline constexpr Label kNoTargetFolder{u"请先选择存放新文件的文件夹。",
                                       u"Please choose the folder for the new files first."};
inline constexpr Label kReducedOnlyPng{
    u"抱歉，减色后的图像只能保存为PNG格式，请重新选择。",
    u"Sorry, pictures of reduced colors can only be saved as PNG; please choose again."};
inline constexpr Label kSameFolderAsk{
    u"源文件夹与目标文件夹相同，源文件将被转换后的文件所覆盖。要继续吗？",
    u"The target folder is the source folder: converted files replace the source files. Go on?"};
inline constexpr Label kReplacesSourcesAsk{
    u"个源文件将被转换后的文件所覆盖。要继续吗？",
    u" of the source files are going to be replaced by converted files. Go on?"};
inline constexpr Label kNewNamesBefore{u"\n另有", u"\n"};
inline constexpr Label kNewNamesAtMostBefore{u"\n另外最多有", u"\nUp to "};
inline constexpr Label kNewNamesBehind{
    u"个转换后的文件将以其他文件名出现在源文件旁边。",
    u" converted files are going to stand beside the source files under other names."};
inline constexpr Label kOtherTypesLeftOut{u"未处理的其他类型文件数：",
                                          u"Files of other types left out: "};
inline constexpr Label kTargetsStand{u"目标已存在而跳过的文件数：",
                                     u"Files left because their targets stand: "};
inline constexpr Label kDamagedSource{
    u"文件不完整或已损坏，只转换了能读出的部分",
    u"cut short or damaged; only what could be read is converted"};
inline constexpr Label kPicturesBefore{u"文件含有", u"holds "};
inline constexpr Label kPicturesBehind{u"幅图像，只转换了第一幅",
                                       u" pictures; only the first one is converted"};
inline constexpr Label kInPlaceDamaged{u"源文件不完整或已损坏，不能覆盖它自身。",
                                       u"The source is cut short or damaged; its result does not "
                                       u"replace it."};
inline constexpr Label kInPlacePictures{u"源文件含有多幅图像，不能覆盖它自身。",
                                        u"The source holds several pictures; its result does not "
                                        u"replace it."};
inline constexpr Label kIsNoLog{u"不是转换记录文件，不能用作记录。",
                                u"This is no run log and is not replaced by one."};
inline constexpr Label kIsNoReview{u"不是检查清单，不会被清单替换。",
                                   u"This is no review list and is not replaced by one."};
inline constexpr Label kIsNoSettingsFile{u"不是参数设置文件，不能写入。",
                                         u"This is no settings file and is not written to."};
inline constexpr Label kSharesTargetName{u"{0}: 结果与{1}的同名，存为{2}",
                                         u"{0}: shares its target's name with {1}, goes to {2}"};
inline constexpr Label kEnteredTooOften{u"{0}: 通过链接进入太多次，不再处理",
                                        u"{0}: entered too often through links, left out"};
inline constexpr Label kEvadesSource{
    u"{0}: 结果与另一个源文件同名，存为{1}",
    u"{0}: its target's name is that of another source, goes to {1}"};
inline constexpr Label kTimesNotCopied{u"{0}: 日期、时间不能复制到结果",
                                       u"{0}: its times could not be copied to the result"};
inline constexpr Label kLogNotWritten{u"{0}: 结果记录不能写入",
                                      u"{0}: the run log cannot be written"};
inline constexpr Label kCountingFiles{u"统计文件数", u"Counting files"};
inline constexpr Label kNothingToConvert{
    u"抱歉，在源文件夹下没有可供转换的文件。",
    u"Sorry, there are no files to convert in the source folder."};
inline constexpr Label kFilesToConvert{u"个文件需要转换，\n", u" files to convert,\n"};
inline constexpr Label kFilesConverted{u"个文件转换成功。", u" files converted."};
inline constexpr Label kStoppedHalfway{u"\n您选择了中途停止。", u"\nYou chose to stop halfway."};
inline constexpr Label kSeeLogAsk{u"\n您想看结果记录吗？", u"\nDo you want to see the log?"};
inline constexpr Label kStageRead{u"读取", u"Read"};
inline constexpr Label kStageCopy{u"复制", u"Copy"};
inline constexpr Label kStageSave{u"存盘", u"Save"};

// What the run log says of a file, by row.
inline constexpr Label kLogRows[] = {
    {u"创建失败", u"could not be created"},
    {u"打开失败", u"could not be opened"},
    {u"写入失败", u"could not be written"},
    {u"读取失败", u"could not be read"},
    {u"添加失败", u"could not be added"},
    {u"文件类型无法识别", u"file type not recognized"},
    {u"内存不足", u"out of memory"},
    {u"文件损坏", u"file is damaged"},
    {u"文件包含图像", u"file holds pictures"},
    {u"文件包含HTML内容", u"file holds HTML"},
    {u"文件包含PDF内容", u"file holds PDF"},
    {u"文件不包含PDF内容", u"file holds no PDF"},
    {u"文件不存在", u"file does not exist"},
    {u"可能出现黑线", u"black lines may appear"},
    {u"JPG数据错误，请修复", u"JPEG data is wrong, please repair"},
    {u"不是有效的JPG文件", u"not a valid JPEG file"},
    {u"修复失败，请用其他软件转存", u"repair failed, please convert with other software"},
    {u"是空文件", u"file is empty"},
    {u"数据太少，无法修复，请重新下载", u"too little data to repair, please download again"},
    {u"文件可能没有下完，或数据损坏", u"download incomplete, or data damaged"},
    {u"是索引文件，不能合并", u"index file, cannot be merged"},
    {u"是多页文件，不能建索引", u"file of several pages, cannot be indexed"},
    {u"是6xH文件，请先解密", u"6xH file, please decrypt first"},
    {u"是FFH文件，没救的，删了吧", u"FFH file, beyond rescue, delete it"},
    {u"缺少插图", u"illustration missing"},
    {u"转换失败", u"conversion failed"},
    {u"不是JFIF格式的JPEG文件", u"not a JFIF JPEG file"},
    {u"更名失败", u"could not be renamed"},
    {u"复制失败", u"could not be copied"},
};

inline constexpr Label kPdfTooLarge{u"此功能不能处理超过4GB的PDF文件",
                                    u"PDF files of over 4 GB are not handled"};

// The clipboard.
inline constexpr Label kClipboardMismatch{u"剪贴板数据格式不符",
                                          u"The data of the clipboard has another format"};

// Labels of controls, with the colon that stands in the dialogs. They head lines of the text form.
inline constexpr Label kSplit{u"分页:", u"Split:"};
inline constexpr Label kDeskew{u"纠斜:", u"Deskew:"};
inline constexpr Label kDegrees{u"度", u" degrees"};
inline constexpr Label kReplaceColor{u"颜色替换", u"Replace color"};
inline constexpr Label kReplaceCondition{u"替换条件:", u"Condition:"};
inline constexpr Label kThresholdValue{u"阀值:", u"Threshold:"};
inline constexpr Label kSwapChannel{u"通道互换:", u"Swap channels:"};
inline constexpr Label kNegate{u"反白", u"Negative"};
inline constexpr Label kCombineChannel{u"通道混合:", u"Mix channels:"};
inline constexpr Label kUnshadow{u"去除背景阴影:", u"Remove background shadow:"};
inline constexpr Label kRedSeal{u"红章", u"red seals"};
inline constexpr Label kWhiteBalance{u"白平衡:", u"White balance:"};
inline constexpr Label kLevels{u"色阶", u"Levels"};
inline constexpr Label kVibrance{u"自然饱和度:", u"Vibrance:"};
inline constexpr Label kHighlightFrom{u"高亮值", u"from level"};
inline constexpr Label kCurveTuning{u"曲线参数调节:", u"Curve tuning:"};
inline constexpr Label kCurveDivisor{u"画面", u"picture"};
inline constexpr Label kCurveOffset{u"背景", u"background"};
inline constexpr Label kLight{u"光线", u"Light"};
inline constexpr Label kLightShadow{u"阴影", u"shadows"};
inline constexpr Label kLightHighlight{u"高光", u"highlights"};
inline constexpr Label kMultiScale{u"多尺度细节增强:", u"Multi-scale detail:"};
inline constexpr Label kPostProcessing{u"后处理:", u"Afterwards:"};
inline constexpr Label kEqualize{u"色调均化", u"Equalize"};
inline constexpr Label kSoften{u"柔化:", u"Soften:"};
inline constexpr Label kGaussianRadius{u"高斯模糊半径:", u"Gaussian blur radius:"};
inline constexpr Label kPasses{u"遍数:", u"Passes:"};
inline constexpr Label kAlgorithm{u"算法:", u"Algorithm:"};
inline constexpr Label kRadius{u"半径:", u"Radius:"};
inline constexpr Label kSharpen{u"锐化:", u"Sharpen:"};
inline constexpr Label kGaussianSharpenRadius{u"高斯锐化半径:", u"Gaussian sharpen radius:"};
inline constexpr Label kKernelOrder{u"阶数:", u"Kernel size:"};
inline constexpr Label kAmount{u"数量:", u"Amount:"};

// Colour depth.
inline constexpr Label kColorCount{u"色彩数:", u"Colors:"};
inline constexpr Label kDither{u"抖动", u"Dither"};
inline constexpr Label kQuantizer{u"调色板量化算法:", u"Palette by:"};
inline constexpr Label kTransparent{u"索引色PNG、GIF设置背景透明",
                                    u"Transparent background in indexed PNG and GIF"};
inline constexpr Label kCheckGray{u"载入时判断灰度图像:", u"Gray test on loading:"};
inline constexpr Label kReverseCmyk{u"CMYK JPEG反白", u"Negate CMYK JPEG"};
inline constexpr Label kDitherMethod{u"抖动算法:", u"Dither by:"};
inline constexpr Label kThresholdMethod{u"阀值算法:", u"Threshold by:"};
inline constexpr Label kWindowSize{u"窗口尺寸:", u"Window size:"};
inline constexpr Label kDespeckle{u"去斑直径:", u"Speck diameter:"};
inline constexpr Label kBlockFilter{u"去除符合下列条件的黑色区域:", u"Remove black regions with:"};
inline constexpr Label kWidth{u"宽度", u"Width"};
inline constexpr Label kHeight{u"高度", u"Height"};
inline constexpr Label kRemoveEdgeContact{u"去除与边缘接触的黑色区域",
                                          u"Remove black regions that touch the edge"};
inline constexpr Label kSmoothEdges{u"边缘去毛刺", u"Smooth ragged edges"};

// Crop and layout.
inline constexpr Label kTop{u"上:", u"Top:"};
inline constexpr Label kBottom{u"下:", u"Bottom:"};
inline constexpr Label kLeft{u"左:", u"Left:"};
inline constexpr Label kRight{u"右:", u"Right:"};
inline constexpr Label kFindContentBox{u"手动选择范围内自动选择",
                                       u"Find the content box inside the margins"};
inline constexpr Label kIgnoreBlackEdge{u"不计黑边", u"Ignore black edges"};
inline constexpr Label kStrongBackground{u"强力去背景", u"Strong background removal"};
inline constexpr Label kIgnoreSpeckles{u"忽略斑点直径:", u"Ignore specks of diameter:"};
inline constexpr Label kSpeckleCompensation{u"斑点补偿", u"Speck compensation"};
inline constexpr Label kPageSize{u"页面大小", u"Page size"};
inline constexpr Label kPageMargins{u"页边空:", u"Page margins:"};
inline constexpr Label kAlignH{u"水平对齐:", u"Horizontal alignment:"};
inline constexpr Label kAlignV{u"垂直对齐:", u"Vertical alignment:"};
inline constexpr Label kFillColor{u"填充颜色:", u"Fill color:"};
inline constexpr Label kBigContentBox{u"内容框大于版心时:",
                                      u"Content box larger than the type area:"};
inline constexpr Label kSmallContentBox{u"内容框小于版心时:",
                                        u"Content box smaller than the type area:"};

// Page correction.
inline constexpr Label kDewarpMethod{u"自动展平方法:", u"Dewarp by:"};
inline constexpr Label kDewarpIllumination{u"页面光照:", u"Page illumination:"};

// JPEG details.
inline constexpr Label kJpegSampling{u"方式:", u"Sampling:"};
inline constexpr Label kHalveH{u"水平方向缩一半", u"Halve horizontally"};
inline constexpr Label kHalveV{u"垂直方向缩一半", u"Halve vertically"};
inline constexpr Label kSourceSampling{u"优先使用原JPG采样参数",
                                       u"Prefer the sampling of the source JPEG"};
inline constexpr Label kSourceQuality{u"优先使用原JPG质量系数",
                                      u"Prefer the quality of the source JPEG"};
inline constexpr Label kSourceCoding{u"优先使用原JPG编码参数",
                                     u"Prefer the coding of the source JPEG"};
inline constexpr Label kOptimize{u"优化编码", u"Optimize coding"};
inline constexpr Label kProgressive{u"渐进式", u"Progressive"};

// The crop summary under the batch options.
inline constexpr Label kSummaryLeft{u"左", u"Left "};
inline constexpr Label kSummaryTop{u"上", u"Top "};
inline constexpr Label kSummaryRight{u"右", u"Right "};
inline constexpr Label kSummaryBottom{u"下", u"Bottom "};
inline constexpr Label kSummaryFindBox{u"自动裁边", u"Crop automatically"};
inline constexpr Label kSummaryDeskewRows{u"自动纠斜_横排", u"Deskew by rows"};
inline constexpr Label kSummaryDeskewColumns{u"自动纠斜_竖排", u"Deskew by columns"};
inline constexpr Label kSummaryDeskewBoth{u"自动纠斜_双向", u"Deskew by both"};
inline constexpr Label kSummaryDeskewManual{u"手动纠斜", u"Deskew by hand"};

// The ten groups, by position.
inline constexpr Label kGroups[] = {
    {u"亮度", u"Brightness"},
    {u"对比度", u"Contrast"},
    {u"高亮度", u"Highlight"},
    {u"Gamma校正", u"Gamma"},
    {u"曲线", u"Curve"},
    {u"缩放", u"Scale"},
    {u"Jpg质量", u"JPEG quality"},
    {u"Jp2压缩", u"JPEG 2000 rate"},
    {u"切边", u"Crop"},
    {u"其它", u"Other"},
};

// Steps of the enhancement, told as each starts.
inline constexpr Label kStepRotate{u"旋转", u"Rotate"};
inline constexpr Label kStepSplit{u"分页", u"Split"};
inline constexpr Label kStepCorrection{u"页面矫正", u"Correct page"};
inline constexpr Label kStepDeskew{u"纠斜", u"Deskew"};
inline constexpr Label kStepCrop{u"切边", u"Crop"};
inline constexpr Label kStepReplaceColor{u"颜色替换", u"Replace color"};
inline constexpr Label kStepSwapChannel{u"通道互换", u"Swap channels"};
inline constexpr Label kStepNegate{u"反白", u"Negative"};
inline constexpr Label kStepCombineChannel{u"通道混合", u"Mix channels"};
inline constexpr Label kStepIllumination{u"去阴影", u"Even illumination"};
inline constexpr Label kStepUnshadow{u"去除背景阴影", u"Remove background shadow"};
inline constexpr Label kStepWhiteBalance{u"白平衡", u"White balance"};
inline constexpr Label kStepEnlarge{u"放大", u"Enlarge"};
inline constexpr Label kStepAutoLevels{u"自动色阶", u"Automatic levels"};
inline constexpr Label kStepLevels{u"色阶", u"Levels"};
inline constexpr Label kStepVibrance{u"自然饱和度", u"Vibrance"};
inline constexpr Label kStepPixelMapping{u"像素映射", u"Map pixels"};
inline constexpr Label kStepLight{u"光线", u"Light"};
inline constexpr Label kStepMultiScale{u"多尺度细节增强", u"Multi-scale detail"};
inline constexpr Label kStepAutoLevelsPost{u"自动色阶_后处理", u"Automatic levels, afterwards"};
inline constexpr Label kStepEqualize{u"色调均化", u"Equalize"};
inline constexpr Label kStepEmbolden{u"加粗", u"Embolden"};
inline constexpr Label kStepThin{u"变细", u"Thin"};
inline constexpr Label kStepOpen{u"开", u"Open"};
inline constexpr Label kStepClose{u"闭", u"Close"};
inline constexpr Label kStepBlur{u"柔化", u"Soften"};
inline constexpr Label kStepGaussian{u"高斯模糊", u"Gaussian blur"};
inline constexpr Label kStepSurfaceBlur{u"表面模糊", u"Surface blur"};
inline constexpr Label kStepReduceSize{u"缩小", u"Reduce size"};
inline constexpr Label kStepSharpen{u"锐化", u"Sharpen"};
inline constexpr Label kStepAdjustSharpen{u"调节锐化", u"Adjust sharpen"};
inline constexpr Label kStepUsm{u"USM锐化", u"Unsharp mask"};
inline constexpr Label kStepColorReduction{u"减色", u"Reduce colors"};
inline constexpr Label kStepPlaceOnPage{u"填白", u"Place on page"};

}  // namespace velloran::labels
