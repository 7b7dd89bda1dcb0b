#pragma once

// Profiles, EXIF blocks and XMP packets as other programs write them.

#include "codecs/Metadata.h"

namespace velloran::test {

Blob RgbProfile();
Blob GrayProfile();
/// Paper is white, black ink black; full cyan alone shows as the red of sRGB, which no built-in
/// mixing of inks would give.
Blob CmykProfile();

/// A block with orientation 6, 72 dpi, sizes 4000 x 3000, a camera, an unknown field of twelve
/// bytes, exposure and a thumbnail.
Blob ExifOf(bool bigEndian, int orientation = 6);
/// The unknown field's bytes.
inline constexpr char kUnknownValue[] = "eleven byte";

Blob XmpPacket();

}  // namespace velloran::test
