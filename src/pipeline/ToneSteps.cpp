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

void ReplaceOneColor(RunState& state) {
    // The list of thresholds begins at 1, and a threshold is one byte.
    const auto threshold = static_cast<std::uint8_t>(
        static_cast<std::uint32_t>(state.Value(PARA_REPLACE_COLOR_THRESHOLD)) + 1);
    ReplaceColor(state.Value(PARA_REPLACE_COLOR_TYPE), *state.image,
                 static_cast<std::uint32_t>(state.Value(PARA_REPLACE_COLOR_FROM)),
                 static_cast<std::uint32_t>(state.Value(PARA_REPLACE_COLOR_TO)), threshold);
}

void ExchangeChannels(RunState& state) {
    SwapChannels(*state.image, state.Value(PARA_SWAP_CHANNEL));
}

void NegatePage(RunState& state) {
    Negate(*state.image);
}

void MixChannels(RunState& state) {
    CombineChannels(*state.image, state.Value(PARA_COMBINE_CHANNEL));
}

void CorrectIllumination(RunState& state) {
    LumCorrect(*state.image, state.Value(PARA_LUM_CORRECT));
}

void RemoveShadow(RunState& state) {
    Unshadow(*state.image, state.Value(PARA_ADJUST_UNSHADOW));
}

void BalanceWhite(RunState& state) {
    WhiteBalance(*state.image, state.Value(PARA_WHITE_BALANCE));
}

void AdjustVibrance(RunState& state) {
    Vibrance(*state.image, state.Value(PARA_ADJUST_VIBRANCE));
}

void AdjustPageLight(RunState& state) {
    AdjustLight(*state.image, state.Value(PARA_LIGHT_LOW), state.Value(PARA_LIGHT_HIGH));
}

void EqualizeTones(RunState& state) {
    HistEqualize(*state.image);
}

}  // namespace velloran
