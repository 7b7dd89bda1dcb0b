#pragma once

// The work of the steps that change the tones and colors of a page by themselves.

#include "pipeline/StepResult.h"

namespace velloran {

struct RunState;

/// Step 6: the threshold is the position in its list and 1.
StepResult ReplaceOneColor(RunState& state);

/// Step 7.
StepResult ExchangeChannels(RunState& state);

/// Step 8.
StepResult NegatePage(RunState& state);

/// Step 9: to grey by one of the mixes.
StepResult MixChannels(RunState& state);

/// Step 10.
StepResult CorrectIllumination(RunState& state);

/// Step 11: the sign of the strength says whether color is kept.
StepResult RemoveShadow(RunState& state);

/// Step 12.
StepResult BalanceWhite(RunState& state);

/// Step 15.
StepResult AdjustVibrance(RunState& state);

/// Step 17: shadows and highlights.
StepResult AdjustPageLight(RunState& state);

/// Step 20.
StepResult EqualizeTones(RunState& state);

}  // namespace velloran
