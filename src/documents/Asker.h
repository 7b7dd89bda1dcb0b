#pragma once

// How a document speaks with its user. Windows answer with message boxes, the command with lines
// on a terminal, tests with a script, so that a flow with its order of questions is written once.

#include <cstddef>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>

#include "batch/BatchEngine.h"
#include "text/DocumentLabels.h"

namespace velloran {

inline constexpr Label kYesAndNo[] = {labels::kYes, labels::kNo};

struct Question {
    std::u16string text;                         // what, and what will happen
    std::span<const Label> choices = kYesAndNo;  // the first is the one that goes on
    std::size_t safe = 1;                        // the choice that changes nothing: the default
};

/// The last word of a run.
struct EndMessage {
    std::u16string text;
    std::u16string logQuestion;  // asked behind the text by windows where there is a log
    std::filesystem::path log;   // empty where nothing was logged
};

class Asker {
 public:
    virtual ~Asker() = default;

    /// The place of the answer among the choices.
    virtual std::size_t Choose(const Question& question) = 0;
    bool AskYesNo(std::u16string_view text) { return Choose({.text = std::u16string(text)}) == 0; }

    /// A message that wants no answer.
    virtual void Tell(std::u16string_view text) = 0;
    /// The end of a run that came to its end.
    virtual void TellEnd(const EndMessage& message) = 0;
    /// What went wrong with one file; the run goes on.
    virtual void TellFailure(const BatchFailure& failure) = 0;
    virtual void Warn(const std::string& text) = 0;

    virtual void ShowProgress(const BatchProgress&) {}
    /// Asked often and from any thread: whether the user wants the run to end.
    virtual bool IsStopped() { return false; }
};

}  // namespace velloran
