#pragma once

// WebP in and out, over libwebp.

#include <cstdint>
#include <filesystem>
#include <span>

#include "codecs/ImageInfo.h"
#include "core/FileError.h"

namespace velloran {

class CDibImage;

/// 24 bits, alpha in the alpha plane; the first frame of an animation.
/// Sets sourceColours, sourceFlag and DPI. False, the image as it was, for a damaged file.
bool LoadWebp(const std::filesystem::path& path, CDibImage& image, FileError* error = nullptr);
bool LoadWebpBytes(std::span<const std::uint8_t> bytes, CDibImage& image, FileError* error);

bool ReadWebpInfo(std::span<const std::uint8_t> bytes, ImageInfo& info, FileError* error);

/// Quality 100 is lossless, and so is a black-and-white image, which is widened to grey; other
/// palettes are widened to 24 bits.
bool SaveWebp(const std::filesystem::path& path, const CDibImage& image, int quality,
              FileError* error = nullptr);

}  // namespace velloran
