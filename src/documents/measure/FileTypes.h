#pragma once

// The kinds of files that a folder tool can be asked for, with their filters.

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "text/Label.h"

namespace velloran {

struct ToolFileType {
    std::string_view word;  // of the command: "jpg"
    Label label;
    std::u16string_view filter;
};

/// Of the statistics, and of the tool that sets the resolution, in the order of the check boxes.
std::span<const ToolFileType> StatsFileTypes();
std::span<const ToolFileType> DpiFileTypes();

/// The filter of the words of a list like "jpg,png"; nothing where a word is none, which `wrong`
/// then tells. An empty list is an empty filter.
std::optional<std::u16string> FilterOfWords(std::span<const ToolFileType> types,
                                            std::string_view list, std::string& wrong);
/// The filter with all of them.
std::u16string FilterOfAll(std::span<const ToolFileType> types);

}  // namespace velloran
