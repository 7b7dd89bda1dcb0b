#pragma once

// TIFF in and out, over libtiff.

#include <cstdint>
#include <filesystem>
#include <span>

#include "codecs/ImageInfo.h"
#include "io/FileError.h"

namespace velloran {

class CDibImage;

/// The first page, upright: bilevel, palette, grey, RGB, CMYK, 16-bit, tiled, JPEG-coded,
/// white-is-zero. Alpha goes to the alpha plane unless it is opaque throughout.
/// Sets sourceColours, sourceFlag (the horizontal DPI) and DPI. What a file that breaks off lacks
/// is white below its whole rows; without one whole row, and for other damage to the head, false,
/// and the image is as it was.
bool LoadTiff(const std::filesystem::path& path, CDibImage& image, FileError* error = nullptr);
bool LoadTiffBytes(std::span<const std::uint8_t> bytes, CDibImage& image, FileError* error);

bool ReadTiffInfo(std::span<const std::uint8_t> bytes, ImageInfo& info, FileError* error);

enum class TiffCompression { kNone, kGroup4, kLzw, kDeflate, kJpeg };
/// What suits the depth: Group 4 for black and white, else a lossless one.
TiffCompression TiffCompressionFor(const CDibImage& image);

/// Sets both DPI values of the image, then writes at its depth. Group 4 takes 1-bit images only,
/// JPEG only grey and 24 bits (with the image's quality). An empty image gives false and no file
/// is touched.
bool SaveTiff(const std::filesystem::path& path, CDibImage& image, TiffCompression compression,
              int dpi, FileError* error = nullptr);

}  // namespace velloran
