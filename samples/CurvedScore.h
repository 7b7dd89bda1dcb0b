#pragma once

// How straight the lines of a page are, before and after it was flattened.

#include <functional>
#include <vector>

#include "samples/Truth.h"

namespace velloran::samples {

/// How far the points leave the straight line of least squares through them, at most; in pixels.
double LeavesStraight(const std::vector<Point>& points);

/// The usual distance of neighbouring horizontal lines of the truth, in pixels, at most 2.5 times
/// the size of their letters; 1.5 times that where no lines lie over each other, 0 without lines.
double LinePitchOf(const Truth& truth);

/// For each horizontal line of the truth that is four pitches long or more, how far its baseline
/// leaves the straight line through it, in line pitches. With `toFlat`, after that has moved it:
/// its page must be flattened in pixels of about the same size.
std::vector<double> BentLines(const Truth& truth,
                              const std::function<Point(Point)>& toFlat = nullptr);

/// A page is worse than it was when the line that leaves a straight one the most but one tenth of
/// them does so by more than before, and by more than a twentieth of a pitch.
bool IsWorse(std::vector<double> before, std::vector<double> after);

}  // namespace velloran::samples
