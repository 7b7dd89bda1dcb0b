#pragma once

// What a TIFF page says of its samples, and how they are to be read.

#include <tiffio.h>

#include <cstdint>

#include "codecs/ImageInfo.h"
#include "io/FileError.h"

namespace velloran {

class TiffHandle;

struct TiffFormat {
    /// Indexed: one sample of 1, 2, 4 or 8 bits, grey or palette. The others have samples of 8 or
    /// 16 bits. Rgba is left to libtiff's own conversion.
    enum class Kind { kIndexed, kGray, kRgb, kCmyk, kRgba };

    Kind kind = Kind::kRgba;
    int width = 0, height = 0;  // as stored, before the orientation
    int bits = 1, samples = 1;
    std::uint16_t photometric = PHOTOMETRIC_MINISBLACK, compression = COMPRESSION_NONE;
    std::uint16_t orientation = ORIENTATION_TOPLEFT;
    bool separate = false, tiled = false;
    int alphaSample = -1;  // among the samples
    bool associatedAlpha = false;
    int xDpi = 96, yDpi = 96;  // along stored rows and columns

    int ColorSamples() const;
    int PageBits() const;
    bool IsSideways() const { return orientation >= ORIENTATION_LEFTTOP; }
    /// Bytes of all samples of the page.
    std::int64_t DecodedBytes() const;
    /// How much the coding can shrink at best.
    std::int64_t MaxRatio() const;
};

/// Reads the current page's fields; false with a reason when it cannot become an image.
bool ReadTiffFormat(const TiffHandle& handle, TiffFormat& format, FileError* error);

/// The page as it will lie upright.
ImageInfo TiffInfoOf(TIFF* tiff, const TiffFormat& format);

/// Three arrays of 1 << bits levels of 16 bits, null without a palette.
struct TiffPalette {
    std::uint16_t* red = nullptr;
    std::uint16_t* green = nullptr;
    std::uint16_t* blue = nullptr;
    int count = 0;
    int shift = 8;  // some writers put 8-bit levels there
};
TiffPalette TiffPaletteOf(TIFF* tiff, const TiffFormat& format);

}  // namespace velloran
