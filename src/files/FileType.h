#pragma once

// What a file is: by its content where that tells, else by its extension. Only plain files are
// opened, so a pipe or a device cannot hang the caller.

#include <cstdint>
#include <filesystem>
#include <span>
#include <string_view>

namespace velloran {

// clang-format off
enum FileTypeId : int {
    kTypeUnknown = 0, kTypeJpeg = 1, kTypeUfo = 2, kTypeGif = 3, kTypeBmp = 4, kTypePng = 5,
    kTypeTiff = 6, kTypeMetafile = 7, kTypeJ2k = 8, kTypeJp2 = 9, kTypeWebp = 10, kTypeRaw = 11,
};
// clang-format on

/// With `sniff` 0 the extension alone is looked at; else the first 512 bytes first. A file that
/// cannot be opened is known by its extension.
int DetectFileType(const std::filesystem::path& path, int sniff);

/// The type that an extension stands for, ignoring case; 0 for none and for unknown ones.
int FileTypeOfExtension(const std::filesystem::path& path);

/// "JPEG", "UFO" and so on; "unknown" for 0 and for numbers that are no id.
std::string_view FileTypeName(int id);

/// Says whether the raw reader knows a file. Heads alone do not tell: most raw files look like
/// TIFF, so it is asked for those and for heads that nothing else claims.
using RawRecognizer = bool (*)(const std::filesystem::path& path);

/// Installs the raw reader's recognition; null takes it away. Without one no file is camera raw
/// by its content.
void SetRawRecognizer(RawRecognizer recognizer);

/// What the installed recognition says, false without one.
bool IsCameraRaw(const std::filesystem::path& path);

/// Ids that the renamer takes, by content: 1, 3, 4, 5, 6, 8, 9, 10.
bool IsRenamerImage(const std::filesystem::path& path);

/// Whether a reduced result may be written under this name: ids 3, 4, 5, 6, 10 by extension.
bool IsColourReducedTarget(const std::filesystem::path& path);

/// The filter of open dialogs, parts divided by "|".
std::u16string_view SupportedFilter();

}  // namespace velloran
