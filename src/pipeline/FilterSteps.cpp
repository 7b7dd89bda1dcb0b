#include "pipeline/FilterSteps.h"

#include "filters/LevelFilters.h"
#include "filters/Morphology.h"
#include "filters/Resample.h"
#include "filters/UnsharpMask.h"
#include "pipeline/RunState.h"

namespace velloran {
namespace {

constexpr int kStrengths = 4;

/// Groups of PARA_ERODE, four strengths each, from 1 on.
enum StrokeChange : int { kThicker, kThinner, kOpened, kClosed };

float RadiusOf(std::int32_t tenths) {
    return static_cast<float>(tenths / 10.0);
}

}  // namespace

StepResult ResizeToContent(RunState& state) {
    if (!FitsItsPage(state))
        return StepResult::kLeft;
    return ResultOf(ResizeTo(*state.image, state.layout.contentWidth, state.layout.contentHeight));
}

StepResult ChangeStrokes(RunState& state) {
    const int value = state.Value(PARA_ERODE) - 1;
    const int strength = value % kStrengths + 1;
    switch (value / kStrengths) {
        case kThicker:
            return ResultOf(Darken(*state.image, strength));
        case kThinner:
            return ResultOf(Lighten(*state.image, strength));
        case kOpened:
            return ResultOf(Lighten(*state.image, strength) && Darken(*state.image, strength));
        case kClosed:
            return ResultOf(Darken(*state.image, strength) && Lighten(*state.image, strength));
        default:
            return StepResult::kLeft;
    }
}

StepResult BlurByLevel(RunState& state) {
    return ResultOf(BlurLevel(*state.image, state.Value(PARA_BLUR)));
}

StepResult BlurByRadius(RunState& state) {
    return ResultOf(UnsharpMask(*state.image, /*amount=*/1,
                                RadiusOf(state.Value(PARA_ADJUST_BLUR_RADIUS)),
                                /*threshold=*/1, /*times=*/1, /*blurOnly=*/true));
}

StepResult SharpenByLevel(RunState& state) {
    return ResultOf(SharpenLevel(*state.image, state.Value(PARA_SHARPEN)));
}

StepResult SharpenByMask(RunState& state) {
    return ResultOf(UnsharpMask(
        *state.image, state.Value(PARA_USM_AMOUNT), RadiusOf(state.Value(PARA_USM_RADIUS)),
        state.Value(PARA_USM_THRESHOLD), state.Value(PARA_USM_TIMES), /*blurOnly=*/false));
}

}  // namespace velloran
