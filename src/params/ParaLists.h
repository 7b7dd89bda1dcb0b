#pragma once

// Texts of the parameter lists, in list order. A list value is the position in its list, so that
// the order is part of the file formats.

#include <cstddef>

#include "text/Label.h"

namespace velloran::lists {

using Text = Label;

// clang-format off
inline constexpr Text kSharpen[] = {
    {u"无", u"None"}, {u"01级", u"Level 01"}, {u"02级", u"Level 02"}, {u"03级", u"Level 03"},
    {u"04级", u"Level 04"}, {u"05级", u"Level 05"}, {u"06级", u"Level 06"},
    {u"07级", u"Level 07"}, {u"08级", u"Level 08"}, {u"09级", u"Level 09"},
    {u"a1级", u"Level a1"}, {u"a2级", u"Level a2"}, {u"a3级", u"Level a3"}};
inline constexpr Text kBlur[] = {
    {u"无", u"None"}, {u"01级", u"Level 01"}, {u"02级", u"Level 02"}, {u"03级", u"Level 03"},
    {u"04级", u"Level 04"}, {u"05级", u"Level 05"}, {u"a1级", u"Level a1"},
    {u"a2级", u"Level a2"}, {u"a3级", u"Level a3"}, {u"a4级", u"Level a4"},
    {u"a5级", u"Level a5"}};
inline constexpr Text kColor[] = {
    {u"24位色", u"24-bit color"}, {u"256级灰度", u"256 grays"}, {u"保持原样", u"As it is"},
    {u"256色", u"256 colors"}, {u"16级灰度", u"16 grays"}, {u"8级灰度", u"8 grays"},
    {u"4级灰度", u"4 grays"}, {u"纯黑白", u"Black and white"}, {u"128色", u"128 colors"},
    {u"64色", u"64 colors"}, {u"32色", u"32 colors"}, {u"16色", u"16 colors"},
    {u"8色", u"8 colors"}, {u"4色", u"4 colors"}, {u"2色", u"2 colors"},
    {u"128级灰度", u"128 grays"}, {u"64级灰度", u"64 grays"}, {u"32级灰度", u"32 grays"},
    {u"16位色565", u"16-bit color 565"}, {u"16位色555", u"16-bit color 555"}};
inline constexpr Text kAutoLevels[] = {
    {u"（无）", u"(none)"}, {u"自动色阶1", u"Automatic levels 1"},
    {u"自动色阶2", u"Automatic levels 2"}, {u"自动对比1", u"Automatic contrast 1"},
    {u"自动对比2", u"Automatic contrast 2"}, {u"自动对比3", u"Automatic contrast 3"},
    {u"自动亮度1", u"Automatic brightness 1"}, {u"自动亮度2", u"Automatic brightness 2"},
    {u"自动亮度3", u"Automatic brightness 3"}, {u"自动漂白1", u"Automatic bleach 1"},
    {u"自动漂白2", u"Automatic bleach 2"}, {u"自动漂白3", u"Automatic bleach 3"},
    {u"自动漂白4", u"Automatic bleach 4"}};
inline constexpr std::size_t kAutoLevelsPostCount = 9;  // the list above without the bleaches
inline constexpr Text kErode[] = {
    {u"无", u"None"}, {u"加粗01", u"Embolden 01"}, {u"加粗02", u"Embolden 02"},
    {u"加粗03", u"Embolden 03"}, {u"加粗04", u"Embolden 04"}, {u"变细01", u"Thin 01"},
    {u"变细02", u"Thin 02"}, {u"变细03", u"Thin 03"}, {u"变细04", u"Thin 04"},
    {u"开0101", u"Open 0101"}, {u"开0202", u"Open 0202"}, {u"开0303", u"Open 0303"},
    {u"开0404", u"Open 0404"}, {u"闭0101", u"Close 0101"}, {u"闭0202", u"Close 0202"},
    {u"闭0303", u"Close 0303"}, {u"闭0404", u"Close 0404"}};
inline constexpr Text kSwapChannel[] = {
    {u"(无)", u"(none)"}, {u"红<->蓝", u"Red<->Blue"}, {u"红<->绿", u"Red<->Green"},
    {u"蓝<->绿", u"Blue<->Green"}};
inline constexpr Text kCombineChannel[] = {
    {u"(无)", u"(none)"}, {u"红", u"Red"}, {u"绿", u"Green"}, {u"蓝", u"Blue"},
    {u"(红+蓝)/2", u"(Red+Blue)/2"}, {u"(红+绿)/2", u"(Red+Green)/2"},
    {u"(绿+蓝)/2", u"(Green+Blue)/2"}, {u"色调", u"Hue"}, {u"饱和度", u"Saturation"},
    {u"亮度", u"Brightness"}, {u"对比度", u"Contrast"}, {u"灰度", u"Gray"},
    {u"(红+绿+蓝)/3", u"(Red+Green+Blue)/3"}, {u"乌贼漂白", u"Cuttlefish bleach"}};
inline constexpr Text kReplaceColor[] = {
    {u"不替换", u"No replacement"},
    {u"RGB分量与样本差小于阀值", u"RGB differ from the sample by less than the threshold"},
    {u"色调与样本差小于阀值", u"Hue differs from the sample by less than the threshold"},
    {u"RG分量差值大于阀值", u"R and G differ by more than the threshold"},
    {u"RB分量差值大于阀值", u"R and B differ by more than the threshold"},
    {u"BG分量差值大于阀值", u"B and G differ by more than the threshold"},
    {u"R分量占比超过阀值", u"Share of R exceeds the threshold"},
    {u"G分量占比超过阀值", u"Share of G exceeds the threshold"},
    {u"B分量占比超过阀值", u"Share of B exceeds the threshold"}};
inline constexpr Text kLumCorrect[] = {
    {u"（无）", u"(none)"}, {u"照度修正", u"Illumination correction"},
    {u"照度归一、增亮", u"Illumination normalized, brightened"},
    {u"照度归一", u"Illumination normalized"}, u"F.M.Retinex",
    {u"黑白文字", u"Black and white text"},
    {u"黑白文字+红章", u"Black and white text + red seals"}};
inline constexpr Text kTimes[] = {
    {u"(无)", u"(none)"}, u"1", u"2", u"3"};
inline constexpr Text kSurfaceBlurRadius[] = {
    u"1", u"2", u"3", u"4", u"5", u"6", u"7", u"8", u"9", u"10", u"11", u"12", u"13", u"14",
    u"15"};
inline constexpr Text kSurfaceBlurThreshold[] = {
    u"2", u"3", u"4", u"5", u"6", u"7", u"8", u"9", u"10", u"11", u"12", u"13", u"14", u"15",
    u"16", u"17", u"18", u"19", u"20", u"21", u"22", u"23", u"24", u"25", u"26", u"27", u"28",
    u"29", u"30", u"31", u"32", u"33", u"34", u"35", u"36", u"37", u"38", u"39", u"40", u"41",
    u"42", u"43", u"44", u"45", u"46", u"47", u"48", u"49", u"50"};
inline constexpr Text kSurfaceBlurAlgorithm[] = {
    u"Photoshop", {u"引导滤波", u"Guided filter"},
    {u"选择性高斯模糊", u"Selective Gaussian blur"}, {u"选择性模糊", u"Selective blur"}};
inline constexpr Text kQuantize[] = {
    {u"八叉树", u"Octree"}, {u"中位切分", u"Median cut"}, u"Xiaolin Wu",
    {u"固定调色板", u"Fixed palette"}, {u"神经网络", u"Neural network"}};
inline constexpr Text kCheckGray[] = {
    {u"容错判断", u"Tolerant"}, {u"严格判断", u"Strict"}, {u"不判断", u"Not judged"}};
inline constexpr Text kThresholdMethod[] = {
    {u"同调色板量化算法", u"As the palette"}, u"Otsu", u"Wolf"};
inline constexpr Text kWindowSize[] = {
    u"10", u"20", u"30", u"40", u"50", u"60", u"70", u"80", u"90", u"100",
    u"110", u"120", u"130", u"140", u"150", u"160", u"170", u"180", u"190", u"200",
    u"210", u"220", u"230", u"240", u"250", u"260", u"270", u"280", u"290", u"300",
    u"310", u"320", u"330", u"340", u"350", u"360", u"370", u"380", u"390", u"400",
    u"410", u"420", u"430", u"440", u"450", u"460", u"470", u"480", u"490", u"500"};
inline constexpr Text kBwDitherMethod[] = {
    u"JJN", u"Floyd Steinberg", u"Bayer"};
inline constexpr Text kBlockCondition[] = {
    {u"大于", u">"}, {u"小于", u"<"}};
inline constexpr Text kRotate[] = {
    {u"(无)", u"(none)"}, {u"左旋", u"Rotate left"}, {u"右旋", u"Rotate right"},
    {u"颠倒", u"Rotate by 180 degrees"}, {u"镜像", u"Mirror"}, {u"翻转", u"Flip"}};
inline constexpr Text kSourceFiles[] = {
    u"*.jpg;*.jpeg;*.gif;*.ufo;*.bmp;*.png;*.tif;*.tiff;*.wmf;*.jpf;*.jpx;*.jp2;*.j2k;*.jpc;"
    u"*.j2c;*.webp;*.nef;*.crw;*.cr2;*.dng",
    u"*.jpg;*.jpeg", u"*.gif", u"*.ufo", u"*.bmp;*.dib", u"*.png", u"*.tif;*.tiff",
    u"*.wmf;*.emf", u"*.jpf;*.jpx;*.jp2;*.j2k;*.jpc;*.j2c;", u"*.webp",
    u"*.nef;*.crw;*.cr2;*.dng"};
inline constexpr Text kPageSize[] = {
    {u"保持不变，内容框外填白", u"Unchanged, filled outside the content box"},
    {u"内容框大小", u"Size of the content box"},
    {u"内容框+页边空", u"Content box + page margins"}, {u"指定宽度", u"Given width"},
    {u"指定高度", u"Given height"}, {u"指定宽、高", u"Given width and height"},
    u"787x1092mm, 1/16", u"787x1092mm, 1/32", u"787x1092mm, 1/64", u"787x1092mm, 1/128",
    u"850x1168mm, 1/16", u"850x1168mm, 1/32", u"850x1168mm, 1/64", u"850x1168mm, 1/128",
    u"889x1194mm, 1/16", u"889x1194mm, 1/32", u"889x1194mm, 1/64", u"889x1194mm, 1/128",
    u"890x1240mm, 1/16", u"890x1240mm, 1/32", u"890x1240mm, 1/64", u"890x1240mm, 1/128",
    u"1000x1400mm, 1/32", u"1000x1400mm, 1/64", u"1000x1400mm, 1/128",
    {u"A4（公文）", u"A4 (official document)"}, u"A5", u"A6", u"B5", u"B6", u"B7",
    {u"4开报纸", u"Newspaper, 4 sheets"}, {u"8开报纸", u"Newspaper, 8 sheets"},
    {u"A2（WORD 2013）", u"A2 (WORD 2013)"}, {u"A3（WORD 2013）", u"A3 (WORD 2013)"},
    {u"A4（WORD 2013）", u"A4 (WORD 2013)"}};
inline constexpr Text kPageSizeUnit[] = {
    {u"厘米", u"cm"}, {u"像素", u"pixels"}};
inline constexpr Text kAlignH[] = {
    {u"不变", u"Unchanged"}, {u"靠左", u"Left"}, {u"靠右", u"Right"}, {u"居中", u"Centered"}};
inline constexpr Text kAlignV[] = {
    {u"不变", u"Unchanged"}, {u"靠上", u"Top"}, {u"靠下", u"Bottom"}, {u"居中", u"Centered"}};
inline constexpr Text kBigContentBox[] = {
    {u"溢出", u"Overflow"}, {u"缩图", u"Reduce"}, {u"裁剪", u"Cut"}};
inline constexpr Text kSmallContentBox[] = {
    {u"填白", u"Fill"}, {u"放大", u"Enlarge"}};
inline constexpr Text kDeskew[] = {
    {u"(无)", u"(none)"}, {u"自动_横排", u"Automatic, rows"},
    {u"自动_竖排", u"Automatic, columns"}, {u"自动_双向", u"Automatic, both"},
    {u"手动", u"By hand"}};
inline constexpr Text kDeskewEdge[] = {
    {u"边缘保留", u"Edges kept"}, {u"边缘填白", u"Edges filled"},
    {u"边缘扩展", u"Edges extended"}};
inline constexpr Text kSharpenSize[] = {
    u"7", u"9", u"11", u"13", u"15", u"17", u"19", u"21", u"23", u"25"};
inline constexpr Text kWhiteBalance[] = {
    {u"(无)", u"(none)"}, {u"白点矫正", u"White point"}, {u"白点+黑点", u"White + black point"}};
inline constexpr Text kCorrectionType[] = {
    {u"无矫正", u"No correction"}, {u"梯形矫正", u"Trapezoid"},
    {u"梯形矫正+裁切", u"Trapezoid + cut"}, {u"弯曲页面展平", u"Dewarp curved page"}};
inline constexpr Text kDewarpMethod[] = {
    {u"扩展文本行", u"Extended text lines"}, {u"文本行", u"Text lines"},
    {u"页边界", u"Page edges"}, {u"干净文本行", u"Clean text lines"}};
inline constexpr Text kDewarpIllumination[] = {
    {u"不均匀", u"Uneven"}, {u"一般", u"Normal"}, {u"很均匀", u"Very even"}};
inline constexpr Text kJpegSampling[] = {
    {u"自动", u"Automatic"}, {u"手动", u"By hand"}};

// Lists of packed fields: those of PARA_TGT_FILES, the low byte of PARA_PAGE_SPLIT_TYPE, and the
// low and the next byte of PARA_CRT_CROP.
inline constexpr Text kTargetFormat[] = {
    {u"自动", u"automatic"}, u"tif", u"bmp", u"png", u"gif", u"webp", u"jpg", u"jp2"};
inline constexpr Text kSplitKind[] = {
    {u"无分页", u"No split"}, {u"单页", u"Single page"},
    {u"双页右翻", u"Double page, turned to the right"},
    {u"双页左翻", u"Double page, turned to the left"}};
inline constexpr Text kCorrectionSizeMode[] = {
    {u"自动", u"Automatic"}, {u"自动，指定比例", u"Automatic, given ratio"},
    {u"指定比例和宽度", u"Given ratio and width"},
    {u"指定比例和高度", u"Given ratio and height"}, {u"指定宽度", u"Given width"},
    {u"指定高度", u"Given height"}, {u"指定宽、高", u"Given width and height"}};
inline constexpr Text kCorrectionRatio[] = {
    u"16:9", u"4:3", u"3:2", u"5:3", u"2:1", u"3:1", u"1:1", u"A3/A4", u"B4/B5",
    {u"正度16开/32开", u"Standard 16mo/32mo"}, {u"大度16开/32开", u"Large 16mo/32mo"},
    {u"打印纸(Letter)", u"Letter paper"}};
// clang-format on

}  // namespace velloran::lists
