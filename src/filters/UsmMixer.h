#pragma once

// What the unsharp mask makes of a sample and its blur.

#include <cstdint>

namespace velloran {

/// The new sample is the old one and `amount` percent (1..500) of its difference from its blur,
/// truncated toward zero and limited to 0..255. Samples that differ from their blur by no more than
/// `threshold` (0..127) stay.
struct UsmMixer {
    int amount = 100, threshold = 0;

    /// `row` holds the samples and gets the new ones. All amounts cost the same.
    void Mix(const std::uint8_t* blurred, int count, std::uint8_t* row) const;
};

}  // namespace velloran
