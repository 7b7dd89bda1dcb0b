#pragma once

// GIF in and out, over giflib.

#include <cstdint>
#include <filesystem>
#include <span>

#include "codecs/ImageInfo.h"
#include "core/FileError.h"

namespace velloran {

class CDibImage;

/// The first picture with its palette and transparent index; DPI is 96.
/// Sets sourceColours, sourceFlag and DPI. False, the image as it was, for a damaged file.
bool LoadGif(const std::filesystem::path& path, CDibImage& image, FileError* error = nullptr);
bool LoadGifBytes(std::span<const std::uint8_t> bytes, CDibImage& image, FileError* error);

bool ReadGifInfo(std::span<const std::uint8_t> bytes, ImageInfo& info, FileError* error);

/// Writes the used colours as a compact table. `tightFrame` keeps only the rectangle of pixels that
/// differ from the top left one; `transparentBackground` makes that pixel's colour transparent.
bool SaveGif(const std::filesystem::path& path, const CDibImage& image, bool transparentBackground,
             bool tightFrame, FileError* error = nullptr);

}  // namespace velloran
