// The words of a command line that are read by hand: NAME=VALUE, FILE#SECTION, lists of paths.

#include "cli/ParameterOptions.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "cli/Console.h"
#include "cli/OptionParser.h"
#include "codecs/Formats.h"
#include "params/ParaTable.h"
#include "text/Labels.h"

namespace {

void Require(bool holds) {
    if (!holds)
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velloran::cli;
    const std::string text(data, data + size);

    std::string problem;
    const auto setting = ParseParameterSetting(text, problem);
    Require(setting.has_value() == problem.empty());
    if (setting) {
        Require(setting->index >= 0 && setting->index < velloran::kParaCount);
        RangeWarning(setting->index, setting->value);
    }
    // Behind a good name every value is read or refused.
    problem.clear();
    Require(ParseParameterSetting("PARA_DPI=" + text, problem).has_value() == problem.empty());

    for (const SettingPlace& place : ReadingsOfSetting(text))
        Require((place.section ? place.file + "#" + *place.section : place.file) == text);
    IsSectionName(text);

    for (const bool nulSeparated : {false, true})
        for (const std::string& path : SplitPathList(text, nulSeparated))
            Require(!path.empty() && path.find('\0') == std::string::npos);
    velloran::FormatOfExtension(text);

    const std::string word = text.substr(0, text.find('\0'));
    // Whatever a name holds, the parser hands it on as it was typed.
    const Operand operands[] = {{"FILE", false, Completes{}, velloran::labels::kLoadFailed}};
    ParsedWords parsed;
    Require(word.empty() || (ParseWords({}, operands, {"--", word}, parsed).empty() &&
                             parsed.operands.front() == word));
    ParsedWords judged;
    ParseWords({}, operands, {word}, judged);

    const std::size_t columns = size % 200;
    BarText({size, size * 2, static_cast<double>(size), text}, columns);
    return 0;
}
