#pragma once

// EXIF in a TIFF: its directories hang in the file's own, among the fields of the picture. Internal
// to the codecs.

#include <cstdint>

#include "codecs/Metadata.h"

namespace velloran {

class ByteSink;
class ByteSource;

/// What the directory at `place` tells of the picture's origin, as a block of its own in the file's
/// byte order: all fields but those of its coding, and the directories of EXIF and GPS. Empty where
/// there is nothing of the kind. Files of 64 bits have none that is read.
Blob CollectTiffExif(ByteSource& source, std::uint64_t place);

/// Hangs a block into the one directory of a TIFF that was written whole, in the same byte order.
/// Fields that the file has of its own stay. False where the sink fails.
bool AppendTiffExif(ByteSink& sink, Blob exif);

}  // namespace velloran
