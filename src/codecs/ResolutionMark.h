#pragma once

// The resolution that a file tells, changed without touching its pixels: every other byte is copied
// as it stands, whatever the depth or the compression.

#include "codecs/Formats.h"

namespace velloran {

enum class MarkResult {
    kDone,
    kNotJfif,    // a JPEG that does not begin with a JFIF head
    kUnfit,      // no place for a resolution, or a damaged head; the reason is in `error`
    kNotCopied,  // the source came short, or the sink refused; the reason is in `error`
};

/// Whether files of a type can be marked: JPEG, BMP, PNG and TIFF.
bool CanMarkResolution(int type);

/// Copies a source of the type into a sink, with both resolutions `dpi` (0..8000). BMP: pixels per
/// metre, rounded down, in a head of 40 bytes or more; 0 removes the mark. JPEG: dots per inch in
/// the JFIF head. PNG: one pHYs chunk, none for 0. TIFF: the three tags of the first page, which
/// must be there; the unit becomes inches, or none for 0.
MarkResult CopyWithResolution(ByteSource& source, int type, int dpi, ByteSink& sink,
                              FileError* error);

}  // namespace velloran
