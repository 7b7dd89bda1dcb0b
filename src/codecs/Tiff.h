#pragma once

// TIFF in and out, over libtiff.

#include <cstdint>
#include <filesystem>
#include <span>

#include "codecs/ImageInfo.h"
#include "core/FileError.h"

namespace velloran {

class CDibImage;

/// The first page: bilevel, palette, grey, RGB, CMYK, 16-bit, tiled, JPEG-coded, white-is-zero.
/// Sets sourceColours, sourceFlag and DPI. False, the image as it was, for a damaged file.
bool LoadTiff(const std::filesystem::path& path, CDibImage& image, FileError* error = nullptr);
bool LoadTiffBytes(std::span<const std::uint8_t> bytes, CDibImage& image, FileError* error);

bool ReadTiffInfo(std::span<const std::uint8_t> bytes, ImageInfo& info, FileError* error);

enum class TiffCompression { kNone, kGroup4, kLzw, kDeflate, kJpeg };
/// What suits the depth: Group 4 for black and white, else a lossless one.
TiffCompression TiffCompressionFor(const CDibImage& image);

/// Sets both DPI values of the image, then writes at its depth.
bool SaveTiff(const std::filesystem::path& path, CDibImage& image, TiffCompression compression,
              int dpi, FileError* error = nullptr);

}  // namespace velloran
