#pragma once

// What a file is: by its content where that tells, else by its extension.

#include <filesystem>
#include <string_view>

namespace velloran {

enum FileTypeId : int {
    kTypeUnknown = 0, kTypeJpeg = 1, kTypeUfo = 2, kTypeGif = 3, kTypeBmp = 4, kTypePng = 5,
    kTypeTiff = 6, kTypeMetafile = 7, kTypeJ2k = 8, kTypeJp2 = 9, kTypeWebp = 10, kTypeRaw = 11,
};

/// With `sniff` 0 the extension alone is looked at; else the first 512 bytes first. A file that
/// cannot be opened is known by its extension.
int DetectFileType(const std::filesystem::path& path, int sniff);

/// "JPEG", "UFO" and so on; "unknown" for 0.
std::string_view FileTypeName(int id);

/// Ids that the renamer takes: 1, 3, 4, 5, 6, 8, 9, 10.
bool IsRenamerImage(const std::filesystem::path& path);

/// Whether a reduced result may be written under this name: ids 3, 4, 5, 6, 10 by extension.
bool IsColourReducedTarget(const std::filesystem::path& path);

/// The filter of open dialogs, parts divided by "|".
std::u16string_view SupportedFilter();

}  // namespace velloran
