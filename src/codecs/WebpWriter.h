#pragma once

// Codes an image as WebP.

#include "io/FileError.h"

namespace velloran {

class AtomicFile;
class CDibImage;

inline constexpr int kMaxWebpSide = 16383;

/// Writes into the open file; neither side is above kMaxWebpSide.
bool WriteWebp(const CDibImage& image, int quality, AtomicFile& file, FileError* error);

}  // namespace velloran
