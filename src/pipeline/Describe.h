#pragma once

// The text form of parameter values: one function a step, each of which appends the lines of its
// own settings and appends nothing where the step would not run. Lines end in CR LF; labels are
// those of the controls that edit the parameters; a list value without an entry is written as its
// number. No function depends on the locale.

#include <string>

#include "params/Settings.h"

namespace velloran {

/// What stands before the pipeline's own lines: how grey is judged, and CMYK negation.
void DescribeGrayTest(const ParaValues& values, std::u16string& text);
void DescribeCmyk(const ParaValues& values, std::u16string& text);

// The steps, in the order of the pipeline.
void DescribeRotate(const ParaValues& values, std::u16string& text);
void DescribeSplit(const ParaValues& values, std::u16string& text);
void DescribeCorrection(const ParaValues& values, std::u16string& text);
void DescribeDeskew(const ParaValues& values, std::u16string& text);
/// The cut margins with the search, on one line.
void DescribeCrop(const ParaValues& values, std::u16string& text);
/// Behind the crop, whether or not it runs, up to five lines: the DPI, and, as soon as one page
/// parameter is not at its default, page size, page margins when there are any, alignment, and the
/// rules for a box that does not fit.
void DescribeLayout(const ParaValues& values, std::u16string& text);
void DescribeReplaceColor(const ParaValues& values, std::u16string& text);
void DescribeSwapChannel(const ParaValues& values, std::u16string& text);
void DescribeNegate(const ParaValues& values, std::u16string& text);
void DescribeCombineChannel(const ParaValues& values, std::u16string& text);
void DescribeIllumination(const ParaValues& values, std::u16string& text);
void DescribeUnshadow(const ParaValues& values, std::u16string& text);
void DescribeWhiteBalance(const ParaValues& values, std::u16string& text);
void DescribeEnlarge(const ParaValues& values, std::u16string& text);
/// Automatic levels, or the manual ones only while the automatic ones are off.
void DescribeLevelsStep(const ParaValues& values, std::u16string& text);
void DescribeVibrance(const ParaValues& values, std::u16string& text);
/// All stages of the tone table, in the order in which they run.
void DescribePixelMapping(const ParaValues& values, std::u16string& text);
void DescribeLight(const ParaValues& values, std::u16string& text);
void DescribeMultiScale(const ParaValues& values, std::u16string& text);
void DescribeAutoLevelsPost(const ParaValues& values, std::u16string& text);
void DescribeEqualize(const ParaValues& values, std::u16string& text);
void DescribeErode(const ParaValues& values, std::u16string& text);
void DescribeBlur(const ParaValues& values, std::u16string& text);
void DescribeGaussian(const ParaValues& values, std::u16string& text);
void DescribeSurfaceBlur(const ParaValues& values, std::u16string& text);
void DescribeReduceSize(const ParaValues& values, std::u16string& text);
void DescribeSharpen(const ParaValues& values, std::u16string& text);
void DescribeAdjustSharpen(const ParaValues& values, std::u16string& text);
void DescribeUsm(const ParaValues& values, std::u16string& text);
/// One line: the depth, then behind ", " what applies to it. Dithering where colours are reduced;
/// the palette maker where its choice has a say; transparency where a palette can remain; for black
/// and white the dither method, or with dithering off the threshold method, the window of a local
/// threshold, and each cleaning that is on: "色彩数: 纯黑白, 阀值算法: Wolf, 窗口尺寸: 50".
void DescribeColorReduction(const ParaValues& values, std::u16string& text);
/// For steps whose settings another step's lines tell.
void DescribeNothing(const ParaValues& values, std::u16string& text);

/// What the file is written with, after the last step, where it differs from the defaults: JPEG
/// quality, JPEG details on one line ("=FALSE" behind what is switched off), JPEG 2000 ratio.
void DescribeOutput(const ParaValues& values, std::u16string& text);

}  // namespace velloran
