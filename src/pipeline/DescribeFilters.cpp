#include <array>

#include "pipeline/Describe.h"
#include "pipeline/DescribeText.h"
#include "text/Labels.h"
#include "text/NumberText.h"

namespace velloran {

void DescribeMultiScale(const ParaValues& values, std::u16string& text) {
    AppendAdjustLine(values, labels::kMultiScale, PARA_ADJUST_MULTI_SCALE_R, text);
}

void DescribeErode(const ParaValues& values, std::u16string& text) {
    AppendComboText(values, PARA_ERODE, text);
}

void DescribeBlur(const ParaValues& values, std::u16string& text) {
    AppendLabelCombo(values, labels::kSoften, PARA_BLUR, text);
}

void DescribeGaussian(const ParaValues& values, std::u16string& text) {
    AppendAdjustLine(values, labels::kGaussianRadius, PARA_ADJUST_BLUR_RADIUS, text);
}

void DescribeSurfaceBlur(const ParaValues& values, std::u16string& text) {
    const auto [passes, radius, threshold, algorithm] =
        GroupOf(values, std::array{PARA_SURFACE_BLUR_TIMES, PARA_SURFACE_BLUR_RADIUS,
                                   PARA_SURFACE_BLUR_THRESHOLD, PARA_SURFACE_BLUR_ALGRITHOM});
    if (passes < 1)
        return;
    const std::size_t start = text.size();
    AppendItem(LabelAndValue(labels::kPasses, ListOrNumber(PARA_SURFACE_BLUR_TIMES, passes)), start,
               text);
    AppendItem(
        LabelAndValue(labels::kAlgorithm, ListOrNumber(PARA_SURFACE_BLUR_ALGRITHOM, algorithm)),
        start, text);
    AppendItem(LabelAndValue(labels::kRadius, ShownText(PARA_SURFACE_BLUR_RADIUS, radius)), start,
               text);
    AppendItem(
        LabelAndValue(labels::kThresholdValue, ShownText(PARA_SURFACE_BLUR_THRESHOLD, threshold)),
        start, text);
    text += kLineEnd;
}

void DescribeSharpen(const ParaValues& values, std::u16string& text) {
    AppendLabelCombo(values, labels::kSharpen, PARA_SHARPEN, text);
}

void DescribeAdjustSharpen(const ParaValues& values, std::u16string& text) {
    const auto [strength, size] =
        GroupOf(values, std::array{PARA_ADJUST_SHARPEN_PERCENT, PARA_ADJUST_SHARPEN_SIZE});
    if (strength == 0)
        return;
    AppendAdjustLine(values, labels::kGaussianSharpenRadius, PARA_ADJUST_SHARPEN_PERCENT, text);
    text.append(LabelAndValue(labels::kKernelOrder, ShownText(PARA_ADJUST_SHARPEN_SIZE, size)))
        .append(kLineEnd);
}

void DescribeUsm(const ParaValues& values, std::u16string& text) {
    const auto [passes, amount, radius, threshold] = GroupOf(
        values, std::array{PARA_USM_TIMES, PARA_USM_AMOUNT, PARA_USM_RADIUS, PARA_USM_THRESHOLD});
    if (passes < 1)
        return;
    const std::size_t start = text.size();
    AppendItem(LabelAndValue(labels::kPasses, ListOrNumber(PARA_USM_TIMES, passes)), start, text);
    AppendItem(LabelAndValue(labels::kAmount, DecimalText(amount)), start, text);
    AppendItem(LabelAndValue(labels::kRadius, ShownText(PARA_USM_RADIUS, radius)), start, text);
    AppendItem(LabelAndValue(labels::kThresholdValue, DecimalText(threshold)), start, text);
    text += kLineEnd;
}

}  // namespace velloran
