#pragma once

// PNG in and out, over libpng.

#include <cstdint>
#include <filesystem>
#include <span>

#include "codecs/ImageInfo.h"
#include "io/FileError.h"

namespace velloran {

class CDibImage;

/// Palettes, grey and colour of every depth; 2 bits become 4, 16-bit samples keep their high byte,
/// alpha goes to the alpha plane unless it is opaque throughout. A palette with one clear entry
/// sets the transparent index, other palette alpha stands in the reserved bytes of the palette.
/// Sets sourceColours, sourceFlag (the horizontal DPI) and DPI. What a file that breaks off lacks
/// is white below its whole rows; without one whole row, and for other damage to the head, false,
/// and the image is as it was.
bool LoadPng(const std::filesystem::path& path, CDibImage& image, FileError* error = nullptr);
bool LoadPngBytes(std::span<const std::uint8_t> bytes, CDibImage& image, FileError* error);

bool ReadPngInfo(std::span<const std::uint8_t> bytes, ImageInfo& info, FileError* error);

/// Sets both DPI values of the image, then writes at its depth. With `grayTransparent` level 255
/// of an 8-bit grey image without a transparent index becomes transparent in the file. An empty
/// image gives false and no file is touched.
bool SavePng(const std::filesystem::path& path, CDibImage& image, int dpi, bool grayTransparent,
             FileError* error = nullptr);

}  // namespace velloran
