#pragma once

// PNG in and out, over libpng.

#include "codecs/ImageInfo.h"
#include "codecs/LoadNotes.h"
#include "io/FileError.h"

namespace velloran {

class ByteSink;
class ByteSource;
class CDibImage;

/// Palettes, grey and colour of every depth; 2 bits become 4, 16-bit samples keep their high byte,
/// alpha goes to the alpha plane unless it is opaque throughout. A palette with one clear entry
/// sets the transparent index, other palette alpha stands in the reserved bytes of the palette.
/// EXIF orientation is obeyed.
/// Sets sourceColours, sourceFlag (the horizontal DPI) and DPI. What a file that breaks off lacks
/// is white below its whole rows; without one whole row, and for other damage to the head, false,
/// and the image is as it was.
bool LoadPng(ByteSource& source, CDibImage& image, LoadNotes& notes, FileError* error);

bool ReadPngInfo(ByteSource& source, ImageInfo& info, FileError* error);
bool ReadPngNotes(ByteSource& source, LoadNotes& notes, FileError* error);

/// Sets both DPI values of the image, then writes at its depth. With `grayTransparent` level 255
/// of an 8-bit grey image without a transparent index becomes transparent in the file. An empty
/// image gives false and nothing is written.
bool SavePng(ByteSink& sink, CDibImage& image, int dpi, bool grayTransparent, FileError* error);

}  // namespace velloran
