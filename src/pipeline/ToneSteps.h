#pragma once

// The work of the steps that change the tones and colors of a page by themselves.

namespace velloran {

struct RunState;

/// Step 6: the threshold is the position in its list and 1.
void ReplaceOneColor(RunState& state);

/// Step 7.
void ExchangeChannels(RunState& state);

/// Step 8.
void NegatePage(RunState& state);

/// Step 9: to grey by one of the mixes.
void MixChannels(RunState& state);

/// Step 10.
void CorrectIllumination(RunState& state);

/// Step 11: the sign of the strength says whether color is kept.
void RemoveShadow(RunState& state);

/// Step 12.
void BalanceWhite(RunState& state);

/// Step 15.
void AdjustVibrance(RunState& state);

/// Step 17: shadows and highlights.
void AdjustPageLight(RunState& state);

/// Step 20.
void EqualizeTones(RunState& state);

}  // namespace velloran
