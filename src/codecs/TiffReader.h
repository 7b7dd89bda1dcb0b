#pragma once

// Decodes the first page of a TIFF that lies in memory.

#include <cstdint>
#include <span>

#include "codecs/TiffFormat.h"
#include "codecs/TiffHandle.h"
#include "core/DibImage.h"

namespace velloran {

class TiffSamples;

class TiffReader {
 public:
    explicit TiffReader(std::span<const std::uint8_t> bytes) : bytes_(bytes), handle_(bytes) {}

    /// Reads the page's fields. Once, and first.
    bool ReadHead(FileError* error);
    ImageInfo Info() const { return TiffInfoOf(handle_.Get(), format_); }
    /// Depth to restore on saving: of the page for one sample, else as in the file.
    int SourceBits() const;

    /// Decodes into an empty page and turns it upright.
    bool ReadPage(CDibImage& page, FileError* error);

 private:
    void ShortenCutStrips();
    void FillPalette(CDibImage& page) const;
    bool FitsBand(std::int64_t bytes) const;
    int DecodeRows(CDibImage& page);
    int ReadScanlines(TiffSamples& samples);
    int ReadBands(TiffSamples& samples);

    std::span<const std::uint8_t> bytes_;
    TiffHandle handle_;
    TiffFormat format_;
};

}  // namespace velloran
