#pragma once

// What travels with a JPEG, in its APP1 and APP2 segments. Internal to the codecs.

#include <cstdint>
#include <vector>

#include "codecs/Metadata.h"

struct jpeg_decompress_struct;

namespace velloran {

/// Of a head whose APP1 and APP2 segments were kept. A profile of which a piece is missing is none.
Metadata JpegMetadataOf(const jpeg_decompress_struct& head);

/// A segment that is to be written: its marker, and what stands behind its length.
struct JpegSegment {
    int marker = 0;
    Blob bytes;
};
/// EXIF and XMP that do not fit into one segment (64 KB) are left out.
std::vector<JpegSegment> JpegSegmentsOf(const Metadata& metadata);

}  // namespace velloran
