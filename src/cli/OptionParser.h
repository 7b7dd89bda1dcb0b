#pragma once

// From the words of the shell to values: the one place that knows the parsing library. What is
// wrong with the words is told in the language in use, with the nearest right word.

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "cli/Options.h"

namespace velloran::cli {

/// A word that is no option; `isMany` takes all that come.
struct Operand {
    std::string_view name;
    bool isMany;
    Completes completes;
    Label meaning;
    bool isOptional = false;                        // may be missing; such ones stand last
    std::vector<std::string> (*words)() = nullptr;  // that it may be, for completions
};

/// What the words said. Options that were not given are absent.
struct ParsedWords {
    std::map<Option, std::vector<std::string>> options;  // values in order; flags have none
    std::vector<std::string> operands;

    bool Has(Option option) const { return options.contains(option); }
    /// The last value.
    std::optional<std::string> Text(Option option) const;
    std::vector<std::string> Texts(Option option) const;
    std::optional<int> Number(Option option) const;
    std::optional<std::int64_t> Bytes(Option option) const;
};

/// Reads words by the tables. Returns what is wrong with them; empty is success. With --help
/// among them operands may be missing.
std::string ParseWords(std::span<const Option> options, std::span<const Operand> operands,
                       const std::vector<std::string>& words, ParsedWords& parsed);

/// Reads the options up to the first other word; that and all behind it become the operands.
std::string ParseLeadingOptions(std::span<const Option> options,
                                const std::vector<std::string>& words, ParsedWords& parsed);

/// The language that --lang asks for among the words, else that of the environment's
/// VELLORAN_LANG; nothing where neither is a language. Asked before the words are judged, as a
/// judgement is told in it.
std::optional<Language> FindLanguage(const std::vector<std::string>& words);

}  // namespace velloran::cli
