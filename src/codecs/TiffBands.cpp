#include "codecs/TiffBands.h"

#include <algorithm>
#include <cstring>

#include "codecs/TiffHandle.h"

namespace velloran {

TiffBands::TiffBands(TIFF* tiff, const TiffFormat& format)
    : tiff_(tiff), format_(format), planes_(format.separate ? format.samples : 1) {
    if (!format.tiled) {
        const auto rows = TiffField<std::uint32_t>(tiff, TIFFTAG_ROWSPERSTRIP, 1);
        rows_ = static_cast<int>(
            std::clamp<std::uint32_t>(rows, 1, static_cast<std::uint32_t>(format.height)));
        rowBytes_ = TIFFScanlineSize(tiff);
        return;
    }
    const auto width = TiffField<std::uint32_t>(tiff, TIFFTAG_TILEWIDTH, 0);
    const auto length = TiffField<std::uint32_t>(tiff, TIFFTAG_TILELENGTH, 0);
    const std::int64_t bits = std::int64_t{format.bits} * (format.separate ? 1 : format.samples);
    if (!IsAcceptableSize(width, length, static_cast<int>(std::min<std::int64_t>(bits, 256))) ||
        width * bits % 8 != 0)
        return;
    tileWidth_ = static_cast<int>(width);
    rows_ = static_cast<int>(length);
    tileBytes_ = TIFFTileSize(tiff);
    tileRowBytes_ = TIFFTileRowSize(tiff);
    if (tileRowBytes_ != width * bits / 8 || tileBytes_ < tileRowBytes_ * rows_)
        rows_ = 0;
    rowBytes_ = (std::int64_t{format.width} + tileWidth_ - 1) / tileWidth_ * tileRowBytes_;
}

std::int64_t TiffBands::Bytes() const {
    const std::int64_t pixelBits =
        std::int64_t{format_.bits} * (format_.separate ? 1 : format_.samples);
    if (rows_ < 1 || rowBytes_ < (format_.width * pixelBits + 7) / 8 ||
        rowBytes_ > kMaxImageBytes / rows_ / planes_)
        return 0;
    return rowBytes_ * rows_ * planes_ + tileBytes_;
}

void TiffBands::Allocate() {
    band_ = MakePixelBuffer(static_cast<std::size_t>(rowBytes_ * rows_ * planes_));
    if (tileBytes_ > 0)
        tile_ = MakePixelBuffer(static_cast<std::size_t>(tileBytes_));
    if (planes_ > 1)
        joined_.resize(static_cast<std::size_t>(format_.width) * format_.samples *
                       (format_.bits / 8));
}

bool TiffBands::Read(int firstRow) {
    const std::int64_t planeBytes = rowBytes_ * rows_;
    const std::int64_t wanted = rowBytes_ * std::min(rows_, format_.height - firstRow);
    for (int plane = 0; plane < planes_; ++plane) {
        std::uint8_t* to = band_.get() + plane * planeBytes;
        if (format_.tiled) {
            if (!ReadTiles(firstRow, plane, to))
                return false;
            continue;
        }
        const std::uint32_t strip = TIFFComputeStrip(tiff_, static_cast<std::uint32_t>(firstRow),
                                                     static_cast<std::uint16_t>(plane));
        if (TIFFReadEncodedStrip(tiff_, strip, to, wanted) < wanted)
            return false;
    }
    return true;
}

bool TiffBands::ReadTiles(int firstRow, int plane, std::uint8_t* to) {
    const int rows = std::min(rows_, format_.height - firstRow);
    for (std::int64_t x = 0; x < format_.width; x += tileWidth_, to += tileRowBytes_) {
        if (TIFFReadTile(tiff_, tile_.get(), static_cast<std::uint32_t>(x),
                         static_cast<std::uint32_t>(firstRow), 0,
                         static_cast<std::uint16_t>(plane)) < 0)
            return false;
        for (int y = 0; y < rows; ++y)
            std::memcpy(to + y * rowBytes_, tile_.get() + y * tileRowBytes_,
                        static_cast<std::size_t>(tileRowBytes_));
    }
    return true;
}

std::uint8_t* TiffBands::Row(int y) {
    std::uint8_t* first = band_.get() + y * rowBytes_;
    if (planes_ == 1)
        return first;
    const std::size_t size = static_cast<std::size_t>(format_.bits / 8);
    const std::size_t pixelSize = size * static_cast<std::size_t>(planes_);
    for (int plane = 0; plane < planes_; ++plane) {
        const std::uint8_t* from = first + plane * rowBytes_ * rows_;
        std::uint8_t* to = joined_.data() + static_cast<std::size_t>(plane) * size;
        for (int x = 0; x < format_.width; ++x, from += size, to += pixelSize)
            std::memcpy(to, from, size);
    }
    return joined_.data();
}

}  // namespace velloran
