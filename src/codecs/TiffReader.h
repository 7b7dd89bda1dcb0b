#pragma once

// Decodes the first page of a TIFF.

#include <cstdint>

#include "codecs/LoadNotes.h"
#include "codecs/TiffFormat.h"
#include "codecs/TiffHandle.h"
#include "core/DibImage.h"

namespace velloran {

class TiffSamples;

class TiffReader {
 public:
    explicit TiffReader(ByteSource& source, int number = 1)
        : source_(source), handle_(source), number_(number) {}

    /// Reads the page's fields. Once, and first.
    bool ReadHead(FileError* error);
    ImageInfo Info() const { return TiffInfoOf(handle_.Get(), format_); }
    /// Depth to restore on saving: of the page for one sample, else as in the file.
    int SourceBits() const;

    /// Decodes into an empty page and turns it upright.
    bool ReadPage(CDibImage& page, LoadNotes& notes, FileError* error);
    void ReadNotes(LoadNotes& notes);
    int CountPictures() const;

 private:
    Metadata ReadMetadata() const;
    bool ShortenCutStrips();
    void FillPalette(CDibImage& page) const;
    bool FitsBand(std::int64_t bytes) const;
    int DecodeRows(CDibImage& page);
    int ReadScanlines(TiffSamples& samples);
    int ReadBands(TiffSamples& samples);

    ByteSource& source_;
    TiffHandle handle_;
    int number_;  // of the page, from 1
    TiffFormat format_;
};

}  // namespace velloran
