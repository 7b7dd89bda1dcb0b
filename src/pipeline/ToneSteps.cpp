#include "pipeline/ToneSteps.h"

#include <cstdint>

#include "pipeline/RunState.h"
#include "tone/Channels.h"
#include "tone/Light.h"
#include "tone/LumCorrect.h"
#include "tone/ReplaceColor.h"
#include "tone/Unshadow.h"
#include "tone/Vibrance.h"
#include "tone/WhiteBalance.h"

namespace velloran {

StepResult ReplaceOneColor(RunState& state) {
    // The list of thresholds begins at 1, and a threshold is one byte.
    const auto threshold = static_cast<std::uint8_t>(
        static_cast<std::uint32_t>(state.Value(PARA_REPLACE_COLOR_THRESHOLD)) + 1);
    return ResultOf(ReplaceColor(state.Value(PARA_REPLACE_COLOR_TYPE), *state.image,
                                 static_cast<std::uint32_t>(state.Value(PARA_REPLACE_COLOR_FROM)),
                                 static_cast<std::uint32_t>(state.Value(PARA_REPLACE_COLOR_TO)),
                                 threshold));
}

StepResult ExchangeChannels(RunState& state) {
    return ResultOf(SwapChannels(*state.image, state.Value(PARA_SWAP_CHANNEL)));
}

StepResult NegatePage(RunState& state) {
    return ResultOf(Negate(*state.image));
}

StepResult MixChannels(RunState& state) {
    return ResultOf(CombineChannels(*state.image, state.Value(PARA_COMBINE_CHANNEL)));
}

StepResult CorrectIllumination(RunState& state) {
    return ResultOf(LumCorrect(*state.image, state.Value(PARA_LUM_CORRECT)));
}

StepResult RemoveShadow(RunState& state) {
    return ResultOf(Unshadow(*state.image, state.Value(PARA_ADJUST_UNSHADOW)));
}

StepResult BalanceWhite(RunState& state) {
    return ResultOf(WhiteBalance(*state.image, state.Value(PARA_WHITE_BALANCE)));
}

StepResult AdjustVibrance(RunState& state) {
    return ResultOf(Vibrance(*state.image, state.Value(PARA_ADJUST_VIBRANCE)));
}

StepResult AdjustPageLight(RunState& state) {
    return ResultOf(
        AdjustLight(*state.image, state.Value(PARA_LIGHT_LOW), state.Value(PARA_LIGHT_HIGH)));
}

StepResult EqualizeTones(RunState& state) {
    return ResultOf(HistEqualize(*state.image));
}

}  // namespace velloran
