#include "codecs/TiffRgba.h"

#include <algorithm>

#include "codecs/DecodedPage.h"
#include "codecs/TiffHandle.h"
#include "codecs/TiffSamples.h"
#include "core/DibImage.h"

namespace velloran {
namespace {

/// A strip, or a tile, as libtiff hands it out: the bottom row first.
struct Block {
    std::int64_t width = 0, height = 0;
};

Block BlockOf(TIFF* tiff, const TiffFormat& format) {
    if (format.tiled)
        return {TiffField<std::uint32_t>(tiff, TIFFTAG_TILEWIDTH, 0),
                TiffField<std::uint32_t>(tiff, TIFFTAG_TILELENGTH, 0)};
    const auto rows = TiffField<std::uint32_t>(tiff, TIFFTAG_ROWSPERSTRIP, 1);
    return {format.width, std::min<std::int64_t>(rows, format.height)};
}

void PlaceRow(const std::uint32_t* from, int count, bool withAlpha, std::uint8_t* bgr,
              std::uint8_t* alpha) {
    for (int x = 0; x < count; ++x, bgr += 3) {
        const std::uint32_t pixel = from[x];
        const std::uint32_t opacity = withAlpha ? TIFFGetA(pixel) : 255;
        bgr[0] = UnmultipliedSample(TIFFGetB(pixel), opacity);
        bgr[1] = UnmultipliedSample(TIFFGetG(pixel), opacity);
        bgr[2] = UnmultipliedSample(TIFFGetR(pixel), opacity);
        if (withAlpha)
            alpha[x] = static_cast<std::uint8_t>(opacity);
    }
}

}  // namespace

std::int64_t TiffRgbaScratch(TIFF* tiff, const TiffFormat& format) {
    const Block block = BlockOf(tiff, format);
    if (!IsAcceptableSize(block.width, block.height, 32))
        return 0;
    return block.width * block.height * 4;
}

int ReadTiffRgba(TIFF* tiff, const TiffFormat& format, CDibImage& page) {
    // The page is turned upright as a whole later, so libtiff must not turn parts of it.
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    const Block block = BlockOf(tiff, format);
    const auto pixels = static_cast<std::size_t>(block.width * block.height);
    const PixelBuffer scratch = MakePixelBuffer(pixels * 4);
    auto* raster = reinterpret_cast<std::uint32_t*>(scratch.get());
    const bool withAlpha = format.alphaSample >= 0;
    for (std::int64_t top = 0; top < format.height; top += block.height) {
        const std::int64_t rows = std::min(block.height, format.height - top);
        for (std::int64_t left = 0; left < format.width; left += block.width) {
            const auto row = static_cast<std::uint32_t>(top);
            const int read = format.tiled
                                 ? TIFFReadRGBATileExt(tiff, static_cast<std::uint32_t>(left), row,
                                                       raster, /*stop_on_error=*/1)
                                 : TIFFReadRGBAStripExt(tiff, row, raster, /*stop_on_error=*/1);
            if (read == 0)
                return static_cast<int>(top);
            const std::int64_t last = (format.tiled ? block.height : rows) - 1;
            for (std::int64_t y = 0; y < rows; ++y) {
                const int target = static_cast<int>(top + y);
                PlaceRow(raster + (last - y) * block.width,
                         static_cast<int>(std::min(block.width, format.width - left)), withAlpha,
                         RowFromTop(page, target) + 3 * left,
                         withAlpha ? AlphaRowFromTop(page, target) + left : nullptr);
            }
        }
    }
    return format.height;
}

}  // namespace velloran
