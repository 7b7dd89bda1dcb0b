#pragma once

// DjVu pages, over DjVuLibre: files of one page, and documents whose pages lie in the file itself.

#include "codecs/ImageInfo.h"
#include "codecs/LoadNotes.h"
#include "io/FileError.h"

namespace velloran {

class ByteSource;
class CDibImage;

/// The page with this number, counted from 1: pages of ink alone give 1 bit (black is index 1),
/// all others 24; turned as the page says, with its resolution. False, the image as it was, for a
/// document whose pages lie in other files.
bool LoadDjvu(ByteSource& source, int page, CDibImage& image, LoadNotes& notes, FileError* error);

/// Of the first page.
bool ReadDjvuInfo(ByteSource& source, ImageInfo& info, FileError* error);
bool ReadDjvuNotes(ByteSource& source, LoadNotes& notes, FileError* error);

}  // namespace velloran
