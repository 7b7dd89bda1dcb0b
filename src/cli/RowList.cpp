#include "cli/RowList.h"

#include "text/Text.h"

namespace velloran::cli {

namespace {

/// A row from 1 to `count`.
std::optional<std::size_t> ParseRow(std::string_view text, std::size_t count) {
    for (const char c : text)
        if (c < '0' || c > '9')
            return std::nullopt;
    const std::optional<std::int32_t> number = ParseInt32(text);
    if (!number || *number < 1 || static_cast<std::size_t>(*number) > count)
        return std::nullopt;
    return static_cast<std::size_t>(*number);
}

}  // namespace

std::optional<std::vector<std::size_t>> ParseRowList(std::string_view text, std::size_t count) {
    std::vector<bool> named(count);
    if (text == "all")
        named.assign(count, true);
    else if (text.empty())
        return std::nullopt;
    while (text != "all") {
        const std::size_t comma = text.find(',');
        const std::string_view part = text.substr(0, comma);
        const std::size_t dash = part.find('-');
        const auto first = ParseRow(part.substr(0, dash), count);
        auto last = first;
        if (dash != std::string_view::npos)
            last = dash + 1 == part.size() ? std::optional(count)
                                           : ParseRow(part.substr(dash + 1), count);
        if (!first || !last || *last < *first)
            return std::nullopt;
        for (std::size_t row = *first; row <= *last; ++row)
            named[row - 1] = true;
        if (comma == std::string_view::npos)
            break;
        text.remove_prefix(comma + 1);
    }
    std::vector<std::size_t> rows;
    for (std::size_t i = 0; i < count; ++i)
        if (named[i])
            rows.push_back(i);
    return rows;
}

}  // namespace velloran::cli
