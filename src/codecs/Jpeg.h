#pragma once

// JPEG in and out, over libjpeg-turbo, and `.ufo`, a JPEG with a damaged head.

#include "codecs/ImageInfo.h"
#include "codecs/JpegRules.h"
#include "codecs/LoadNotes.h"
#include "io/FileError.h"

namespace velloran {

class ByteSink;
class ByteSource;
class CDibImage;

/// 1 component gives 8 bits with the identity grey palette, 3 and 4 give 24 bits. Honours the EXIF
/// resolution and orientation. What a cut-off file lacks is white: rows of MCUs that are not told
/// whole, in a file of several scans those that the first scan does not reach. `reverseCmyk`
/// inverts CMYK data, which becomes RGB by the file's own profile where it has one of inks. Sets
/// sourceColours (components * 8), sourceFlag (the horizontal DPI) and DPI, and keeps what a new
/// JPEG may inherit. False, the image as it was, for less than 10 bytes, for a file without a
/// readable head, and for kinds that no page comes in: 2 components, 12 bits, lossless, more scans
/// than the file's size pays for.
bool LoadJpeg(ByteSource& source, CDibImage& image, bool reverseCmyk, LoadNotes& notes,
              FileError* error);

/// Overwrites the first 10 bytes (in memory) by a JFIF head and decodes; more than 10 are needed.
bool LoadUfo(ByteSource& source, CDibImage& image, bool reverseCmyk, LoadNotes& notes,
             FileError* error);

/// Grey or colour as the image is; quality, DPI, and the JPG_* parameters. With JPG_SRC_* the head
/// that was kept with `image` when it was loaded, else with `sourceImage` (may be null), gives
/// tables, coding and sampling, as far as its values can be written. Quality is limited to 1..100.
/// The image may be normalised in depth. False, and nothing is written, for an empty image and for
/// sides above 65500 pixels.
bool SaveJpeg(ByteSink& sink, CDibImage& image, const CDibImage* sourceImage, int quality, int dpi,
              const JpegRules& rules, FileError* error);

/// Bits per pixel (components * 8) and the DPI of the head: density, with unit 2 times 254 / 10000
/// rounded half up. False, nothing set, without a readable head.
bool ReadJpegHeader(ByteSource& source, int& outBits, int& outDpi);

bool ReadJpegInfo(ByteSource& source, ImageInfo& info, FileError* error);
bool ReadUfoInfo(ByteSource& source, ImageInfo& info, FileError* error);
bool ReadJpegNotes(ByteSource& source, LoadNotes& notes, FileError* error);
bool ReadUfoNotes(ByteSource& source, LoadNotes& notes, FileError* error);

/// Luma sampling factors of the automatic rule; chroma is always 1 x 1.
struct LumaSampling {
    int horizontal = 1, vertical = 1;
    bool operator==(const LumaSampling&) const = default;
};
LumaSampling AutomaticLumaSampling(int quality, int width, int height);

}  // namespace velloran
