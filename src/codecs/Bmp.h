#pragma once

// BMP in and out: every depth and head found in the wild.

#include "codecs/ImageInfo.h"
#include "codecs/LoadNotes.h"
#include "io/FileError.h"

namespace velloran {

class ByteSink;
class ByteSource;
class CDibImage;

/// 1, 2, 4, 8, 16, 24 and 32 bits, RLE, bit fields, top-down rows and OS/2 heads; 2 bits become 4,
/// 16 and 32 bits become 24. The fields of 565 and 555 fill the high bits of the byte, so that what
/// the 16-bit writer cut comes back as it was cut; other fields are stretched to 0..255. Alpha goes
/// to the alpha plane, unless it is 0 everywhere or 255 everywhere.
///
/// A file that is cut off among its rows keeps those that it holds whole; the others are white, or
/// as light as the palette goes. Pixels that RLE codes skip have index 0. Sets sourceColours (the
/// bits of the file), sourceFlag (the horizontal DPI) and DPI. False, the image as it was, for a
/// damaged head or palette, a file without a whole row, and codings that are no pages'.
bool LoadBmp(ByteSource& source, CDibImage& image, LoadNotes& notes, FileError* error);

bool ReadBmpInfo(ByteSource& source, ImageInfo& info, FileError* error);

/// Writes 1, 4, 8 and 24 bits as they are, with the image's DPI. False for an empty image.
bool SaveBmp(ByteSink& sink, const CDibImage& image, FileError* error);

/// Writes 16 bits a pixel, 5-6-5 or 5-5-5; other depths are widened to 24 bits first. An empty
/// image, of height 0, writes only the heads.
bool SaveBmp16(ByteSink& sink, const CDibImage& image, bool is565, FileError* error);

}  // namespace velloran
