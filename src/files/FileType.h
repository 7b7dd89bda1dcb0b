#pragma once

// What a file is: by its content where that tells, else by its extension. Only plain files are
// opened, so a pipe or a device cannot hang the caller.

#include <filesystem>

#include "codecs/Formats.h"

namespace velloran {

/// With `sniff` 0 the extension alone is looked at; else the first 512 bytes first. A file that
/// cannot be opened is known by its extension.
int DetectFileType(const std::filesystem::path& path, int sniff);

/// The same for a source that is open already; `name` is what it is called.
int DetectFileType(ByteSource& source, const std::filesystem::path& name);

/// The type that an extension stands for, ignoring case; 0 for none and for unknown ones.
int FileTypeOfExtension(const std::filesystem::path& path);

/// Says whether the raw reader knows a file. Heads alone do not tell: most raw files look like
/// TIFF, so it is asked for those and for heads that nothing else claims.
using RawRecognizer = bool (*)(ByteSource& source, const std::filesystem::path& name);

/// Puts another recognition in the place of the raw reader's own; null takes it away. Without one
/// no file is camera raw by its content.
void SetRawRecognizer(RawRecognizer recognizer);
/// What the raw reader's recognition says.
bool IsCameraRaw(ByteSource& source, const std::filesystem::path& name);

/// Ids that the renamer takes, by content: 1, 3, 4, 5, 6, 8, 9, 10.
bool IsRenamerImage(const std::filesystem::path& path);

/// Whether a reduced result may be written under this name: ids 3, 4, 5, 6, 10 by extension.
bool IsColourReducedTarget(const std::filesystem::path& path);

}  // namespace velloran
