#pragma once

// The user of a document at a terminal: questions are lines on standard error, answered on standard
// input. Nothing is asked where standard input is no terminal; the safe choice is taken then, and
// the command tells that the question wants --yes.

#include <string>

#include "cli/Console.h"
#include "documents/Asker.h"

namespace velloran::cli {

struct ParsedWords;

class TerminalAsker : public Asker {
 public:
    /// --yes among the words answers every question with the choice that goes on. Without a text at
    /// the end a --json form comes in its place.
    explicit TerminalAsker(const ParsedWords& words, bool tellsEnd = true);

    std::size_t Choose(const Question& question) override;
    void Tell(std::u16string_view text) override;
    void TellEnd(const EndMessage& message) override;
    void TellFailure(const BatchFailure& failure) override;
    void Warn(const std::string& text) override;
    void ShowProgress(const BatchProgress& progress) override;
    bool IsStopped() override;

    /// The question that could not be asked for want of a terminal; empty where there was none.
    const std::u16string& Unasked() const { return unasked_; }
    /// What a question that was declined comes to: done, where the user said so, wrong usage with a
    /// message where nobody could be asked, the status of a stop.
    int StatusOfDeclined() const;

 private:
    bool yes_ = false, tellsEnd_ = true;
    std::u16string unasked_;
    ProgressBar bar_;
};

/// The status of a run whose failures these are.
int StatusOfFailures(bool anyFailed, bool anyStorage);

}  // namespace velloran::cli
