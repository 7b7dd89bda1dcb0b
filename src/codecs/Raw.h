#pragma once

// Camera raw, over LibRaw.

#include "codecs/ImageInfo.h"
#include "codecs/LoadNotes.h"
#include "io/FileError.h"

namespace velloran {

class ByteSource;
class CDibImage;

/// Whether LibRaw opens the file as a camera's. Plain TIFF files are none.
bool IsRawFile(ByteSource& source);

/// 24 bits in sRGB with the camera's white balance, upright. Where the raw data cannot be decoded,
/// the full-size preview in the file, with a note; without one false, and the image is as it was.
bool LoadRaw(ByteSource& source, CDibImage& image, LoadNotes& notes, FileError* error);

bool ReadRawInfo(ByteSource& source, ImageInfo& info, FileError* error);
bool ReadRawNotes(ByteSource& source, LoadNotes& notes, FileError* error);

}  // namespace velloran
