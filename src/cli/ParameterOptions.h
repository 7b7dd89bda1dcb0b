#pragma once

// What the words of a command line say about parameters and settings. Nothing here touches a file.

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velloran::cli {

/// "PARA_CONTRAST=120".
struct ParameterSetting {
    int index = 0;
    std::int32_t value = 0;
};

/// Reads NAME=VALUE: the name exactly as in the parameter table, the value decimal or 0x
/// hexadecimal, signed, or a text of the parameter's list in any language. Otherwise nothing, and
/// `problem` says what is wrong, with the nearest right name or text.
std::optional<ParameterSetting> ParseParameterSetting(std::string_view text, std::string& problem);

/// A warning for a value outside the table's range; empty for one inside, and for a parameter
/// that has none.
std::string RangeWarning(int index, std::int32_t value);

/// What to say of a key in a settings file that is no parameter.
std::string UnknownKeyWarning(std::string_view key);

/// One way to read FILE#SECTION.
struct SettingPlace {
    std::string file;
    std::optional<std::string> section;  // none when no "#" divides
    bool operator==(const SettingPlace&) const = default;
};

/// All ways to read FILE[#SECTION], as either part may hold a "#": the whole as a file first, then
/// divided at the last "#", and so on to the first.
std::vector<SettingPlace> ReadingsOfSetting(std::string_view text);

/// Whether a text can head a section of a settings file and be found again.
bool IsSectionName(std::string_view name);

/// The paths of a list: one a line, or NUL-separated. Empty ones are left out; lines may end in CR
/// LF, and the first may begin with a UTF-8 mark.
std::vector<std::string> SplitPathList(std::string_view bytes, bool nulSeparated);

/// The codes at which an enhancement can end.
std::span<const int> StopCodeNumbers();

}  // namespace velloran::cli
