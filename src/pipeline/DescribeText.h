#pragma once

// What the descriptions of the steps are made of. A line is a label and its value; a label that
// ends in a colon gets one blank behind it, and every line ends in CR LF.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "params/ParaBlock.h"

namespace velloran {

inline constexpr std::u16string_view kLineEnd = u"\r\n";

/// Several values at once, in the order of the indexes.
template <std::size_t N>
std::array<std::int32_t, N> GroupOf(const ParaValues& values,
                                    const std::array<ParaIndex, N>& indexes) {
    std::array<std::int32_t, N> group{};
    for (std::size_t i = 0; i < N; ++i)
        group[i] = values[static_cast<std::size_t>(indexes[i])];
    return group;
}

/// The list text of a value, or the number where the list has no such position.
std::u16string ListOrNumber(int index, std::int32_t value);

/// The label without the colon and the blanks at its end.
std::u16string_view WithoutColon(std::u16string_view label);

/// Adds an item to a line that starts at `lineStart` of `text`, behind ", " unless it is the first.
void AppendItem(std::u16string_view item, std::size_t lineStart, std::u16string& text);

/// "label value": the label is one with a colon.
std::u16string LabelAndValue(std::u16string_view label, std::u16string_view value);

/// "label=value": the colon of the label is cut away.
std::u16string LabelEquals(std::u16string_view label, std::u16string_view value);

/// The list text of a parameter; nothing for a value below 1.
void AppendComboText(const ParaValues& values, int index, std::u16string& text);

/// Label, blank, list text; nothing for a value below 1.
void AppendLabelCombo(const ParaValues& values, std::u16string_view label, int index,
                      std::u16string& text);

/// Group label, ": ", value; nothing for 100.
void AppendPercentLine(const ParaValues& values, ParaGroup group, int index, std::u16string& text);

/// Label, blank, value as it is shown; nothing for 0.
void AppendAdjustLine(const ParaValues& values, std::u16string_view label, ParaIndex index,
                      std::u16string& text);

/// The label of the later run when `post`, and the list text; nothing for a value below 1.
void AppendAutoLevels(const ParaValues& values, bool post, std::u16string& text);

}  // namespace velloran
