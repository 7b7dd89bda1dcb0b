#pragma once

// The work of the steps that resize, blur, sharpen and thicken.

namespace velloran {

struct RunState;

/// Before step 13, and where a run ends with the content box: the size that the content is to have.
void MeasureContent(RunState& state);

/// Steps 13 and 25: to the size of the content.
void ResizeToContent(RunState& state);

/// Where a run ends with the content box: the content in its size, enlarged or reduced or both.
void ShowContent(RunState& state);

/// Step 21: thicker, thinner, opened or closed strokes, four strengths each.
void ChangeStrokes(RunState& state);

/// Step 22.
void BlurByLevel(RunState& state);

/// Step 23.
void BlurByRadius(RunState& state);

/// Step 26.
void SharpenByLevel(RunState& state);

/// Step 28.
void SharpenByMask(RunState& state);

}  // namespace velloran
