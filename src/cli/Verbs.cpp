#include "cli/Verbs.h"

#include <algorithm>
#include <string>
#include <vector>

#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "cli/NearestWord.h"
#include "text/CommandLabels.h"
#include "text/Phrase.h"

namespace velloran::cli {

namespace {

/// What is wrong with the words of a verb; empty where nothing is.
std::string FaultOf(const Verb& verb, const ParsedWords& words) {
    const std::size_t given = words.operands.size() - 1;
    if (given < verb.fewest)
        return Phrase(labels::kVerbWants, {verb.name, verb.operands});
    if (given > verb.most)
        return Phrase(labels::kSurplusOperand, {words.operands[verb.most + 1]});
    for (const auto& [option, values] : words.options) {
        const bool isGeneral =
            std::ranges::find(GeneralOptions(), option) != GeneralOptions().end();
        if (!isGeneral && std::ranges::find(verb.options, option) == verb.options.end())
            return Phrase(labels::kNotWithVerb, {RowOf(option).name, verb.name});
    }
    return {};
}

}  // namespace

int RunVerb(std::string_view command, std::span<const Verb> verbs, const ParsedWords& words) {
    const std::string& name = words.operands.front();
    const auto verb = std::ranges::find(verbs, name, &Verb::name);
    std::string fault;
    if (verb == verbs.end()) {
        std::vector<std::string> names;
        for (const Verb& each : verbs)
            names.emplace_back(each.name);
        fault = Phrase(labels::kUnknownVerb, {command, name}) + Suggestion(name, names);
    } else {
        fault = FaultOf(*verb, words);
    }
    if (fault.empty())
        return verb->run(words);
    PrintError(fault);
    PrintNote(Phrase(labels::kTryHelp, {"velloran " + std::string(command)}));
    return kWrongUsage;
}

}  // namespace velloran::cli
