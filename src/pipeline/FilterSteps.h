#pragma once

// The work of the steps that resize, blur, sharpen and thicken.

#include "pipeline/StepResult.h"

namespace velloran {

struct RunState;

/// Steps 13 and 25: to the size of the content.
StepResult ResizeToContent(RunState& state);

/// Step 21: thicker, thinner, opened or closed strokes, four strengths each.
StepResult ChangeStrokes(RunState& state);

/// Step 22.
StepResult BlurByLevel(RunState& state);

/// Step 23.
StepResult BlurByRadius(RunState& state);

/// Step 26.
StepResult SharpenByLevel(RunState& state);

/// Step 28.
StepResult SharpenByMask(RunState& state);

}  // namespace velloran
