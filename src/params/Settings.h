#pragma once

// All that a user can tune about an enhancement, as a value: what a run is given. A change of a
// block while a run is under way is another value, and counts from the next run on.

#include <array>
#include <cstdint>
#include <string>

#include "params/ParaTable.h"

namespace velloran {

/// By ParaIndex.
using ParaValues = std::array<std::int32_t, kParaCount>;

/// The defaults of the table.
ParaValues DefaultParaValues();

struct Settings {
    ParaValues values = DefaultParaValues();
    std::u16string name;  // of the named setting that they came from; may be empty

    std::int32_t operator[](ParaIndex index) const {
        return values[static_cast<std::size_t>(index)];
    }
    void Set(ParaIndex index, std::int32_t value) {
        values[static_cast<std::size_t>(index)] = value;
    }

    /// Of values and name, the same on every machine and in every version (FNV-1a, 64 bits, over
    /// little-endian bytes). Equal settings have equal hashes.
    std::uint64_t Hash() const;

    bool operator==(const Settings&) const = default;
};

}  // namespace velloran
