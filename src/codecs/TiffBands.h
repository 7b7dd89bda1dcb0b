#pragma once

// Strips of separate planes, and tiles: bands of rows that have to be read together.

#include <cstdint>
#include <vector>

#include "codecs/TiffFormat.h"
#include "core/PixelMemory.h"

namespace velloran {

class TiffBands {
 public:
    TiffBands(TIFF* tiff, const TiffFormat& format);

    /// Rows of a band; the last one may be shorter.
    int Rows() const { return rows_; }
    /// What Allocate will take; 0 when the page's tiles cannot be read.
    std::int64_t Bytes() const;
    void Allocate();

    /// Reads the band that starts at `firstRow`; false when a part of it fails.
    bool Read(int firstRow);
    /// Row y of the band that was read, samples side by side. May be changed.
    std::uint8_t* Row(int y);

 private:
    bool ReadTiles(int firstRow, int plane, std::uint8_t* to);

    TIFF* tiff_;
    const TiffFormat& format_;
    int rows_ = 0;
    int planes_ = 1;
    std::int64_t rowBytes_ = 0;                      // of one plane
    std::int64_t tileBytes_ = 0, tileRowBytes_ = 0;  // 0 without tiles
    int tileWidth_ = 0;
    PixelBuffer band_, tile_;
    std::vector<std::uint8_t> joined_;
};

}  // namespace velloran
