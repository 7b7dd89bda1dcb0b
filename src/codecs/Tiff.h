#pragma once

// TIFF in and out, over libtiff.

#include "codecs/ImageInfo.h"
#include "codecs/LoadNotes.h"
#include "io/FileError.h"

namespace velloran {

class ByteSink;
class ByteSource;
class CDibImage;

/// The first page, upright: bilevel, palette, grey, RGB, CMYK, 16-bit, tiled, JPEG-coded,
/// white-is-zero. Alpha goes to the alpha plane unless it is opaque throughout.
/// Sets sourceColours, sourceFlag (the horizontal DPI) and DPI. What a file that breaks off lacks
/// is white below its whole rows; without one whole row, and for other damage to the head, false,
/// and the image is as it was.
bool LoadTiff(ByteSource& source, CDibImage& image, LoadNotes& notes, FileError* error);
/// The page with this number, counted from 1; previews and masks are no pages.
bool LoadTiffPage(ByteSource& source, int page, CDibImage& image, LoadNotes& notes,
                  FileError* error);

bool ReadTiffInfo(ByteSource& source, ImageInfo& info, FileError* error);
bool ReadTiffNotes(ByteSource& source, LoadNotes& notes, FileError* error);

enum class TiffCompression { kNone, kGroup4, kLzw, kDeflate, kJpeg };
/// What suits the depth: Group 4 for black and white, else a lossless one.
TiffCompression TiffCompressionFor(const CDibImage& image);

/// Sets both DPI values of the image, then writes at its depth. Group 4 takes 1-bit images only,
/// JPEG only grey and 24 bits (with the image's quality). An empty image gives false and nothing
/// is written.
bool SaveTiff(ByteSink& sink, CDibImage& image, TiffCompression compression, int dpi,
              FileError* error);

}  // namespace velloran
