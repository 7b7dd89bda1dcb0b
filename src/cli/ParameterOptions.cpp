#include "cli/ParameterOptions.h"

#include <fmt/format.h>

#include <array>

#include "params/ParaTable.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

constexpr std::array<std::string_view, 8> kExtensions = {"auto", "jpg", "bmp", "png",
                                                         "tif",  "jp2", "gif", "webp"};

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

}  // namespace

std::optional<ParameterSetting> ParseParameterSetting(std::string_view text, std::string& problem) {
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos) {
        problem = fmt::format("\"{}\" is not NAME=VALUE", text);
        return std::nullopt;
    }
    const std::string_view name = text.substr(0, equals);
    const std::optional<int> index = FindPara(name);
    if (!index) {
        problem = fmt::format("there is no parameter \"{}\"", name);
        return std::nullopt;
    }
    const std::optional<std::int32_t> value = ParseInt32(text.substr(equals + 1));
    if (!value) {
        problem =
            fmt::format("\"{}\" of {} is not a number of 32 bits", text.substr(equals + 1), name);
        return std::nullopt;
    }
    return ParameterSetting{*index, *value};
}

std::string RangeWarning(int index, std::int32_t value) {
    const ParaRow& row = ParaRowOf(index);
    const bool low = row.min && value < *row.min;
    const bool high = row.max && value > *row.max;
    if (!low && !high)
        return {};
    return fmt::format("{}={} is outside its range {}..{}", row.name, value,
                       row.min ? std::to_string(*row.min) : "",
                       row.max ? std::to_string(*row.max) : "");
}

std::vector<SettingPlace> ReadingsOfSetting(std::string_view text) {
    std::vector<SettingPlace> readings = {{std::string(text), std::nullopt}};
    for (std::size_t at = text.rfind('#'); at != std::string_view::npos && at > 0;
         at = text.rfind('#', at - 1))
        readings.push_back({std::string(text.substr(0, at)), std::string(text.substr(at + 1))});
    return readings;
}

bool IsSectionName(std::string_view name) {
    return !name.empty() && !IsBlank(name.front()) && !IsBlank(name.back()) &&
           name.find_first_of(std::string_view("\r\n]\0", 4)) == std::string_view::npos;
}

std::vector<std::string> SplitPathList(std::string_view bytes, bool nulSeparated) {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    if (!nulSeparated && bytes.starts_with(kMark))
        bytes.remove_prefix(kMark.size());
    std::vector<std::string> paths;
    while (!bytes.empty()) {
        const std::size_t end = bytes.find(nulSeparated ? '\0' : '\n');
        std::string_view path = bytes.substr(0, end);
        bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
        if (!nulSeparated && path.ends_with('\r'))
            path.remove_suffix(1);
        // A NUL inside a line cannot be part of a path.
        path = path.substr(0, path.find('\0'));
        if (!path.empty())
            paths.emplace_back(path);
    }
    return paths;
}

std::optional<int> ExtensionPosition(std::string_view text) {
    for (std::size_t i = 0; i < kExtensions.size(); ++i)
        if (EqualIgnoringCase(text, kExtensions[i]))
            return static_cast<int>(i);
    return std::nullopt;
}

}  // namespace velloran::cli
