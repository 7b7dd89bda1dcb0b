#include "cli/OptionParser.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>

#include "cli/Arguments.h"
#include "cli/ByteSize.h"
#include "cli/NearestWord.h"
#include "codecs/Formats.h"
#include "text/CommandLabels.h"
#include "text/Phrase.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

using Words = std::vector<std::string>;

std::string NamesForParser(const OptionRow& row) {
    std::string names(row.name);
    if (!row.otherName.empty())
        names.append(",").append(row.otherName);
    if (row.letter != 0)
        names += std::string(",-") + row.letter;
    return names;
}

/// The parser of the library with the rows' options, whose values come into `values`.
void AddOptions(std::span<const Option> options, CLI::App& parser,
                std::map<Option, Words>& values) {
    parser.set_help_flag();
    for (const Option option : options) {
        const OptionRow& row = RowOf(option);
        if (row.takes == Takes::kNothing)
            parser.add_flag(NamesForParser(row))
                ->disable_flag_override()
                ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
        else
            parser.add_option(NamesForParser(row), values[option])->allow_extra_args(false);
    }
}

Words LongNames(std::span<const Option> options) {
    Words names;
    for (const Option option : options)
        if (RowOf(option).group != OptionGroup::kHidden)
            names.emplace_back(RowOf(option).name);
    return names;
}

std::string WithoutValue(const std::string& word) {
    return word.substr(0, word.starts_with("--") ? word.find('=') : 2);
}

std::string UnknownOption(const std::string& word, std::span<const Option> options) {
    const std::string name = WithoutValue(word);
    return Phrase(labels::kUnknownOption, {name}) + Suggestion(name, LongNames(options));
}

const OptionRow* FindRow(const std::string& name, std::span<const Option> options) {
    for (const Option option : options) {
        const OptionRow& row = RowOf(option);
        if (name == row.name || (!row.otherName.empty() && name == row.otherName) ||
            (row.letter != 0 && name == std::string("-") + row.letter))
            return &row;
    }
    return nullptr;
}

/// Why the library refused the words as a whole: a flag has a value behind it, or the last option
/// has none.
std::string CountFault(std::span<const Option> options, const Words& words) {
    for (const std::string& word : words) {
        if (word == "--")
            break;
        const OptionRow* row = FindRow(WithoutValue(word), options);
        if (row != nullptr && row->takes == Takes::kNothing && word.find('=') != word.npos)
            return Phrase(labels::kTakesNoValue, {row->name});
    }
    const std::string& last = words.back();
    const bool isLetters = !last.starts_with("--") && last.size() > 1;  // the last wants a value
    const OptionRow* row =
        FindRow(isLetters ? std::string("-") + last.back() : WithoutValue(last), options);
    return row == nullptr ? Phrase(labels::kUnknownOption, {last})
                          : Phrase(labels::kMissingValue, {row->name, row->argument});
}

std::string Joined(const Words& words) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : ", ") + word;
    return text;
}

/// What is wrong with a value.
std::string ValueFault(const OptionRow& row, const std::string& value) {
    if (row.takes == Takes::kNumber) {
        const std::optional<std::int32_t> number = ParseInt32(value);
        if (!number || *number < row.min || *number > row.max)
            return Phrase(labels::kNotWithin,
                          {row.name, value, std::to_string(row.min), std::to_string(row.max)});
    }
    if (row.takes == Takes::kSize && !ParseByteSize(value))
        return Phrase(labels::kNotASize, {row.name, value});
    if (row.takes == Takes::kWord) {
        const Words words = row.words();
        const bool known =
            std::ranges::any_of(words,
                                [&](const std::string& word) {
                                    return EqualIgnoringCase(std::string_view(word),
                                                             std::string_view(value));
                                }) ||
            (row.id == Option::kExt && FormatOfExtension(value));
        if (!known)
            return Phrase(labels::kNoneOfWords, {row.name, value, Joined(words)}) +
                   Suggestion(value, words);
    }
    return {};
}

std::string JudgeOptions(const ParsedWords& parsed) {
    for (const auto& [option, values] : parsed.options) {
        const OptionRow& row = RowOf(option);
        for (const std::string& value : values)
            if (std::string fault = ValueFault(row, value); !fault.empty())
                return fault;
        if (row.needs != Option::kNone && !parsed.Has(row.needs))
            return Phrase(labels::kNeedsOption, {row.name, RowOf(row.needs).name});
        if (row.excludes != Option::kNone && parsed.Has(row.excludes))
            return Phrase(labels::kExcludesOption, {row.name, RowOf(row.excludes).name});
    }
    return {};
}

std::string JudgeOperands(std::span<const Operand> operands, const ParsedWords& parsed) {
    const std::size_t given = parsed.operands.size();
    if (given < operands.size() && !operands[given].isOptional && !parsed.Has(Option::kHelp))
        return Phrase(labels::kMissingOperand, {operands[given].name});
    if (given > operands.size() && (operands.empty() || !operands.back().isMany))
        return Phrase(labels::kSurplusOperand, {parsed.operands[operands.size()]});
    return {};
}

/// Runs the library over the words. What it does not know comes into `rest`.
std::string Parse(CLI::App& parser, std::span<const Option> options, const Words& words,
                  std::map<Option, Words>& values, ParsedWords& parsed, Words& rest) {
    Words reversed = GuardWords(words);
    std::reverse(reversed.begin(), reversed.end());  // as the library takes them
    try {
        parser.parse(reversed);
    } catch (const CLI::ParseError&) {
        return CountFault(options, words);
    }
    for (const Option option : options) {
        if (parser.count(std::string(RowOf(option).name)) > 0)
            parsed.options[option] = Unguard(values[option]);
    }
    rest = Unguard(parser.remaining());
    return {};
}

}  // namespace

std::optional<std::string> ParsedWords::Text(Option option) const {
    const auto found = options.find(option);
    return found == options.end() || found->second.empty() ? std::nullopt
                                                           : std::optional(found->second.back());
}

std::vector<std::string> ParsedWords::Texts(Option option) const {
    const auto found = options.find(option);
    return found == options.end() ? Words() : found->second;
}

std::optional<int> ParsedWords::Number(Option option) const {
    const std::optional<std::string> text = Text(option);
    return text ? ParseInt32(*text) : std::nullopt;
}

std::optional<std::int64_t> ParsedWords::Bytes(Option option) const {
    const std::optional<std::string> text = Text(option);
    return text ? ParseByteSize(*text) : std::nullopt;
}

std::string ParseWords(std::span<const Option> options, std::span<const Operand> operands,
                       const std::vector<std::string>& words, ParsedWords& parsed) {
    CLI::App parser;
    std::map<Option, Words> values;
    AddOptions(options, parser, values);
    Words given, rest;
    parser.add_option("OPERANDS", given);
    parser.allow_extras();
    std::string problem = Parse(parser, options, words, values, parsed, rest);
    if (!problem.empty())
        return problem;
    parsed.operands = Unguard(std::move(given));
    std::erase(rest, "--");  // the library counts the end of the options among what it left
    if (!rest.empty())
        return UnknownOption(rest.front(), options);
    if (problem = JudgeOptions(parsed); !problem.empty())
        return problem;
    return JudgeOperands(operands, parsed);
}

std::string ParseLeadingOptions(std::span<const Option> options,
                                const std::vector<std::string>& words, ParsedWords& parsed) {
    CLI::App parser;
    std::map<Option, Words> values;
    AddOptions(options, parser, values);
    parser.prefix_command();
    std::string problem = Parse(parser, options, words, values, parsed, parsed.operands);
    if (!problem.empty())
        return problem;
    if (!parsed.operands.empty() && parsed.operands.front() == "--")
        parsed.operands.erase(parsed.operands.begin());
    if (!parsed.operands.empty() && parsed.operands.front().size() > 1 &&
        parsed.operands.front().starts_with('-'))
        return UnknownOption(parsed.operands.front(), options);
    return JudgeOptions(parsed);
}

std::optional<Language> FindLanguage(const std::vector<std::string>& words) {
    constexpr std::string_view kName = "--lang";
    const char* variable = std::getenv("VELLORAN_LANG");
    std::optional<Language> language =
        variable == nullptr ? std::nullopt : LanguageByCode(variable);
    for (std::size_t i = 0; i < words.size() && words[i] != "--"; ++i) {
        std::optional<Language> asked;
        if (words[i] == kName && i + 1 < words.size())
            asked = LanguageByCode(words[i + 1]);
        else if (words[i].starts_with(kName) && words[i].size() > kName.size() &&
                 words[i][kName.size()] == '=')
            asked = LanguageByCode(std::string_view(words[i]).substr(kName.size() + 1));
        if (asked)
            language = asked;
    }
    return language;
}

}  // namespace velloran::cli
