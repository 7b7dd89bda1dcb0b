#include <algorithm>

#include "params/ParaBlock.h"
#include "pipeline/Describe.h"
#include "pipeline/RunState.h"
#include "pipeline/StepTable.h"

namespace velloran {
namespace {

/// Work that fails by an exception leaves the image as it is then, and the run goes on behind it.
void DoGuarded(void (*work)(RunState&), RunState& state) {
    if (work == nullptr || state.image == nullptr)
        return;
    try {
        work(state);
    } catch (...) {
        // No step reports to the caller.
    }
}

void TakeStep(const Step& step, RunState& state, const LabelFunction& label, std::u16string* text) {
    state.values = state.block.GetValues();
    DoGuarded(step.before, state);
    const bool runs = step.runs(state);
    if (label && (runs || step.told == Told::kAlways))
        label(step.label.Of(state.values));
    if (text != nullptr)
        step.describe(state.block, *text);
    else if (runs)
        DoGuarded(step.run, state);
}

bool EndsBehind(const Step& step, int stop) {
    return std::find(step.stops.begin(), step.stops.end(), stop) != step.stops.end();
}

}  // namespace

void CParaBlock::RunPipeline(CDibImage* image, CancelFunction cancel, void* context,
                             const LabelFunction& label, int stop, std::u16string* text) {
    if (text == nullptr && (image == nullptr || !image->IsValid()))
        return;
    if (stop == kStopNothing)
        return;
    RunState state{.block = *this,
                   .image = text == nullptr ? image : nullptr,
                   .stop = stop,
                   .isPreview = !label};
    for (const Step& step : Steps()) {
        TakeStep(step, state, label, text);
        if (step.poll == Poll::kAfter && cancel != nullptr && cancel(context) != 0)
            return;
        if (EndsBehind(step, stop)) {
            DoGuarded(step.atStop, state);
            return;
        }
    }
    if (text != nullptr)
        DescribeOutput(*this, *text);
}

}  // namespace velloran
