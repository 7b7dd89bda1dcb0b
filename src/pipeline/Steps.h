#pragma once

// The work of the steps: each takes what it needs from the state of the run, calls the operation of
// its folder, leaves the image usable and answers kRan, or kLeft where the operation refused. Want
// of memory is noted by the operations themselves (core/StepContext.h).

#include "pipeline/StepResult.h"

namespace velloran {

struct GateInput;
struct RunState;

/// Step 1: a quarter turn to the left or right, a half turn, mirrored or flipped.
StepResult RotatePage(RunState& state);

/// Before step 4: the layout record, with the size that the page has after its correction.
void StartLayout(RunState& state);

/// Step 14: automatic levels where they are set, else the manual ones.
StepResult AdjustLevels(RunState& state);

/// Step 16: whether any stage of the tone table changes it.
bool HasPixelMapping(const GateInput& input);
/// Step 16: one table of all stages, applied once.
StepResult MapPixels(RunState& state);

/// Step 18: multi-scale detail.
StepResult EnhanceDetail(RunState& state);

/// Step 19.
StepResult AdjustLevelsPost(RunState& state);

/// Step 24: the surface blur; radius and threshold are counted from 1 and 2 in their parameters.
StepResult BlurSurfaces(RunState& state);

/// Step 27: the adjustable sharpening; the parameter of its size counts odd sizes from 7.
StepResult SharpenAdjusted(RunState& state);

/// Step 29: the colour reduction with the protected colour; a preview keeps its depth.
StepResult ReduceColors(RunState& state);

}  // namespace velloran
