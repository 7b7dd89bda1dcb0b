#pragma once

// What travels with a PNG, in chunks of its own. Internal to the codecs.

#include <array>
#include <vector>

#include "codecs/Metadata.h"

namespace velloran {

class ByteSource;

/// Walks over all chunks, those behind the pixels too.
Metadata ReadPngMetadata(ByteSource& source);

struct PngChunk {
    std::array<char, 5> name{};  // with a zero behind it
    Blob bytes;
};
/// The chunks of what is to be written; the profile's stands first, and before any palette.
std::vector<PngChunk> PngChunksOf(const Metadata& metadata);

}  // namespace velloran
