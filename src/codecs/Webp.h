#pragma once

// WebP in and out, over libwebp.

#include <cstdint>
#include <filesystem>
#include <span>

#include "codecs/ImageInfo.h"
#include "io/FileError.h"

namespace velloran {

class CDibImage;

/// 24 bits, alpha in the alpha plane unless it is opaque throughout; the first frame of an
/// animation at its place on a clear white canvas. DPI is 96.
/// Sets sourceColours, sourceFlag (the horizontal DPI) and DPI. What a file that breaks off lacks
/// is white below its whole rows; without one whole row, and for other damage to the head, false,
/// and the image is as it was.
bool LoadWebp(const std::filesystem::path& path, CDibImage& image, FileError* error = nullptr);
bool LoadWebpBytes(std::span<const std::uint8_t> bytes, CDibImage& image, FileError* error);

bool ReadWebpInfo(std::span<const std::uint8_t> bytes, ImageInfo& info, FileError* error);

/// Quality 100 is lossless, and so is a black-and-white image, which is widened to grey; other
/// palettes are widened to 24 bits. Other qualities are limited to 0..99. An empty image, and
/// sides above 16383, give false and no file is touched.
bool SaveWebp(const std::filesystem::path& path, const CDibImage& image, int quality,
              FileError* error = nullptr);

}  // namespace velloran
