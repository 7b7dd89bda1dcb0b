#include "cli/ByteSize.h"

#include <charconv>
#include <string>

#include "text/Text.h"

namespace velloran::cli {

std::optional<std::int64_t> ParseByteSize(std::string_view text) {
    constexpr double kMost = 4611686018427387904.0;
    double number = 0;
    const auto [end, failure] =
        std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    if (failure != std::errc{})
        return std::nullopt;
    std::string unit = LowerCase(text.substr(static_cast<std::size_t>(end - text.data())));
    for (const std::string_view ending : {"ib", "b"})
        if (unit.ends_with(ending) && (ending == "b" || unit.size() > ending.size())) {
            unit.resize(unit.size() - ending.size());
            break;
        }
    constexpr std::string_view kUnits = "kmgt";
    if (unit.size() > 1 || (unit.size() == 1 && kUnits.find(unit[0]) == std::string_view::npos))
        return std::nullopt;
    for (std::size_t i = 0; !unit.empty() && i <= kUnits.find(unit[0]); ++i)
        number *= 1024;
    if (!(number >= 1 && number <= kMost))
        return std::nullopt;
    return static_cast<std::int64_t>(number);
}

}  // namespace velloran::cli
