#pragma once

// A user who answers by a script, and remembers all that was said.

#include <deque>
#include <string>
#include <vector>

#include "documents/Asker.h"
#include "text/Text.h"

namespace velloran::test {

class ScriptedAsker : public Asker {
 public:
    /// Answers in order; behind the last one the safe choice is taken.
    explicit ScriptedAsker(std::deque<std::size_t> answers = {}) : answers_(std::move(answers)) {}

    static constexpr std::size_t kYesAnswer = 0, kNoAnswer = 1;

    std::size_t Choose(const Question& question) override {
        questions.push_back(ToUtf8(question.text));
        if (answers_.empty())
            return question.safe;
        const std::size_t answer = answers_.front();
        answers_.pop_front();
        return answer;
    }
    void Tell(std::u16string_view text) override { told.push_back(ToUtf8(text)); }
    void TellEnd(const EndMessage& message) override { ends.push_back(message); }
    void TellFailure(const BatchFailure& failure) override {
        failures.push_back(failure.path + ": " + ToUtf8(failure.message));
    }
    void Warn(const std::string& text) override { warnings.push_back(text); }
    void ShowProgress(const BatchProgress&) override { ++steps; }
    bool IsStopped() override { return stopAfter >= 0 && steps >= stopAfter; }

    std::vector<std::string> questions, told, failures, warnings;
    std::vector<EndMessage> ends;
    int steps = 0;
    int stopAfter = -1;  // steps of progress; negative: never

 private:
    std::deque<std::size_t> answers_;
};

}  // namespace velloran::test
