#pragma once

// GIF in and out, over giflib.

#include <cstdint>
#include <filesystem>
#include <span>

#include "codecs/ImageInfo.h"
#include "io/FileError.h"

namespace velloran {

class CDibImage;

/// The first picture with its palette and transparent index, on the whole screen; DPI is 96.
/// 1, 4 or 8 bits by the entries of its colour table.
/// Sets sourceColours, sourceFlag (the horizontal DPI) and DPI. What a file that breaks off lacks
/// is white below its whole rows; without one whole row, and for other damage to the head, false,
/// and the image is as it was.
bool LoadGif(const std::filesystem::path& path, CDibImage& image, FileError* error = nullptr);
bool LoadGifBytes(std::span<const std::uint8_t> bytes, CDibImage& image, FileError* error);

bool ReadGifInfo(std::span<const std::uint8_t> bytes, ImageInfo& info, FileError* error);

/// Writes the used colours as a compact table. `tightFrame` keeps only the rectangle of pixels that
/// differ from the top left one; `transparentBackground` makes that pixel's colour transparent.
/// 24-bit images get a palette of their own. An empty image, and sides above 65535, give false and
/// no file is touched.
bool SaveGif(const std::filesystem::path& path, const CDibImage& image, bool transparentBackground,
             bool tightFrame, FileError* error = nullptr);

}  // namespace velloran
