#include <array>

#include "pipeline/Describe.h"
#include "pipeline/DescribeText.h"
#include "text/Labels.h"
#include "text/NumberText.h"

namespace velloran {

namespace {

/// "(red, green, blue)"
std::u16string ColorText(std::int32_t color) {
    std::u16string text = u"(";
    for (int shift = 0; shift < 24; shift += 8) {
        AppendItem(DecimalText((color >> shift) & 0xFF), 1, text);
    }
    return text + u")";
}

void AppendManualLevels(const ParaValues& values, std::u16string& text) {
    const auto [shadow, light] = GroupOf(values, std::array{PARA_LEVELS_SHADOW, PARA_LEVELS_LIGHT});
    if (shadow == ParaRowOf(PARA_LEVELS_SHADOW).defaultValue &&
        light == ParaRowOf(PARA_LEVELS_LIGHT).defaultValue)
        return;
    text += LabelAndValue(labels::kLevels, HexText(shadow) + u", " + HexText(light));
    text += kLineEnd;
}

void AppendHighlight(const ParaValues& values, std::u16string& text) {
    const auto [highlight, threshold] = GroupOf(values, std::array{PARA_HIGHLIGHT, PARA_THRESHOLD});
    if (highlight == 100)
        return;
    text += LabelAndValue(CParaBlock::GetParaLabel(ParaGroup::kHighlight),
                          DecimalText(highlight) + u", ");
    text.append(LabelEquals(labels::kHighlightFrom, DecimalText(threshold))).append(kLineEnd);
}

void AppendCurveTuning(const ParaValues& values, std::u16string& text) {
    const auto [div, offset] = GroupOf(values, std::array{PARA_CURVE_DIV, PARA_CURVE_OFFSET});
    // The stage does nothing at these two, whatever the offset.
    if (div == 0 || div == 255)
        return;
    text += LabelAndValue(labels::kCurveTuning,
                          LabelEquals(labels::kCurveDivisor, DecimalText(div) + u", "));
    text.append(LabelEquals(labels::kCurveOffset, DecimalText(offset))).append(kLineEnd);
}

void AppendCurve(const ParaValues& values, std::u16string& text) {
    const auto [x1, y1, x2, y2] =
        GroupOf(values, std::array{PARA_CURVE, PARA_CURVE_1, PARA_CURVE_2, PARA_CURVE_3});
    const bool unset = x2 == 0 && y2 == 0;
    const bool straight = x2 == 255 && y2 == 255;
    if (x1 == 0 && y1 == 0 && (unset || straight))
        return;
    text += LabelAndValue(CParaBlock::GetParaLabel(ParaGroup::kCurve),
                          u"X1=" + DecimalText(x1) + u", Y1=" + DecimalText(y1) + u", X2=" +
                              DecimalText(x2) + u", Y2=" + DecimalText(y2));
    text += kLineEnd;
}

}  // namespace

void DescribeReplaceColor(const ParaValues& values, std::u16string& text) {
    const auto [type, from, to, threshold] =
        GroupOf(values, std::array{PARA_REPLACE_COLOR_TYPE, PARA_REPLACE_COLOR_FROM,
                                   PARA_REPLACE_COLOR_TO, PARA_REPLACE_COLOR_THRESHOLD});
    if (type < 1)
        return;
    text += LabelAndValue(
        labels::kReplaceColor,
        LabelAndValue(labels::kReplaceCondition, ListOrNumber(PARA_REPLACE_COLOR_TYPE, type)));
    text.append(u", ").append(
        LabelAndValue(labels::kThresholdValue, ShownText(PARA_REPLACE_COLOR_THRESHOLD, threshold)));
    text.append(u", ").append(ColorText(from)).append(u" -> ").append(ColorText(to));
    text += kLineEnd;
}

void DescribeSwapChannel(const ParaValues& values, std::u16string& text) {
    AppendLabelCombo(values, labels::kSwapChannel, PARA_SWAP_CHANNEL, text);
}

void DescribeNegate(const ParaValues& values, std::u16string& text) {
    if (values[PARA_NEGATE] != 0)
        text.append(labels::kNegate).append(kLineEnd);
}

void DescribeCombineChannel(const ParaValues& values, std::u16string& text) {
    AppendLabelCombo(values, labels::kCombineChannel, PARA_COMBINE_CHANNEL, text);
}

void DescribeIllumination(const ParaValues& values, std::u16string& text) {
    AppendComboText(values, PARA_LUM_CORRECT, text);
}

void DescribeUnshadow(const ParaValues& values, std::u16string& text) {
    const std::int64_t strength = values[PARA_ADJUST_UNSHADOW];
    if (strength == 0)
        return;
    text += LabelAndValue(labels::kUnshadow, DecimalText(strength < 0 ? -strength : strength));
    if (strength < 0)
        text.append(u", ").append(labels::kRedSeal);
    text += kLineEnd;
}

void DescribeWhiteBalance(const ParaValues& values, std::u16string& text) {
    AppendLabelCombo(values, labels::kWhiteBalance, PARA_WHITE_BALANCE, text);
}

void DescribeLevelsStep(const ParaValues& values, std::u16string& text) {
    if (values[PARA_AUTO_LEVELS] != 0)
        AppendAutoLevels(values, /*post=*/false, text);
    else
        AppendManualLevels(values, text);
}

void DescribeVibrance(const ParaValues& values, std::u16string& text) {
    AppendAdjustLine(values, labels::kVibrance, PARA_ADJUST_VIBRANCE, text);
}

void DescribePixelMapping(const ParaValues& values, std::u16string& text) {
    AppendHighlight(values, text);
    AppendPercentLine(values, ParaGroup::kBrightness, PARA_BRIGHTNESS, text);
    AppendCurveTuning(values, text);
    AppendPercentLine(values, ParaGroup::kContrast, PARA_CONTRAST, text);
    AppendCurve(values, text);
    AppendPercentLine(values, ParaGroup::kGamma, PARA_GAMMA, text);
}

void DescribeLight(const ParaValues& values, std::u16string& text) {
    const auto [low, high] = GroupOf(values, std::array{PARA_LIGHT_LOW, PARA_LIGHT_HIGH});
    if (low == 0 && high == 0)
        return;
    text +=
        LabelAndValue(labels::kLight, LabelEquals(labels::kLightShadow, DecimalText(low) + u", "));
    text.append(LabelEquals(labels::kLightHighlight, DecimalText(high))).append(kLineEnd);
}

void DescribeAutoLevelsPost(const ParaValues& values, std::u16string& text) {
    AppendAutoLevels(values, /*post=*/true, text);
}

void DescribeEqualize(const ParaValues& values, std::u16string& text) {
    if (values[PARA_HIST_EQUALIZE] != 0)
        text.append(labels::kEqualize).append(kLineEnd);
}

}  // namespace velloran
