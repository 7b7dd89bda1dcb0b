#pragma once

// A size brought into a box without changing its aspect.

namespace velloran {

struct BoxSize {
    int width = 0, height = 0;
    bool operator==(const BoxSize&) const = default;
};

/// A size that fits stays; else the tighter side takes the box's and the other follows, rounded
/// half up and at most the box's. 32-bit floats.
BoxSize FitIntoBox(BoxSize size, BoxSize box);

}  // namespace velloran
