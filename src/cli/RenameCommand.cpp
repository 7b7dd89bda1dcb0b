// `velloran rename`: new names for the files of a folder, and their former names back.

#include <algorithm>
#include <optional>
#include <string>

#include "cli/Causes.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "cli/NearestWord.h"
#include "cli/StopSignal.h"
#include "cli/TerminalAsker.h"
#include "cli/ToolOptions.h"
#include "documents/rename/RenameRun.h"
#include "text/CommandLabels.h"
#include "text/Labels.h"
#include "text/Phrase.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

namespace fs = std::filesystem;

int WrongUsage(const std::string& text) {
    PrintError(text);
    return kWrongUsage;
}

int StatusOf(const RenameOutcome& outcome, const TerminalAsker& asker) {
    switch (outcome.end) {
        case RenameOutcome::End::kRefused:
            return WrongUsage(outcome.message);
        case RenameOutcome::End::kDeclined:
            return asker.StatusOfDeclined();
        case RenameOutcome::End::kNotBegun:
            PrintFailure({.path = outcome.message,
                          .message = labels::kLogRows[0],
                          .cause = CauseText(outcome.error.reason),
                          .detail = outcome.error.detail});
            return kNotWritten;
        case RenameOutcome::End::kStopped:
            return StopStatus();
        case RenameOutcome::End::kDone:
            break;
    }
    const bool storage = std::ranges::any_of(outcome.failures, &RenameFailure::storage);
    return FinishOutput(StatusOfFailures(!outcome.failures.empty(), storage));
}

/// N:M, or one of the words. False after an error was printed.
bool ReadSelection(const std::string& text, RenameFilter& filter) {
    if (text == "all" || text == "odd" || text == "even") {
        filter.selection = text == "all"   ? RenameSelection::kAll
                           : text == "odd" ? RenameSelection::kOdd
                                           : RenameSelection::kEven;
        return true;
    }
    const std::size_t colon = text.find(':');
    const std::optional<std::int32_t> first = ParseInt32(text.substr(0, colon));
    const std::optional<std::int32_t> every =
        colon == std::string::npos ? std::nullopt : ParseInt32(text.substr(colon + 1));
    if (!first || !every) {
        PrintError(Phrase(labels::kNoneOfWords,
                          {RowOf(Option::kSelect).name, text, "all, odd, even, N:M"}));
        return false;
    }
    filter.selection = RenameSelection::kEveryMth;
    filter.first = *first;
    filter.every = *every;
    if (const std::u16string_view refusal = RefuseFilter(filter); !refusal.empty()) {
        PrintError(ToUtf8(refusal));
        return false;
    }
    return true;
}

bool ReadFilter(const ParsedWords& words, RenameFilter& filter) {
    filter.type = words.Number(Option::kFileType).value_or(0);
    filter.descending = words.Has(Option::kDescending);
    const std::string sort = words.Text(Option::kSort).value_or("name");
    if (EqualIgnoringCase(std::string_view(sort), "created"))
        filter.sort = RenameSort::kCreated;
    else if (EqualIgnoringCase(std::string_view(sort), "modified"))
        filter.sort = RenameSort::kModified;
    return ReadSelection(words.Text(Option::kSelect).value_or("all"), filter);
}

Numbering NumberingOf(const ParsedWords& words) {
    constexpr int kUsualDigits = 5;
    Numbering numbering;
    numbering.useNumber = !words.Has(Option::kNoNumber);
    numbering.prefix = words.Text(Option::kPrefix).value_or("");
    numbering.suffix = words.Text(Option::kSuffix).value_or("");
    numbering.digits = words.Number(Option::kDigits).value_or(kUsualDigits) - 1;
    numbering.start = words.Number(Option::kStart).value_or(1);
    numbering.step = words.Number(Option::kStep).value_or(1);
    numbering.keepExtension = !words.Has(Option::kNoExtension);
    return numbering;
}

int Undo(const ParsedWords& words) {
    if (words.operands.size() > 1)
        return WrongUsage(Phrase(labels::kSurplusOperand, {words.operands[1]}));
    for (const auto& [option, values] : words.options)
        if (option != Option::kUndo && option != Option::kYesAll && option != Option::kLog &&
            RowOf(option).group == OptionGroup::kOwn)
            return WrongUsage(
                Phrase(labels::kExcludesOption, {RowOf(option).name, RowOf(Option::kUndo).name}));
    TerminalAsker asker(words);
    return StatusOf(UndoRename(words.operands[0], LogOf(words), asker), asker);
}

int ShowPlan(const RenameRequest& request) {
    if (const std::string fault = JudgePlan(request); !fault.empty())
        return WrongUsage(fault);
    const fs::path target = request.target.empty() ? request.source : request.target;
    for (const RenameRow& row : request.rows)
        Print(OutputName((request.source / row.source).native()) + "\t" +
              OutputName((target / row.target).native()) + "\n");
    return FinishOutput(kDone);
}

}  // namespace

int RunRenameCommand(const ParsedWords& words) {
    CatchStopSignals();
    if (words.Has(Option::kUndo))
        return Undo(words);
    RenameRequest request;
    request.source = words.operands[0];
    if (words.operands.size() > 1)
        request.target = words.operands[1];
    request.move = words.Has(Option::kMove);
    request.overwrite = words.Has(Option::kOverwrite);
    RenameFilter filter;
    if (!ReadFilter(words, filter))
        return kWrongUsage;
    std::error_code ignored;
    if (!fs::is_directory(request.source, ignored))
        return WrongUsage(request.source.native() + ": " + ToUtf8(labels::kSourceInvalid));
    TerminalAsker asker(words);
    if (!words.Has(Option::kDryRunNames) && HasUnfinishedRename(request.source))
        return StatusOf(ResumeRename(request.source, LogOf(words), asker), asker);
    FileError error;
    if (!FillList(request.source, filter, request.rows, &error)) {
        PrintFailure({.path = request.source.native(),
                      .message = labels::kLogRows[1],
                      .cause = CauseText(error.reason),
                      .detail = error.detail});
        return kFileFailed;
    }
    if (request.rows.empty()) {
        PrintFailure({.path = request.source.native(), .message = labels::kRenameNothing});
        return kFileFailed;
    }
    if (const std::u16string_view refusal = Renumber(NumberingOf(words), request.rows);
        !refusal.empty())
        return WrongUsage(ToUtf8(refusal));
    if (words.Has(Option::kDryRunNames))
        return ShowPlan(request);
    request.log = LogOf(words);
    return StatusOf(RunRename(request, asker), asker);
}

}  // namespace velloran::cli
