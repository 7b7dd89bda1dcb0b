// `velloran`, the command line: one subcommand a call.

#include <exception>
#include <string>
#include <vector>

#include "cli/Commands.h"
#include "cli/CompletionScripts.h"
#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "cli/ManualPage.h"
#include "cli/NearestWord.h"
#include "cli/Usage.h"
#include "core/ProcessorForm.h"
#include "text/CommandLabels.h"
#include "text/Phrase.h"

namespace velloran::cli {

namespace {

int TellUsage(const std::string& command, const std::string& problem) {
    PrintError(problem);
    PrintNote(Phrase(labels::kTryHelp, {command}));
    return kWrongUsage;
}

int Answer(const std::string& text) {
    Print(text);
    return FinishOutput(kDone);
}

std::string UnknownCommand(const std::string& word) {
    std::vector<std::string> names;
    for (const Command& command : Commands())
        names.emplace_back(command.name);
    return Phrase(labels::kUnknownCommand, {word}) + Suggestion(word, names);
}

int RunCommand(const Command& command, const std::vector<std::string>& arguments, Talk talk) {
    ParsedWords words;
    const std::string problem = ParseWords(OptionsOf(command), command.operands, arguments, words);
    if (!problem.empty())
        return TellUsage("velloran " + std::string(command.name), problem);
    if (words.Has(Option::kHelp))
        return Answer(CommandHelp(command));
    talk.quiet = talk.quiet || words.Has(Option::kQuiet);
    talk.verbose = talk.verbose || words.Has(Option::kVerbose);
    UseTalk(talk);
    return command.run(words);
}

int Run(const std::vector<std::string>& words) {
    UseLanguage(FindLanguage(words).value_or(Language::kChinese));
    std::vector<Option> options(GeneralOptions().begin(), GeneralOptions().end());
    options.insert(options.end(), ProgramOptions().begin(), ProgramOptions().end());
    ParsedWords leading;
    const std::string problem = ParseLeadingOptions(options, words, leading);
    if (!problem.empty())
        return TellUsage("velloran", problem);
    const Talk talk{leading.Has(Option::kQuiet), leading.Has(Option::kVerbose)};
    UseTalk(talk);
    if (UseProcessorFormOfEnvironment() == 0)
        PrintWarning(Phrase(labels::kNoSuchForm));
    if (leading.Has(Option::kHelp))
        return Answer(ProgramHelp());
    if (leading.Has(Option::kVersion))
        return Answer(VersionText(VELLORAN_VERSION, talk.verbose));
    if (leading.Has(Option::kPrintMan))
        return Answer(ManualPage());
    if (leading.Has(Option::kPrintCompletion))
        return Answer(*leading.Text(Option::kPrintCompletion) == "bash" ? BashCompletion()
                                                                        : ZshCompletion());
    if (leading.operands.empty())
        return TellUsage("velloran", Phrase(labels::kNoCommand));
    const std::string& name = leading.operands.front();
    const Command* command = FindCommand(name);
    if (command == nullptr)
        return TellUsage("velloran", UnknownCommand(name));
    return RunCommand(*command, {leading.operands.begin() + 1, leading.operands.end()}, talk);
}

}  // namespace

}  // namespace velloran::cli

int main(int count, char** words) {
    try {
        return velloran::cli::Run({words + (count > 0 ? 1 : 0), words + count});
    } catch (const std::bad_alloc&) {  // outside of any file's work
        velloran::cli::PrintError(velloran::Phrase(velloran::labels::kCauseNoMemory));
    } catch (const std::exception& failure) {
        velloran::cli::PrintError(failure.what());
    }
    return velloran::cli::kNotWritten;
}
