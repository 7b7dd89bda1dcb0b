#pragma once

// JPEG 2000 in and out, over OpenJPEG: files of the JP2 family and bare code streams.

#include "codecs/ImageInfo.h"
#include "codecs/LoadNotes.h"
#include "io/FileError.h"

namespace velloran {

class ByteSink;
class ByteSource;
class CDibImage;

/// 1 to 16 bits a component (above 8 the high 8 bits stay), signed ones moved up; grey, RGB, YCC,
/// CMYK, palettes; subsampled components and several tiles; an opacity channel goes to the alpha
/// plane unless it is opaque throughout. EXIF orientation is obeyed. Grey gives 8 bits, all else
/// 24. What a file that breaks off lacks is as coarse or as black as the code stream leaves it.
bool LoadJpeg2000(ByteSource& source, CDibImage& image, LoadNotes& notes, FileError* error);

bool ReadJpeg2000Info(ByteSource& source, ImageInfo& info, FileError* error);
bool ReadJpeg2000Notes(ByteSource& source, LoadNotes& notes, FileError* error);

/// Bytes that a file of this size is to have: a percentage of one byte a pixel, rounded.
std::int64_t Jp2TargetBytes(int width, int height, int ratePercent);

/// Writes a file of at most Jp2TargetBytes, wherever the picture can be coded in so little; what
/// is carried along may take half of that. Grey and 24 bits; others become one of the two. The file
/// tells `dpi`; the image's horizontal resolution stays as its vertical one was, and its vertical
/// one becomes `dpi`. An empty image gives false and nothing is written.
bool SaveJp2(ByteSink& sink, CDibImage& image, int ratePercent, int dpi, FileError* error);

}  // namespace velloran
