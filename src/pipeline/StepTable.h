#pragma once

// The whole enhancement as a table: what a page goes through, in this order and in no other.

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "params/Settings.h"
#include "pipeline/StepResult.h"
#include "text/Label.h"

namespace velloran {

struct RunRequest;
class RunReport;
struct RunState;

/// Sizes of the page as it is and as its content is to become, where they are known.
struct ContentSizes {
    int width = 0, height = 0;
    int contentWidth = 0, contentHeight = 0;
};

/// What a gate may ask: the values, and what the run knows of the page by then. Whoever describes
/// knows nothing of it, and asks the same gate.
struct GateInput {
    const ParaValues& values;
    std::optional<ContentSizes> sizes;

    std::int32_t Value(ParaIndex index) const { return values[static_cast<std::size_t>(index)]; }
};

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
    bool (*runs)(const GateInput& input);
    StepResult (*run)(RunState& state);
    /// Asked only where the step runs.
    void (*describe)(const ParaValues& values, std::u16string& text);
    Poll poll = Poll::kAfter;
    std::array<int, 2> stops{};  // codes that end the run behind this step; 0 is none
    void (*before)(RunState& state) = nullptr;  // always done, before `runs` is asked
    /// Told behind this step whether or not it runs: settings of later steps and of the file.
    void (*describeBehind)(const ParaValues& values, std::u16string& text) = nullptr;
    StepResult (*atStop)(RunState& state) = nullptr;  // done when one of `stops` ends the run here
};

/// All thirty, in order.
std::span<const Step> Steps();

/// What describe mode writes of a step: nothing of one that would not run.
void DescribeStep(const Step& step, const ParaValues& values, std::u16string& text);

/// Run (pipeline/Run.h) over a table of its own: the loop alone, without the closing lines of a
/// text.
RunReport RunSteps(std::span<const Step> steps, const RunRequest& request);

}  // namespace velloran
