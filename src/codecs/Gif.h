#pragma once

// GIF in and out, over giflib.

#include "codecs/ImageInfo.h"
#include "codecs/LoadNotes.h"
#include "io/FileError.h"

namespace velloran {

class ByteSink;
class ByteSource;
class CDibImage;

/// The first picture with its palette and transparent index, on the whole screen; DPI is 96.
/// 1, 4 or 8 bits by the entries of its colour table.
/// Sets sourceColours, sourceFlag (the horizontal DPI) and DPI. What a file that breaks off lacks
/// is white below its whole rows; without one whole row, and for other damage to the head, false,
/// and the image is as it was.
bool LoadGif(ByteSource& source, CDibImage& image, LoadNotes& notes, FileError* error);
/// The page with this number, counted from 1; a later picture of an animation as it is seen then,
/// 24 bits.
bool LoadGifPage(ByteSource& source, int page, CDibImage& image, LoadNotes& notes,
                 FileError* error);

bool ReadGifInfo(ByteSource& source, ImageInfo& info, FileError* error);
bool ReadGifNotes(ByteSource& source, LoadNotes& notes, FileError* error);

/// Writes the used colours as a compact table. `tightFrame` keeps only the rectangle of pixels that
/// differ from the top left one; `transparentBackground` makes that pixel's colour transparent.
/// 24-bit images get a palette of their own. An empty image, and sides above 65535, give false and
/// nothing is written.
bool SaveGif(ByteSink& sink, const CDibImage& image, bool transparentBackground, bool tightFrame,
             FileError* error);

}  // namespace velloran
