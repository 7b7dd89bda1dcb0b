#pragma once

// The one way from a file to a working image and back.

#include <filesystem>

#include "codecs/Formats.h"
#include "codecs/ImageInfo.h"
#include "io/FileError.h"

namespace velloran {

class CDibImage;
class CParaBlock;
struct LoadNotes;

/// Reads a source by its content, `name` telling what it is called; a plain picture inside a page
/// file as well. Stores name and type id in the image's source record. True on success; else the
/// image is unchanged.
bool LoadImageFrom(ByteSource& source, const std::filesystem::path& name,
                   const LoadOptions& options, CDibImage& image, LoadNotes& notes,
                   FileError* error);

/// The same for a file. Stores path and type id in the image's source record. CMYK reversal follows
/// PARA_REVERSE_CMYK of the global block. True on success; else the image is empty or unchanged.
bool LoadImageFile(const std::filesystem::path& path, CDibImage& image, FileError* error = nullptr,
                   LoadNotes* notes = nullptr);

/// What the file says, without decoding pixels where the format allows; `type` is the id, also
/// when the rest fails. `notes`, where given, takes what stands beside the picture.
bool ReadImageInfo(const std::filesystem::path& path, int& type, ImageInfo& info,
                   FileError* error = nullptr, LoadNotes* notes = nullptr);

/// How many pages or frames a file holds, at least 1.
int CountPages(const std::filesystem::path& path);

/// Whether a name's extension is one of those that pictures are saved under: ids 1, 3, 4, 5, 6, 9
/// and 10.
bool HasImageWriter(const std::filesystem::path& path);

/// Writes as a type into an open sink; false with labels::kUnwritableType as reason when nothing is
/// saved as that type.
bool SaveImageTo(ByteSink& sink, int type, CDibImage& image, const SaveOptions& options,
                 FileError* error);

/// Writes a file by its extension, whole or not at all.
bool SaveImageAs(const std::filesystem::path& path, CDibImage& image, const SaveOptions& options,
                 FileError* error);

/// Writes by the target's extension. `colourIndex` is the position in the list of colour depths
/// (18 and 19 choose the 16-bit BMP writer); `cropGif` keeps only the tight frame of a GIF. False
/// with labels::kUnwritableType as reason when the extension is none of HasImageWriter. The image
/// may take the DPI written and be normalised in depth.
bool SaveImageFile(const std::filesystem::path& path, CDibImage& image, int quality, int dpi,
                   int colourIndex, bool cropGif, const CParaBlock& block,
                   FileError* error = nullptr);

}  // namespace velloran
