#pragma once

// The values that a run finds and writes back into its block: split lines, corners, curve points.

namespace velloran {

class CParaBlock;

/// Whether the next page of a run with this block looks for values that the pages behind it then
/// share: a step is on and its values are unset.
bool HasValuesToFind(const CParaBlock& block);

}  // namespace velloran
