#pragma once

// What a batch run asks of the parameter block before it starts: which files, which extension, and
// whether the two suit the colour depth.

#include <cstdint>
#include <string_view>

#include "files/SavePage.h"

namespace velloran {

struct Settings;

/// How the results of a run are named and written; read from a block once, at the start.
struct BatchTarget : PageTarget {
    int extensionPosition = 0;      // in the list of target extensions; 0 is automatic
    std::u16string_view extension;  // without dot; empty when it is chosen for each file
    std::int32_t packedRule = 0;    // PARA_TGT_FILES
    bool keepFileTime = false;
};

/// The 16-bit colour depths make an automatic extension "bmp".
BatchTarget ReadBatchTarget(const Settings& settings);

/// Why the colour depth and the chosen extension do not go together; empty when they do.
std::u16string_view RefuseTarget(const BatchTarget& target);

/// The positions 18 and 19 of the list of colour depths.
bool Is16BitColor(int color);

}  // namespace velloran
