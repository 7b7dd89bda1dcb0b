#pragma once

// PNG in and out, over libpng.

#include <cstdint>
#include <filesystem>
#include <span>

#include "codecs/ImageInfo.h"
#include "core/FileError.h"

namespace velloran {

class CDibImage;

/// Palettes, grey and colour of every depth; 16-bit samples keep their high byte, alpha goes to the alpha plane.
/// Sets sourceColours, sourceFlag and DPI. False, the image as it was, for a damaged file.
bool LoadPng(const std::filesystem::path& path, CDibImage& image, FileError* error = nullptr);
bool LoadPngBytes(std::span<const std::uint8_t> bytes, CDibImage& image, FileError* error);

bool ReadPngInfo(std::span<const std::uint8_t> bytes, ImageInfo& info, FileError* error);

/// Sets both DPI values of the image, then writes at its depth. With `grayTransparent` level 255
/// of an 8-bit grey image without a transparent index becomes transparent.
bool SavePng(const std::filesystem::path& path, CDibImage& image, int dpi, bool grayTransparent,
             FileError* error = nullptr);

}  // namespace velloran
