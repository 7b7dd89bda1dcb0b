#pragma once

// The scales of the sliders for the unsharp mask and the blur radius: fine steps where small
// changes show, coarse ones above. Positions outside a slider count as its nearest end; any value
// is taken.

namespace velloran {

/// Positions 1..260 to 1..500 percent.
int UsmAmountAt(int position);
int UsmAmountPosition(int amount);

/// Positions 0..280 (from 1 for the mask) to 0..2500 tenths of a pixel. The way back has its bends
/// at 250 and 260 tenths, where the way there has them at these positions: radii above 25 pixels
/// come back further right than they were set, the largest behind the end of the slider.
int UsmRadiusAt(int position);
int UsmRadiusPosition(int radiusTenths);

/// Positions 0..211 to 0..255 levels.
int UsmThresholdAt(int position);
int UsmThresholdPosition(int threshold);

}  // namespace velloran
