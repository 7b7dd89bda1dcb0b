#pragma once

// The kernel behind the histogram forms of the surface blur: one row of one strip.

#include <array>
#include <cstdint>

#include "filters/ColumnCounts.h"

namespace velloran {

/// Weights by difference from the centre.
struct LevelWeights {
    int reach = 0;  // beyond this difference all are 0
    std::array<std::int16_t, 511> table{};

    /// Weights of the sixteen levels of a group around the level `center`.
    const std::int16_t* OfGroup(int group, int center) const {
        return table.data() + 255 + kGroupLevels * group - center;
    }
    std::int16_t Of(int difference) const {
        return table[static_cast<std::size_t>(difference + 255)];
    }
};

/// The window of sample x covers the columns x to x + 2 * radius of the counts.
struct HistogramRow {
    const ColumnCounts* counts;
    const LevelWeights* weights;
    const std::uint8_t* source;
    std::uint8_t* target;
    int step;  // bytes from a sample to the next, in both
    int count, radius;
};

/// (num + den / 2) / den over the levels within reach of each sample: den the sum of count times
/// weight, num the sum of these times the level.
void BlurHistogramRow(const HistogramRow& row);

}  // namespace velloran
