#pragma once

// The whole enhancement as a table: what a page goes through, in this order and in no other.

#include <array>
#include <span>
#include <string>
#include <string_view>

#include "params/Settings.h"
#include "pipeline/StepResult.h"
#include "text/Label.h"

namespace velloran {

struct RunState;

/// The name of a step as a run tells it: a text, or chosen by the values of the block.
class StepLabel {
 public:
    using Chooser = std::u16string_view (*)(const ParaValues&);
    constexpr StepLabel(const Label& text) : text_(text) {}
    constexpr StepLabel(Chooser choose) : choose_(choose) {}

    std::u16string_view Of(const ParaValues& values) const {
        return choose_ == nullptr ? text_.Text() : choose_(values);
    }

 private:
    Label text_;
    Chooser choose_ = nullptr;
};

/// Whether the label is told on every run, or only when the step has work.
enum class Told { kAlways, kWhenRun };

/// Whether cancel is polled behind a step; without it the next step belongs to the same interval.
enum class Poll { kAfter, kNone };

struct Step {
    int number;
    StepLabel label;
    Told told;
    bool (*runs)(const RunState& state);
    StepResult (*run)(RunState& state);
    void (*describe)(const ParaValues& values, std::u16string& text);
    Poll poll = Poll::kAfter;
    std::array<int, 2> stops{};  // codes that end the run behind this step; 0 is none
    void (*before)(RunState& state) = nullptr;        // always done, before `runs` is asked
    StepResult (*atStop)(RunState& state) = nullptr;  // done when one of `stops` ends the run here
};

/// All thirty, in order.
std::span<const Step> Steps();

}  // namespace velloran
