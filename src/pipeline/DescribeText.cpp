#include "pipeline/DescribeText.h"

#include "text/Labels.h"
#include "text/NumberText.h"

namespace velloran {

std::u16string ListOrNumber(int index, std::int32_t value) {
    const std::u16string_view text = ParaListText(index, value);
    return text.empty() ? DecimalText(value) : std::u16string(text);
}

std::u16string_view WithoutColon(std::u16string_view label) {
    while (label.ends_with(u' '))
        label.remove_suffix(1);
    if (label.ends_with(u':'))
        label.remove_suffix(1);
    return label;
}

void AppendItem(std::u16string_view item, std::size_t lineStart, std::u16string& text) {
    if (text.size() > lineStart)
        text += u", ";
    text += item;
}

std::u16string LabelAndValue(std::u16string_view label, std::u16string_view value) {
    return std::u16string(WithoutColon(label)).append(u": ").append(value);
}

std::u16string LabelEquals(std::u16string_view label, std::u16string_view value) {
    return std::u16string(WithoutColon(label)).append(u"=").append(value);
}

void AppendComboText(const ParaValues& values, int index, std::u16string& text) {
    const std::int32_t value = values[index];
    if (value >= 1)
        text.append(ListOrNumber(index, value)).append(kLineEnd);
}

void AppendLabelCombo(const ParaValues& values, std::u16string_view label, int index,
                      std::u16string& text) {
    const std::int32_t value = values[index];
    if (value >= 1)
        text.append(LabelAndValue(label, ListOrNumber(index, value))).append(kLineEnd);
}

void AppendPercentLine(const ParaValues& values, ParaGroup group, int index, std::u16string& text) {
    const std::int32_t value = values[index];
    if (value != 100)
        text.append(LabelAndValue(CParaBlock::GetParaLabel(group), DecimalText(value)))
            .append(kLineEnd);
}

void AppendAdjustLine(const ParaValues& values, std::u16string_view label, ParaIndex index,
                      std::u16string& text) {
    if (values[index] != 0)
        text.append(LabelAndValue(label, ShownText(index, values[index]))).append(kLineEnd);
}

void AppendAutoLevels(const ParaValues& values, bool post, std::u16string& text) {
    if (post)
        AppendLabelCombo(values, labels::kPostProcessing, PARA_AUTO_LEVELS_POST, text);
    else
        AppendComboText(values, PARA_AUTO_LEVELS, text);
}

}  // namespace velloran
