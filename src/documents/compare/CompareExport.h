#pragma once

// What a comparison is exported as: text with commas and CR LF line ends, and a picture. Rows and
// columns count from 0, rows from the top of the picture; channels come red, green, blue. A file
// appears whole or not at all.

#include <filesystem>

#include "documents/compare/Compare.h"
#include "io/FileError.h"

namespace velloran {

/// The differences of all pixels, or of those alone that differ in some channel.
bool ExportPixels(const CDibImage& image1, const CDibImage& image2, bool nonZeroOnly,
                  const std::filesystem::path& file, FileError* error);

/// How often each level 0 to 255 occurs among the differences.
bool ExportLevels(const DiffStats& stats, const std::filesystem::path& file, FileError* error);

/// The same, counted on the samples of the difference image.
bool ExportFrequency(const CDibImage& difference, const std::filesystem::path& file,
                     FileError* error);

/// The difference image by the extension of the file, ".png" behind one that is none of a picture.
bool ExportDifference(CDibImage& difference, const std::filesystem::path& file, FileError* error);

/// The path that ExportDifference writes to.
std::filesystem::path DifferencePath(const std::filesystem::path& file);

}  // namespace velloran
