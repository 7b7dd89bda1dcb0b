#pragma once

// The work of the steps that find, cut, turn and place the page.

#include "pipeline/StepResult.h"

namespace velloran {

struct RunState;

/// Step 2: what lies between two lines of the split is kept; where the right or the middle line is
/// not set, all three are searched and found. Where a run ends with the split drawn, the rest is
/// shaded instead.
StepResult SplitPage(RunState& state);

/// Step 3: a photographed page becomes a rectangle, a curved one flat. Four corners of -1 and
/// curves that are unset are searched first.
StepResult CorrectPage(RunState& state);

/// Step 4: turns the page straight, or only notes the angle where black edges are going to be
/// removed: the content is searched before the one careful rotation.
StepResult DeskewPage(RunState& state);

/// Step 5: cuts image and mask by the four margins, or by the content box within them, keeps in the
/// layout what was cut, and fills what the mask marks.
StepResult CropPage(RunState& state);

/// Before step 13, and where a run ends with the content box: the size that the content is to have.
void MeasureContent(RunState& state);

/// Where a run ends with the content box: the content in its size on its page.
StepResult ShowContent(RunState& state);

/// Step 30.
StepResult PlacePage(RunState& state);

}  // namespace velloran
