#include "cli/ParameterOptions.h"

#include <algorithm>

#include "cli/NearestWord.h"
#include "core/Pipeline.h"
#include "params/ParaTable.h"
#include "text/CommandLabels.h"
#include "text/Phrase.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

constexpr int kStopCodes[] = {
    kStopNothing, kStopBeforeLevels,   kStopContentBox,      kStopPageCorrectionFast,
    kStopDeskew,  kStopBeforeVibrance, kStopSplitDrawn,      kStopWhole,
    kStopSplit,   kStopPageCorrection, kStopContentBoxLayout};

constexpr Language kLanguages[] = {Language::kChinese, Language::kEnglish};

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

std::vector<std::string> ParameterNames() {
    std::vector<std::string> names;
    for (int i = 0; i < kParaCount; ++i)
        names.emplace_back(ParaRowOf(i).name);
    return names;
}

/// The position of a list text, in whatever language.
std::optional<std::int32_t> FindListText(const ParaRow& row, std::string_view text) {
    for (std::size_t i = 0; i < row.list.size(); ++i)
        for (const Language language : kLanguages)
            if (ToUtf8(row.list[i].In(language)) == text)
                return static_cast<std::int32_t>(i);
    return std::nullopt;
}

std::string NoValue(const ParaRow& row, std::string_view value) {
    if (row.list.empty())
        return Phrase(labels::kNoParameterValue, {row.name, value});
    std::vector<std::string> texts;
    for (const Label& text : row.list)
        for (const Language language : kLanguages)
            texts.push_back(ToUtf8(text.In(language)));
    return Phrase(labels::kNoListValue, {row.name, value}) + Suggestion(value, texts);
}

}  // namespace

std::optional<ParameterSetting> ParseParameterSetting(std::string_view text, std::string& problem) {
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos) {
        problem = Phrase(labels::kNotNameAndValue, {text});
        return std::nullopt;
    }
    const std::string_view name = text.substr(0, equals);
    const std::string_view value = text.substr(equals + 1);
    const std::optional<int> index = FindPara(name);
    if (!index) {
        problem = Phrase(labels::kUnknownParameter, {name}) + Suggestion(name, ParameterNames());
        return std::nullopt;
    }
    // A text that is a number is the number, also in a list of numbers.
    std::optional<std::int32_t> number = ParseInt32(value);
    if (!number)
        number = FindListText(ParaRowOf(*index), value);
    if (!number) {
        problem = NoValue(ParaRowOf(*index), value);
        return std::nullopt;
    }
    return ParameterSetting{*index, *number};
}

std::string RangeWarning(int index, std::int32_t value) {
    const ParaRow& row = ParaRowOf(index);
    const bool low = row.min && value < *row.min;
    const bool high = row.max && value > *row.max;
    if (!low && !high)
        return {};
    return Phrase(labels::kOutsideRange,
                  {row.name, std::to_string(value), row.min ? std::to_string(*row.min) : "",
                   row.max ? std::to_string(*row.max) : ""});
}

std::string UnknownKeyWarning(std::string_view key) {
    return Phrase(labels::kUnknownKey, {key}) + Suggestion(key, ParameterNames());
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

std::span<const int> StopCodeNumbers() {
    return kStopCodes;
}

}  // namespace velloran::cli
