#include "cli/TerminalAsker.h"

#include "cli/Causes.h"
#include "cli/ExitStatus.h"
#include "cli/OptionParser.h"
#include "cli/StopSignal.h"
#include "text/CommandLabels.h"
#include "text/NumberText.h"
#include "text/Phrase.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

bool IsStopFlagSet() {
    return StopFlag().load();
}

/// The choices by number, or by their own words.
std::size_t ChooseByNumber(const Question& question) {
    std::u16string text = question.text;
    for (std::size_t i = 0; i < question.choices.size(); ++i) {
        text.append(i == 0 ? u" [" : u", ").append(DecimalText(static_cast<std::int64_t>(i + 1)));
        text.append(u" ").append(question.choices[i]);
    }
    text += u"] ";
    const std::optional<std::string> line = AskLine(text, IsStopFlagSet);
    if (!line)
        return question.safe;
    for (std::size_t i = 0; i < question.choices.size(); ++i)
        if (*line == std::to_string(i + 1) || ToUtf16(*line) == question.choices[i].Text())
            return i;
    return question.safe;
}

}  // namespace

TerminalAsker::TerminalAsker(const ParsedWords& words, bool tellsEnd)
    : yes_(words.Has(Option::kYes) || words.Has(Option::kYesAll)),
      tellsEnd_(tellsEnd),
      bar_(ErrorIsTerminal()) {}

std::size_t TerminalAsker::Choose(const Question& question) {
    if (yes_)
        return 0;
    if (!InputIsTerminal()) {
        unasked_ = question.text;
        return question.safe;
    }
    if (question.choices.size() == std::size(kYesAndNo))
        return cli::AskYesNo(question.text, IsStopFlagSet) ? 0 : 1;
    return ChooseByNumber(question);
}

void TerminalAsker::Tell(std::u16string_view text) {
    PrintNote(ToUtf8(text));
}

void TerminalAsker::TellEnd(const EndMessage& message) {
    if (!message.log.empty())
        PrintNote("velloran: " + Phrase(labels::kRunLogAt, {OutputName(message.log.native())}));
    if (tellsEnd_)
        Print(ToUtf8(message.text) + "\n");
}

void TerminalAsker::TellFailure(const BatchFailure& failure) {
    PrintFailure({.path = failure.path,
                  .message = failure.message,
                  .cause = CauseText(failure.reason),
                  .source = failure.source,
                  .detail = failure.detail});
}

void TerminalAsker::Warn(const std::string& text) {
    PrintWarning(text);
}

void TerminalAsker::ShowProgress(const BatchProgress& progress) {
    if (progress.total > 0)
        bar_.Show({progress.done, progress.total, progress.seconds, progress.path});
}

bool TerminalAsker::IsStopped() {
    return StopFlag().load();
}

int TerminalAsker::StatusOfDeclined() const {
    if (StopStatus() != 0)
        return StopStatus();
    if (unasked_.empty())
        return kDone;  // the user's own wish
    PrintError(ToUtf8(unasked_) + " (--yes)");
    return kWrongUsage;
}

int StatusOfFailures(bool anyFailed, bool anyStorage) {
    if (StopStatus() != 0)
        return StopStatus();
    if (anyStorage)
        return kNotWritten;
    return anyFailed ? kFileFailed : kDone;
}

}  // namespace velloran::cli
