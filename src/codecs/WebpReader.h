#pragma once

// Decodes the first picture of a WebP that lies in memory.

#include <cstdint>
#include <span>

#include "io/FileError.h"

namespace velloran {

class CDibImage;

/// Decodes into an empty page of the canvas's size. The first frame of an animation stands at its
/// place on a clear white canvas.
bool ReadWebpPage(std::span<const std::uint8_t> bytes, CDibImage& page, FileError* error);

}  // namespace velloran
