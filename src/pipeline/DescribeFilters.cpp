#include <array>

#include "pipeline/Describe.h"
#include "pipeline/DescribeText.h"
#include "text/Labels.h"
#include "text/NumberText.h"

namespace velloran {

namespace {

/// What a list position stands for, where the list counts: first + step a position.
std::u16string Counted(std::int32_t position, std::int64_t first, std::int64_t step = 1) {
    return DecimalText(position * step + first);
}

}  // namespace

void DescribeMultiScale(const ParaValues& values, std::u16string& text) {
    AppendAdjustLine(labels::kMultiScale, values[PARA_ADJUST_MULTI_SCALE_R],
                     /*tenths=*/false, text);
}

void DescribeErode(const ParaValues& values, std::u16string& text) {
    AppendComboText(values, PARA_ERODE, text);
}

void DescribeBlur(const ParaValues& values, std::u16string& text) {
    AppendLabelCombo(values, labels::kSoften, PARA_BLUR, text);
}

void DescribeGaussian(const ParaValues& values, std::u16string& text) {
    AppendAdjustLine(labels::kGaussianRadius, values[PARA_ADJUST_BLUR_RADIUS],
                     /*tenths=*/true, text);
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
    AppendItem(LabelAndValue(labels::kRadius, Counted(radius, 1)), start, text);
    AppendItem(LabelAndValue(labels::kThresholdValue, Counted(threshold, 2)), start, text);
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
    AppendAdjustLine(labels::kGaussianSharpenRadius, strength, /*tenths=*/false, text);
    text.append(LabelAndValue(labels::kKernelOrder, Counted(size, 7, 2))).append(kLineEnd);
}

void DescribeUsm(const ParaValues& values, std::u16string& text) {
    const auto [passes, amount, radius, threshold] = GroupOf(
        values, std::array{PARA_USM_TIMES, PARA_USM_AMOUNT, PARA_USM_RADIUS, PARA_USM_THRESHOLD});
    if (passes < 1)
        return;
    const std::size_t start = text.size();
    AppendItem(LabelAndValue(labels::kPasses, ListOrNumber(PARA_USM_TIMES, passes)), start, text);
    AppendItem(LabelAndValue(labels::kAmount, DecimalText(amount)), start, text);
    AppendItem(LabelAndValue(labels::kRadius, TenthsText(radius)), start, text);
    AppendItem(LabelAndValue(labels::kThresholdValue, DecimalText(threshold)), start, text);
    text += kLineEnd;
}

}  // namespace velloran
