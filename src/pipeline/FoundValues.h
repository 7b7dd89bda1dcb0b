#pragma once

// What a run finds on a page where its settings leave it open: split lines, corners, curve points.
// A value that the caller may write into its block or into the settings of the pages behind.

#include <array>
#include <cstdint>
#include <optional>

#include "params/Settings.h"

namespace velloran {

class CParaBlock;

struct FoundValues {
    std::optional<std::array<std::int32_t, 3>> splitLines;    // left, right, middle
    std::optional<std::array<std::int32_t, 4>> corners;       // from left top, clockwise
    std::optional<std::array<std::int32_t, 16>> curvePoints;  // eight of the top, eight below

    bool IsEmpty() const { return !splitLines && !corners && !curvePoints; }
    /// Writes what was found over the values.
    void ApplyTo(ParaValues& values) const;
    /// The same under the lock of the block, group by group.
    void ApplyTo(CParaBlock& block) const;
};

/// Whether the next page of a run with these values looks for some that the pages behind it then
/// share: a step is on and its values are unset.
bool HasValuesToFind(const ParaValues& values);

}  // namespace velloran
