#include "codecs/TiffFormat.h"

#include <algorithm>

#include "codecs/DecodedPage.h"
#include "codecs/TiffHandle.h"

namespace velloran {
namespace {

using Kind = TiffFormat::Kind;

bool IsGrayOrPalette(std::uint16_t photometric) {
    return photometric == PHOTOMETRIC_MINISWHITE || photometric == PHOTOMETRIC_MINISBLACK ||
           photometric == PHOTOMETRIC_PALETTE;
}

bool IsFax(std::uint16_t compression) {
    return compression == COMPRESSION_CCITTRLE || compression == COMPRESSION_CCITTRLEW ||
           compression == COMPRESSION_CCITTFAX3 || compression == COMPRESSION_CCITTFAX4;
}

/// Files without the field exist; fax machines meant white to be zero.
std::uint16_t GuessPhotometric(const TiffFormat& format) {
    if (format.samples >= 3)
        return PHOTOMETRIC_RGB;
    return IsFax(format.compression) ? PHOTOMETRIC_MINISWHITE : PHOTOMETRIC_MINISBLACK;
}

void ReadResolution(TIFF* tiff, TiffFormat& format) {
    const auto unit = TiffField<std::uint16_t>(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    if (unit != RESUNIT_INCH && unit != RESUNIT_CENTIMETER)
        return;
    const double perInch = unit == RESUNIT_CENTIMETER ? 2.54 : 1.0;
    const double x = static_cast<double>(TiffField<float>(tiff, TIFFTAG_XRESOLUTION, 0)) * perInch;
    const double y = static_cast<double>(TiffField<float>(tiff, TIFFTAG_YRESOLUTION, 0)) * perInch;
    format.xDpi = PlausibleDpi(x > 0 ? x : y);
    format.yDpi = PlausibleDpi(y > 0 ? y : x);
}

void ReadAlpha(TIFF* tiff, TiffFormat& format) {
    std::uint16_t count = 0;
    std::uint16_t* types = nullptr;
    if (TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &count, &types) != 1 || types == nullptr)
        return;
    for (int i = 0; i < count; ++i) {
        if (types[i] != EXTRASAMPLE_ASSOCALPHA && types[i] != EXTRASAMPLE_UNASSALPHA)
            continue;
        const int sample = format.samples - count + i;
        if (sample >= 1) {
            format.alphaSample = sample;
            format.associatedAlpha = types[i] == EXTRASAMPLE_ASSOCALPHA;
        }
        return;
    }
}

bool HasPlainSamples(TIFF* tiff) {
    const auto type = TiffField<std::uint16_t>(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    return type == SAMPLEFORMAT_UINT || type == SAMPLEFORMAT_VOID;
}

Kind KindOf(TIFF* tiff, const TiffFormat& format) {
    if (!HasPlainSamples(tiff) || format.compression == COMPRESSION_OJPEG)
        return Kind::kRgba;
    const bool wide = format.bits == 8 || format.bits == 16;
    if (IsGrayOrPalette(format.photometric)) {
        const bool narrow = format.bits == 1 || format.bits == 2 || format.bits == 4;
        if (format.samples == 1 && (narrow || format.bits == 8))
            return Kind::kIndexed;
        const bool palette = format.photometric == PHOTOMETRIC_PALETTE;
        return wide && (!palette || format.bits == 8) ? Kind::kGray : Kind::kRgba;
    }
    if (!wide)
        return Kind::kRgba;
    if (format.photometric == PHOTOMETRIC_RGB && format.samples >= 3)
        return Kind::kRgb;
    if (format.photometric == PHOTOMETRIC_YCBCR && format.compression == COMPRESSION_JPEG &&
        format.bits == 8 && format.samples == 3 && !format.separate)
        return Kind::kRgb;
    const auto inks = TiffField<std::uint16_t>(tiff, TIFFTAG_INKSET, INKSET_CMYK);
    if (format.photometric == PHOTOMETRIC_SEPARATED && format.samples >= 4 && inks == INKSET_CMYK)
        return Kind::kCmyk;
    return Kind::kRgba;
}

}  // namespace

int TiffFormat::ColorSamples() const {
    return kind == Kind::kCmyk ? 4 : (kind == Kind::kRgb || kind == Kind::kRgba ? 3 : 1);
}

int TiffFormat::PageBits() const {
    if (ColorSamples() > 1)
        return 24;
    return bits == 1 ? 1 : (bits <= 4 ? 4 : 8);
}

std::int64_t TiffFormat::DecodedBytes() const {
    return (std::int64_t{width} * bits * samples + 7) / 8 * height;
}

std::int64_t TiffFormat::MaxRatio() const {
    switch (compression) {
        case COMPRESSION_NONE:  // shrinks nothing, but files that break off early are read
            return 16;
        case COMPRESSION_PACKBITS:
            return 64;
        case COMPRESSION_JPEG:
        case COMPRESSION_OJPEG:
            return 512;
        case COMPRESSION_DEFLATE:
        case COMPRESSION_ADOBE_DEFLATE:
            return 1032;
        case COMPRESSION_LZW:
            return 2731;
        default:  // a blank fax row may take one bit
            return IsFax(compression) ? std::max<std::int64_t>(width, 32) : 20000;
    }
}

bool ReadTiffFormat(const TiffHandle& handle, TiffFormat& format, FileError* error) {
    TIFF* tiff = handle.Get();
    const auto width = TiffField<std::uint32_t>(tiff, TIFFTAG_IMAGEWIDTH, 0);
    const auto height = TiffField<std::uint32_t>(tiff, TIFFTAG_IMAGELENGTH, 0);
    if (!IsAcceptableSize(width, height, 1))
        return FailContent(error, "the picture has no acceptable size", FileReason::kTooLarge);
    format.width = static_cast<int>(width);
    format.height = static_cast<int>(height);
    format.bits = TiffField<std::uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    format.samples = TiffField<std::uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    constexpr int kMaxSamples = 64;
    if (format.bits < 1 || format.bits > 64 || format.samples < 1 || format.samples > kMaxSamples)
        return FailContent(error, "samples of this size or count are not read",
                           FileReason::kKindNotRead);
    format.compression = TiffField<std::uint16_t>(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    format.photometric =
        TiffField<std::uint16_t>(tiff, TIFFTAG_PHOTOMETRIC, GuessPhotometric(format));
    format.orientation = TiffField<std::uint16_t>(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    if (format.orientation < ORIENTATION_TOPLEFT || format.orientation > ORIENTATION_LEFTBOT)
        format.orientation = ORIENTATION_TOPLEFT;
    format.separate = format.samples > 1 &&
                      TiffField<std::uint16_t>(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) ==
                          PLANARCONFIG_SEPARATE;
    format.tiled = TIFFIsTiled(tiff) != 0;
    ReadAlpha(tiff, format);
    ReadResolution(tiff, format);
    format.kind = KindOf(tiff, format);
    char reason[1024] = "";
    if (format.kind == TiffFormat::Kind::kRgba && TIFFRGBAImageOK(tiff, reason) == 0)
        return FailContent(error, reason, FileReason::kKindNotRead);
    if (!IsAcceptableSize(width, height, format.PageBits() + (format.alphaSample > 0 ? 8 : 0)))
        return FailContent(error, "the picture is too large", FileReason::kTooLarge);
    return true;
}

TiffPalette TiffPaletteOf(TIFF* tiff, const TiffFormat& format) {
    TiffPalette palette;
    if (format.photometric != PHOTOMETRIC_PALETTE || format.bits > 8 ||
        TIFFGetField(tiff, TIFFTAG_COLORMAP, &palette.red, &palette.green, &palette.blue) != 1)
        return {};
    palette.count = 1 << format.bits;
    const auto isByte = [&](const std::uint16_t* levels) {
        return std::all_of(levels, levels + palette.count,
                           [](std::uint16_t level) { return level < 256; });
    };
    if (isByte(palette.red) && isByte(palette.green) && isByte(palette.blue))
        palette.shift = 0;
    return palette;
}

ImageInfo TiffInfoOf(TIFF* tiff, const TiffFormat& format) {
    ImageInfo info;
    const bool sideways = format.IsSideways();
    info.width = sideways ? format.height : format.width;
    info.height = sideways ? format.width : format.height;
    info.xDpi = sideways ? format.yDpi : format.xDpi;
    info.yDpi = sideways ? format.xDpi : format.yDpi;
    info.bitsPerPixel = format.bits * format.samples;
    const TiffPalette palette = TiffPaletteOf(tiff, format);
    info.colorsUsed = palette.count;
    info.gray = format.PageBits() == 8;
    for (int i = 0; i < palette.count; ++i)
        info.gray = info.gray && palette.red[i] >> palette.shift == i &&
                    palette.green[i] >> palette.shift == i && palette.blue[i] >> palette.shift == i;
    return info;
}

}  // namespace velloran
