// `velloran settings`: the named sets of parameters.

#include <string>
#include <vector>

#include "cli/BlockSource.h"
#include "cli/Causes.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "cli/StopSignal.h"
#include "cli/TerminalAsker.h"
#include "cli/Verbs.h"
#include "documents/settings/NamedSettings.h"
#include "files/ProgramPlaces.h"
#include "files/ReplaceRules.h"
#include "params/ParaBlock.h"
#include "text/CommandLabels.h"
#include "text/Labels.h"
#include "text/Phrase.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

SettingsStore StoreOf(const ParsedWords& words) {
    if (const std::optional<std::string> file = words.Text(Option::kStore))
        return SettingsStore(*file);
    const ProgramPlaces places = FindProgramPlaces();
    return {places.namedSettings, places.namedSettingsToRead};
}

int WrongUsage(const std::string& text) {
    PrintError(text);
    return kWrongUsage;
}

int Unreadable(const std::filesystem::path& file, const FileError& error, int status) {
    PrintFailure(
        {.path = file.native(),
         .message = status == kNotWritten ? labels::kSaveFailed.Text() : labels::kLoadFailed.Text(),
         .cause = CauseText(error.reason),
         .detail = error.detail});
    return status;
}

int StatusOf(const SettingsOutcome& outcome, const TerminalAsker& asker) {
    switch (outcome.end) {
        case SettingsOutcome::End::kDone:
            return kDone;
        case SettingsOutcome::End::kRefused:
            return WrongUsage(ToUtf8(outcome.message));
        case SettingsOutcome::End::kDeclined:
            return asker.StatusOfDeclined();
        case SettingsOutcome::End::kFailed:
            break;
    }
    return Unreadable(outcome.path, outcome.error, kNotWritten);
}

int List(const ParsedWords& words) {
    std::vector<std::u16string> names;
    FileError error;
    const SettingsStore store = StoreOf(words);
    if (!ListNamedSettings(store, names, &error))
        return Unreadable(store.readFrom, error, kFileFailed);
    for (const std::u16string& name : names)
        Print(OutputName(ToUtf8(name)) + "\n");
    return FinishOutput(kDone);
}

/// The set of the first operand in the global block.
std::string FindSet(const ParsedWords& words, std::vector<std::string>& warnings) {
    ParameterOptions options;
    options.named = words.operands[1];
    options.storeFile = words.Text(Option::kStore);
    return FillBlock(options, GlobalBlock(), warnings);
}

int Show(const ParsedWords& words) {
    std::vector<std::string> warnings;
    if (const std::string problem = FindSet(words, warnings); !problem.empty())
        return WrongUsage(problem);
    for (const std::string& warning : warnings)
        PrintWarning(warning);
    std::u16string text;
    for (const char16_t unit : GlobalBlock().Describe())
        if (unit != u'\r')
            text += unit;
    Print(ToUtf8(text));
    return FinishOutput(kDone);
}

int Save(const ParsedWords& words) {
    if (!PrepareGlobalBlock(words))
        return kWrongUsage;
    const SettingsStore store = StoreOf(words);
    if (!CanTakeSetting(store.file))
        return WrongUsage(store.file.native() + ": " + Phrase(labels::kIsNoSettingsFile));
    if (!words.Has(Option::kStore))
        MakeFolderOf(store.file);
    CatchStopSignals();
    TerminalAsker asker(words);
    return StatusOf(SaveNamedSetting(store, ToUtf16(words.operands[1]), GlobalBlock().GetSettings(),
                                     /*takeAll=*/true, asker),
                    asker);
}

int Delete(const ParsedWords& words) {
    std::vector<std::string> warnings;
    const std::string name = ToUtf8(CleanSettingName(ToUtf16(words.operands[1])));
    if (!name.empty())
        if (const std::string problem = FindSet(words, warnings); !problem.empty())
            return WrongUsage(problem);
    CatchStopSignals();
    TerminalAsker asker(words);
    return StatusOf(DeleteNamedSetting(StoreOf(words), ToUtf16(name), asker), asker);
}

constexpr Option kStoreOnly[] = {Option::kStore};
constexpr Option kDeleteOptions[] = {Option::kStore, Option::kYesAll};
constexpr Option kSaveOptions[] = {Option::kStore,   Option::kYesAll, Option::kSet,
                                   Option::kSetting, Option::kNamed,  Option::kWithoutPage};
constexpr Verb kVerbs[] = {
    {"list", "", 0, 0, kStoreOnly, List},
    {"show", "NAME", 1, 1, kStoreOnly, Show},
    {"save", "NAME", 1, 1, kSaveOptions, Save},
    {"delete", "NAME", 1, 1, kDeleteOptions, Delete},
};

}  // namespace

int RunSettings(const ParsedWords& words) {
    return RunVerb("settings", kVerbs, words);
}

}  // namespace velloran::cli
