#pragma once

// The text form of a parameter block: one function a step, each of which appends the lines of its
// own settings and appends nothing where the step would not run. Lines end in CR LF; labels are
// those of the controls that edit the parameters; a list value without an entry is written as its
// number. No function depends on the locale, and none changes the block.

#include <string>

namespace velloran {

class CParaBlock;

/// What stands before the pipeline's own lines: how grey is judged, and CMYK negation.
void DescribeGrayTest(const CParaBlock& block, std::u16string& text);
void DescribeCmyk(const CParaBlock& block, std::u16string& text);

// The steps, in the order of the pipeline.
void DescribeRotate(const CParaBlock& block, std::u16string& text);
void DescribeSplit(const CParaBlock& block, std::u16string& text);
void DescribeCorrection(const CParaBlock& block, std::u16string& text);
void DescribeDeskew(const CParaBlock& block, std::u16string& text);
/// Up to six lines: the cut margins with the search, the DPI, and, as soon as one page parameter
/// is not at its default, page size, page margins when there are any, alignment, and the rules for
/// a box that does not fit.
void DescribeCropAndLayout(const CParaBlock& block, std::u16string& text);
void DescribeReplaceColor(const CParaBlock& block, std::u16string& text);
void DescribeSwapChannel(const CParaBlock& block, std::u16string& text);
void DescribeNegate(const CParaBlock& block, std::u16string& text);
void DescribeCombineChannel(const CParaBlock& block, std::u16string& text);
void DescribeIllumination(const CParaBlock& block, std::u16string& text);
void DescribeUnshadow(const CParaBlock& block, std::u16string& text);
void DescribeWhiteBalance(const CParaBlock& block, std::u16string& text);
void DescribeEnlarge(const CParaBlock& block, std::u16string& text);
/// Automatic levels, or the manual ones only while the automatic ones are off.
void DescribeLevelsStep(const CParaBlock& block, std::u16string& text);
void DescribeVibrance(const CParaBlock& block, std::u16string& text);
/// All stages of the tone table, in the order in which they run.
void DescribePixelMapping(const CParaBlock& block, std::u16string& text);
void DescribeLight(const CParaBlock& block, std::u16string& text);
void DescribeMultiScale(const CParaBlock& block, std::u16string& text);
void DescribeAutoLevelsPost(const CParaBlock& block, std::u16string& text);
void DescribeEqualize(const CParaBlock& block, std::u16string& text);
void DescribeErode(const CParaBlock& block, std::u16string& text);
void DescribeBlur(const CParaBlock& block, std::u16string& text);
void DescribeGaussian(const CParaBlock& block, std::u16string& text);
void DescribeSurfaceBlur(const CParaBlock& block, std::u16string& text);
void DescribeReduceSize(const CParaBlock& block, std::u16string& text);
void DescribeSharpen(const CParaBlock& block, std::u16string& text);
void DescribeAdjustSharpen(const CParaBlock& block, std::u16string& text);
void DescribeUsm(const CParaBlock& block, std::u16string& text);
/// One line: the depth, then behind ", " what applies to it. Dithering where colours are reduced;
/// the palette maker where its choice has a say; transparency where a palette can remain; for black
/// and white the dither method, or with dithering off the threshold method, the window of a local
/// threshold, and each cleaning that is on: "色彩数: 纯黑白, 阀值算法: Wolf, 窗口尺寸: 50".
void DescribeColorReduction(const CParaBlock& block, std::u16string& text);
/// For steps whose settings another step's lines tell.
void DescribeNothing(const CParaBlock& block, std::u16string& text);

/// What the file is written with, after the last step, where it differs from the defaults: JPEG
/// quality, JPEG details on one line ("=FALSE" behind what is switched off), JPEG 2000 ratio.
void DescribeOutput(const CParaBlock& block, std::u16string& text);

}  // namespace velloran
