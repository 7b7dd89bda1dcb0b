#pragma once

// WebP in and out, over libwebp.

#include "codecs/ImageInfo.h"
#include "codecs/LoadNotes.h"
#include "io/FileError.h"

namespace velloran {

class ByteSink;
class ByteSource;
class CDibImage;

/// 24 bits, alpha in the alpha plane unless it is opaque throughout; the first frame of an
/// animation at its place on a clear white canvas. DPI is 96. EXIF
/// orientation is obeyed.
/// Sets sourceColours, sourceFlag (the horizontal DPI) and DPI. What a file that breaks off lacks
/// is white below its whole rows; without one whole row, and for other damage to the head, false,
/// and the image is as it was.
bool LoadWebp(ByteSource& source, CDibImage& image, LoadNotes& notes, FileError* error);
/// The page with this number, counted from 1; a later frame of an animation as it is seen then.
bool LoadWebpPage(ByteSource& source, int page, CDibImage& image, LoadNotes& notes,
                  FileError* error);

bool ReadWebpInfo(ByteSource& source, ImageInfo& info, FileError* error);
bool ReadWebpNotes(ByteSource& source, LoadNotes& notes, FileError* error);

/// Quality 100 is lossless, and so is a black-and-white image, which is widened to grey; other
/// palettes are widened to 24 bits. Other qualities are limited to 0..99. An empty image, and
/// sides above 16383, give false and nothing is written.
bool SaveWebp(ByteSink& sink, const CDibImage& image, int quality, FileError* error);

}  // namespace velloran
