#include "cli/Usage.h"

#include <algorithm>

#include "cli/TextWidth.h"
#include "codecs/LibraryVersions.h"
#include "core/ProcessorForm.h"
#include "text/CommandLabels.h"
#include "text/Phrase.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

constexpr std::size_t kColumns = 80, kIndent = 2, kMeaningAt = 28;

/// A word and its meaning, which begins in a column of its own.
void AddRow(const std::string& word, const Label& meaning, std::string& text) {
    std::string line = std::string(kIndent, ' ') + word;
    std::size_t at = kIndent + WidthOf(ToUtf16(word));
    if (at + 2 > kMeaningAt) {
        text += line + "\n";
        line.clear();
        at = 0;
    }
    for (const std::u16string& part : Wrapped(meaning.Text(), kColumns - kMeaningAt)) {
        text += line + std::string(kMeaningAt - at, ' ') + ToUtf8(part) + "\n";
        line.clear();
        at = 0;
    }
}

void AddParagraph(const Label& label, std::string& text) {
    for (const std::u16string& line : Wrapped(label.Text(), kColumns))
        text += ToUtf8(line) + "\n";
}

void AddHeading(const Label& label, std::string& text) {
    text += "\n" + Phrase(label) + "\n";
}

/// The options of one group under its heading; nothing where there are none.
void AddGroup(const Label& heading, OptionGroup group, const std::vector<Option>& options,
              std::string& text) {
    bool isFirst = true;
    for (const Option option : options) {
        const OptionRow& row = RowOf(option);
        if (row.group != group)
            continue;
        if (isFirst)
            AddHeading(heading, text);
        isFirst = false;
        AddRow(OptionHead(row), row.meaning, text);
    }
}

}  // namespace

std::string SynopsisOf(const Command& command) {
    std::string text =
        "velloran " + std::string(command.name) + " " + Phrase(labels::kHelpOptionWord);
    for (const Operand& operand : command.operands) {
        text.append(operand.isOptional ? " [" : " ").append(operand.name);
        text.append(operand.isMany ? "..." : "").append(operand.isOptional ? "]" : "");
    }
    return text;
}

std::string ProgramHelp() {
    std::string text;
    AddParagraph(labels::kProgramSummary, text);
    AddHeading(labels::kHelpUsage, text);
    text += "  velloran " + Phrase(labels::kHelpCommandWord) + " ...\n";
    AddHeading(labels::kHelpCommands, text);
    for (const Command& command : Commands())
        AddRow(std::string(command.name), command.summary, text);
    std::vector<Option> options(GeneralOptions().begin(), GeneralOptions().end());
    options.insert(options.end(), ProgramOptions().begin(), ProgramOptions().end());
    AddGroup(labels::kHelpOptions, OptionGroup::kGeneral, options, text);
    text += "\n" + Phrase(labels::kHelpOfCommand, {"velloran"}) + "\n";
    return text;
}

std::string CommandHelp(const Command& command) {
    std::string text;
    AddParagraph(command.details, text);
    AddHeading(labels::kHelpUsage, text);
    text += "  " + SynopsisOf(command) + "\n";
    if (!command.operands.empty())
        AddHeading(labels::kHelpOperands, text);
    for (const Operand& operand : command.operands)
        AddRow(std::string(operand.name), operand.meaning, text);
    const std::vector<Option> options = OptionsOf(command);
    AddGroup(labels::kHelpOptions, OptionGroup::kOwn, options, text);
    AddGroup(labels::kHelpParameters, OptionGroup::kParameters, options, text);
    AddGroup(labels::kHelpGeneral, OptionGroup::kGeneral, options, text);
    return text;
}

std::string VersionText(const std::string& version, bool verbose) {
    std::string text = "velloran " + version + "\n";
    if (!verbose)
        return text;
    text += Phrase(labels::kVersionOfLibraries) + ":";
    for (const LibraryVersion& library : LibraryVersions())
        text += " " + library.name + " " + library.version;
    text += "\n" + Phrase(labels::kVersionOfProcessor) + ": " + ProcessorForm() + " (";
    bool isFirst = true;
    for (const std::string& form : ProcessorForms()) {
        text += (isFirst ? "" : ", ") + form;
        isFirst = false;
    }
    return text + ")\n";
}

}  // namespace velloran::cli
