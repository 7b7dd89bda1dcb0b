#include "cli/CompletionScripts.h"

#include <algorithm>

#include "cli/Commands.h"
#include "text/CommandLabels.h"
#include "text/Phrase.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

std::string Joined(const std::vector<std::string>& words, std::string_view between) {
    std::string text;
    for (const std::string& word : words)
        text.append(text.empty() ? "" : between).append(word);
    return text;
}

std::string LetterOf(const OptionRow& row) {
    return row.letter == 0 ? std::string() : std::string("-") + row.letter;
}

std::vector<std::string> NamesOf(const OptionRow& row) {
    std::vector<std::string> names;
    if (row.letter != 0)
        names.push_back(LetterOf(row));
    names.emplace_back(row.name);
    return names;
}

std::vector<std::string> CommandNames() {
    std::vector<std::string> names;
    for (const Command& command : Commands())
        names.emplace_back(command.name);
    return names;
}

/// Every option that has a value, each once.
std::vector<Option> OptionsWithValues() {
    std::vector<Option> found;
    for (const Command& command : Commands())
        for (const Option option : OptionsOf(command))
            if (RowOf(option).takes != Takes::kNothing &&
                std::ranges::find(found, option) == found.end())
                found.push_back(option);
    return found;
}

std::string BashValueCase(const OptionRow& row) {
    std::string text = "        " + Joined(NamesOf(row), " | ") + ")\n";
    switch (row.completes) {
        case Completes::kParameters:
            text +=
                "            COMPREPLY=($(compgen -S = \\\n"
                "                -W \"$(\"${COMP_WORDS[0]}\" params 2>/dev/null | cut -f2)\" -- "
                "\"$current\"))\n"
                "            compopt -o nospace\n";
            break;
        case Completes::kWords:
            text += "            COMPREPLY=($(compgen -W \"" + Joined(row.words(), " ") +
                    "\" -- \"$current\"))\n";
            break;
        case Completes::kFiles:
        case Completes::kFolders:
            text +=
                "            compopt -o filenames\n"
                "            COMPREPLY=($(compgen -f -- \"$current\"))\n";
            break;
        case Completes::kNothing:
            break;
    }
    return text + "            return\n            ;;\n";
}

std::string BashOptionsCase(const Command& command) {
    std::vector<std::string> names;
    for (const Option option : OptionsOf(command))
        for (const std::string& name : NamesOf(RowOf(option)))
            names.push_back(name);
    return "        " + std::string(command.name) + ") options=\"" + Joined(names, " ") + "\" ;;\n";
}

/// A text between single quotes, as the value of an option's description.
std::string ZshText(std::string_view text) {
    std::string quoted;
    for (const char c : text) {
        if (c == '\'')
            quoted += "'\\''";
        else if (c == '[' || c == ']' || c == ':' || c == '\\')
            quoted.append("\\").push_back(c);
        else
            quoted += c;
    }
    return quoted;
}

std::string ZshAction(Completes completes, std::vector<std::string> (*words)()) {
    switch (completes) {
        case Completes::kParameters:
            return "_velloran_parameters";
        case Completes::kWords:
            return "(" + Joined(words(), " ") + ")";
        case Completes::kFiles:
            return "_files";
        case Completes::kFolders:
            return "_files -/";
        case Completes::kNothing:
            break;
    }
    return " ";
}

std::string ZshOption(const OptionRow& row, Language language) {
    std::vector<std::string> shut;  // what no longer goes beside it
    if (row.takes != Takes::kTexts)
        shut = NamesOf(row);
    if (row.excludes != Option::kNone)
        for (const std::string& name : NamesOf(RowOf(row.excludes)))
            shut.push_back(name);
    std::string text = "            ";
    text += row.takes == Takes::kTexts ? "'*'" : "'(" + Joined(shut, " ") + ")'";
    text += row.letter == 0 ? std::string(row.name)
                            : "{" + LetterOf(row) + "," + std::string(row.name) + "}";
    text += "'[" + ZshText(ToUtf8(row.meaning.In(language))) + "]";
    if (row.takes != Takes::kNothing)
        text += ":" + ZshText(row.argument) + ":" + ZshAction(row.completes, row.words);
    return text + "'";
}

std::string ZshCommandCase(const Command& command, Language language) {
    std::string text = "        " + std::string(command.name) + ")\n            _arguments";
    for (const Option option : OptionsOf(command))
        text += " \\\n    " + ZshOption(RowOf(option), language);
    int position = 1;
    for (const Operand& operand : command.operands) {
        text += " \\\n                '";
        text += operand.isMany ? "*" : std::to_string(position++);
        text += operand.isOptional && !operand.isMany ? "::" : ":";
        text += ZshText(ToUtf8(operand.meaning.In(language))) + ":" +
                ZshAction(operand.completes, operand.words) + "'";
    }
    return text + "\n            ;;\n";
}

/// The two functions of one language: the commands with their meanings, and their words.
std::string ZshLanguage(Language language, const std::string& code) {
    std::string text = "_velloran_commands_" + code + "() {\n    local -a commands=(\n";
    for (const Command& command : Commands())
        text += "        '" + std::string(command.name) + ":" +
                ZshText(ToUtf8(command.summary.In(language))) + "'\n";
    text += "    )\n    _describe command commands\n}\n\n";
    text += "_velloran_words_" + code + "() {\n    case $words[1] in\n";
    for (const Command& command : Commands())
        text += ZshCommandCase(command, language);
    return text + "    esac\n}\n\n";
}

}  // namespace

std::string BashCompletion() {
    std::string text =
        "# bash completion for velloran\n\n"
        "_velloran() {\n"
        "    local current previous command word options\n"
        "    COMPREPLY=()\n"
        "    current=${COMP_WORDS[COMP_CWORD]}\n"
        "    previous=${COMP_WORDS[COMP_CWORD - 1]}\n"
        "    # \"=\" divides words here: the value of a parameter has no completion.\n"
        "    [[ $current == \"=\" || $previous == \"=\" ]] && return\n\n"
        "    for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
        "        case $word in\n"
        "            " +
        Joined(CommandNames(), " | ") +
        ")\n"
        "                command=$word\n"
        "                break\n"
        "                ;;\n"
        "        esac\n"
        "    done\n\n"
        "    case $previous in\n";
    for (const Option option : OptionsWithValues())
        text += BashValueCase(RowOf(option));
    std::vector<std::string> first = CommandNames();
    for (const Option option : GeneralOptions())
        for (const std::string& name : NamesOf(RowOf(option)))
            first.push_back(name);
    first.emplace_back(RowOf(Option::kVersion).name);
    text +=
        "    esac\n\n"
        "    if [[ -z $command ]]; then\n"
        "        COMPREPLY=($(compgen -W \"" +
        Joined(first, " ") +
        "\" -- \"$current\"))\n"
        "        return\n"
        "    fi\n"
        "    if [[ $current != -* ]]; then\n"
        "        compopt -o filenames\n"
        "        COMPREPLY=($(compgen -f -- \"$current\"))\n"
        "        return\n"
        "    fi\n\n"
        "    case $command in\n";
    for (const Command& command : Commands())
        text += BashOptionsCase(command);
    return text +
           "    esac\n"
           "    COMPREPLY=($(compgen -W \"$options\" -- \"$current\"))\n"
           "}\n\n"
           "complete -F _velloran velloran\n";
}

std::string ZshCompletion() {
    return "#compdef velloran\n\n"
           "_velloran_parameters() {\n"
           "    local -a names\n"
           "    names=(${(f)\"$(velloran params 2>/dev/null | cut -f2)\"})\n"
           "    compadd -S = -a names\n"
           "}\n\n" +
           ZshLanguage(Language::kChinese, "zh") + ZshLanguage(Language::kEnglish, "en") +
           "_velloran() {\n"
           "    local context state state_descr line language=zh\n"
           "    typeset -A opt_args\n"
           "    [[ ${VELLORAN_LANG:l} == en ]] && language=en\n"
           "    _arguments -C '--version' '--help' '1:command:->command' '*::argument:->rest'\n"
           "    case $state in\n"
           "        command) _velloran_commands_$language ;;\n"
           "        rest) _velloran_words_$language ;;\n"
           "    esac\n"
           "}\n\n"
           "_velloran \"$@\"\n";
}

}  // namespace velloran::cli
