#pragma once

// Whether a file may be a camera's raw data, by its first bytes and, where these are those of a
// TIFF, by what its directories say of their samples. Internal to the codecs.

namespace velloran {

class ByteSource;

/// Cheap; no plain TIFF passes, whatever camera or scanner it names.
bool LooksRaw(ByteSource& source);

}  // namespace velloran
