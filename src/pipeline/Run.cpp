#include "pipeline/Run.h"

#include <algorithm>

#include "core/StepContext.h"
#include "pipeline/Describe.h"
#include "pipeline/RunState.h"
#include "pipeline/StepTable.h"

namespace velloran {
namespace {

bool EndsBehind(const Step& step, int stop) {
    return std::find(step.stops.begin(), step.stops.end(), stop) != step.stops.end();
}

class PipelineRun {
 public:
    PipelineRun(std::span<const Step> steps, const RunRequest& request)
        : steps_(steps), request_(request) {
        state_.values = request.settings.values;
        state_.image = IsDescribing() ? nullptr : request.image;
        state_.stop = request.stop;
        state_.isPreview = request.mode == RunMode::kPreview;
        state_.deskewEdge = request.deskewEdge;
        state_.wantsSure = request.wantsSure;
    }

    RunReport Go() {
        TakeSteps();
        report_.found = state_.found;
        report_.sure = state_.sure;
        return std::move(report_);
    }

 private:
    bool IsDescribing() const { return request_.mode == RunMode::kDescribe; }

    void TakeSteps() {
        for (const Step& step : steps_) {
            Take(step);
            if (step.poll == Poll::kAfter && IsCancelled())
                return;
            if (EndsBehind(step, request_.stop)) {
                Do(step, step.atStop);
                if (request_.cancel.IsCancelled())
                    report_.end = RunEnd::kCancelled;
                return;
            }
        }
    }

    /// Also notes it.
    bool IsCancelled() {
        if (!request_.cancel.IsCancelled() && !(request_.poll && request_.poll()))
            return false;
        report_.end = RunEnd::kCancelled;
        return true;
    }

    void Take(const Step& step) {
        if (step.before != nullptr && state_.image != nullptr)
            step.before(state_);
        const bool runs = step.runs(state_.Known());
        if (request_.label && (runs || step.told == Told::kAlways))
            request_.label(step.label.Of(state_.values));
        if (IsDescribing())
            DescribeStep(step, state_.values, report_.text);
        else if (runs)
            Do(step, step.run);
    }

    /// Whatever the work says, what was noted on its way decides: a step that answers "ran" with a
    /// part left undone is not done.
    void Do(const Step& step, StepResult (*work)(RunState&)) {
        if (work == nullptr || state_.image == nullptr)
            return;
        const StepContext context(request_.cancel);
        StepResult result = StepResult::kLeft;
        try {
            result = work(state_);
        } catch (...) {
            NoteException();
        }
        if (context.IsOutOfMemory())
            result = StepResult::kNoMemory;
        if (context.HasFailed())
            result = StepResult::kFailed;
        report_.Note(step.number, result, context.FailureText());
    }

    std::span<const Step> steps_;
    const RunRequest& request_;
    RunState state_;
    RunReport report_;
};

}  // namespace

void RunReport::Note(int step, StepResult result, std::string_view reason) noexcept {
    if (result == StepResult::kRan)
        return;
    const auto known = std::find_if(steps_.begin(), steps_.begin() + count_,
                                    [step](const StepReport& row) { return row.step == step; });
    StepReport& row = *known;
    if (known == steps_.begin() + count_)
        ++count_;
    else if (result <= row.result)
        return;
    row = {.step = step, .result = result};
    std::copy_n(reason.data(), std::min(reason.size(), row.text.size() - 1), row.text.data());
}

StepResult RunReport::Worst() const {
    StepResult worst = StepResult::kLeft;
    for (const StepReport& step : Steps())
        worst = std::max(worst, step.result);
    return worst == StepResult::kLeft ? StepResult::kRan : worst;
}

std::string RunReport::Detail() const {
    const StepResult worst = Worst();
    for (const StepReport& step : Steps()) {
        if (step.result != worst || IsWhole())
            continue;
        std::string detail = worst == StepResult::kNoMemory ? "out of memory" : "failed";
        if (step.step > 0)
            detail += " in step " + std::to_string(step.step);
        return step.Reason().empty() ? detail : detail + ": " + std::string(step.Reason());
    }
    return {};
}

void DescribeStep(const Step& step, const ParaValues& values, std::u16string& text) {
    if (step.runs({values, {}}))
        step.describe(values, text);
    if (step.describeBehind != nullptr)
        step.describeBehind(values, text);
}

RunReport RunSteps(std::span<const Step> steps, const RunRequest& request) {
    if (request.stop == kStopNothing)
        return {};
    if (request.mode != RunMode::kDescribe &&
        (request.image == nullptr || !request.image->IsValid()))
        return {};
    return PipelineRun(steps, request).Go();
}

RunReport Run(const RunRequest& request) {
    return RunSteps(Steps(), request);
}

}  // namespace velloran
