// `velloran merge`: pairs of pages joined into spreads.

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>

#include "cli/Causes.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "cli/Json.h"
#include "cli/NearestWord.h"
#include "cli/StopSignal.h"
#include "cli/TerminalAsker.h"
#include "cli/ToolOptions.h"
#include "documents/book/RowName.h"
#include "documents/merge/MergeRun.h"
#include "files/FileIdentity.h"
#include "files/ReplaceRules.h"
#include "params/ParaBlock.h"
#include "params/ProfileStore.h"
#include "text/CommandLabels.h"
#include "text/DocumentLabels.h"
#include "text/Labels.h"
#include "text/Phrase.h"
#include "text/ProfileFile.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

namespace fs = std::filesystem;

int WrongUsage(const std::string& text) {
    PrintError(text);
    return kWrongUsage;
}

/// KEY=VALUE of -m; what is wrong with it, or nothing.
std::string SetKey(const std::string& text, MergePara& para) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos)
        return Phrase(labels::kNotNameAndValue, {text});
    const std::string key = text.substr(0, equals);
    if (SetMergeKey(ToUtf16(key), TextOfName(text.substr(equals + 1)), para))
        return {};
    std::vector<std::string> names;
    for (const std::u16string& name : MergeKeys())
        names.push_back(ToUtf8(name));
    const bool isKnown = std::ranges::any_of(names, [&](const std::string& name) {
        return EqualIgnoringCase(std::string_view(name), std::string_view(key));
    });
    return isKnown ? Phrase(labels::kNoParameterValue, {key, text.substr(equals + 1)})
                   : Phrase(labels::kUnknownMergeKey, {key}) + Suggestion(key, names);
}

class MergeCommand {
 public:
    explicit MergeCommand(const ParsedWords& words)
        : words_(words), asker_(words, /*tellsEnd=*/false) {}

    int Run() {
        if (const int status = Prepare(); status != kDone)
            return status;
        CatchStopSignals();
        const Settings settings = GlobalBlock().GetSettings();
        MergeOutcome outcome;
        if (words_.Has(Option::kPair)) {
            if (const std::string problem = JudgePair(); !problem.empty())
                return WrongUsage(problem);
            outcome = JoinFiles(state_, settings, words_.operands[0], words_.operands[1],
                                words_.operands[2], LogOf(words_), asker_);
        } else {
            FileError error;
            if (state_.para.source1.empty() || !FillMergeList(state_, &error))
                return WrongUsage((error.detail.empty() ? "" : error.detail + ": ") +
                                  ToUtf8(labels::kMergeNoSource));
            ReadMergeItems(profile_, state_.items);
            outcome = RunMerge(state_, settings, LogOf(words_), asker_);
        }
        return Tell(outcome);
    }

 private:
    /// The options: those of the state file, then those of the command line.
    int Prepare() {
        if (const std::optional<std::string> file = words_.Text(Option::kState)) {
            std::error_code ignored;
            FileError error;
            if (!fs::is_regular_file(*file, ignored) || !LoadProfile(*file, profile_, &error))
                return WrongUsage(Phrase(labels::kMergeUnreadable, {*file}));
            ReadMergeOptions(profile_, state_.para);
        }
        const auto folder = [this](Option option, std::u16string& text) {
            if (const std::optional<std::string> path = words_.Text(option))
                text = TextOfName(*path);
        };
        folder(Option::kSource1, state_.para.source1);
        folder(Option::kSource2, state_.para.source2);
        folder(Option::kTarget, state_.para.target);
        if (words_.Has(Option::kSource2))
            state_.para.twoSources = 1;
        for (const std::string& text : words_.Texts(Option::kMergeValue))
            if (const std::string problem = SetKey(text, state_.para); !problem.empty())
                return WrongUsage(problem);
        if (const std::optional<std::string> save = words_.Text(Option::kSaveState);
            save && !CanTakeSetting(*save))
            return WrongUsage(*save + ": " + Phrase(labels::kIsNoSettingsFile));
        if (!words_.Has(Option::kPair) && !words_.operands.empty())
            return WrongUsage(Phrase(labels::kSurplusOperand, {words_.operands[0]}));
        return kDone;
    }

    /// LEFT RIGHT OUT, and the rows of the state file for the first two.
    std::string JudgePair() {
        static constexpr std::string_view kNames[] = {"LEFT", "RIGHT", "OUT"};
        if (words_.operands.size() < 3)
            return Phrase(labels::kMissingOperand, {kNames[words_.operands.size()]});
        if (words_.operands.size() > 3)
            return Phrase(labels::kSurplusOperand, {words_.operands[3]});
        const auto out = FindFile(words_.operands[2]);
        for (int i = 0; i < 2; ++i) {
            const std::string& file = words_.operands[static_cast<std::size_t>(i)];
            const auto source = FindFile(file);
            if (out && source && out->identity == source->identity)
                return words_.operands[2] + ": " + Phrase(labels::kMergeReplaces);
            state_.items.push_back({.name = fs::path(file).filename().native(), .folder = i});
        }
        ReadMergeItems(profile_, state_.items);
        return {};
    }

    int Tell(const MergeOutcome& outcome) {
        if (outcome.end == MergeOutcome::End::kRefused)
            return WrongUsage(ToUtf8(outcome.message));
        if (outcome.end == MergeOutcome::End::kNoTarget) {
            PrintFailure({.path = NameOfText(state_.para.target),
                          .message = outcome.message,
                          .cause = CauseText(outcome.error.reason),
                          .detail = outcome.error.detail});
            return kNotWritten;
        }
        const bool saved = SaveState();
        if (words_.Has(Option::kJson)) {
            PrintJson(AsJson(outcome));
        } else {
            for (const MergedTarget& target : outcome.targets)
                Print(fmt::format("{}\t{}\t{}\t{}\n", OutputName(target.path), target.width,
                                  target.height, target.bytes));
            if (outcome.end == MergeOutcome::End::kDone)
                Print(ToUtf8(labels::kMergeDone) + "\n");
        }
        const bool storage =
            !saved || std::ranges::any_of(outcome.failures, &BatchFailure::storage);
        return FinishOutput(StatusOfFailures(!outcome.failures.empty(), storage));
    }

    bool SaveState() {
        const std::optional<std::string> file = words_.Text(Option::kSaveState);
        if (!file)
            return true;
        ProfileFile profile;
        FileError error;
        if (LoadProfile(*file, profile, &error)) {
            WriteMergeState(state_, profile);
            if (SaveProfile(profile, *file, &error))
                return true;
        }
        PrintFailure({.path = *file,
                      .message = labels::kSaveFailed,
                      .cause = CauseText(error.reason),
                      .detail = error.detail});
        return false;
    }

    static Json AsJson(const MergeOutcome& outcome) {
        Json failed = Json::Array(), targets = Json::Array();
        for (const BatchFailure& failure : outcome.failures)
            failed.Append(Json::Object().AddPath(failure.path).Add("message", failure.message));
        for (const MergedTarget& target : outcome.targets) {
            Json json = Json::Object();
            json.AddPath(target.path);
            json.Add("first", target.first);
            json.Add("second", target.second.empty() ? Json() : Json(target.second));
            json.Add("width", target.width);
            json.Add("height", target.height);
            json.Add("bytes", target.bytes);
            targets.Append(json);
        }
        Json json = Json::Object();
        json.Add("files", outcome.files);
        json.Add("joined", outcome.joined);
        json.Add("copied", outcome.copied);
        json.Add("failed", failed);
        json.Add("targets", targets);
        return json;
    }

    const ParsedWords& words_;
    TerminalAsker asker_;
    ProfileFile profile_;
    MergeState state_;
};

}  // namespace

int RunMergeCommand(const ParsedWords& words) {
    return MergeCommand(words).Run();
}

}  // namespace velloran::cli
