#pragma once

// Decodes a JPEG 2000 file or code stream.

#include "codecs/ImageInfo.h"
#include "codecs/Jp2Boxes.h"
#include "codecs/LoadNotes.h"
#include "core/DibImage.h"
#include "io/FileError.h"

struct opj_image;

namespace velloran {

struct OpjInput;

class Jpeg2000Reader {
 public:
    explicit Jpeg2000Reader(ByteSource& source) : source_(source) {}

    /// Reads boxes and the code stream's head. Once, and first.
    bool ReadHead(FileError* error);
    ImageInfo Info() const;
    int SourceBits() const;

    /// Decodes into an empty page and turns it upright.
    bool ReadPage(CDibImage& page, LoadNotes& notes, FileError* error);
    /// Moves out what travels with the picture; behind ReadPage.
    void ReadNotes(LoadNotes& notes);

 private:
    int ColorCount() const;
    bool IsPlausible() const;
    bool EndsWhole() const;
    bool LimitTileLengths(OpjInput& input, FileError* error) const;
    bool Place(const opj_image& image, CDibImage& page, FileError* error) const;

    ByteSource& source_;
    Jp2Head head_;
    int orientation_ = 1;
};

}  // namespace velloran
