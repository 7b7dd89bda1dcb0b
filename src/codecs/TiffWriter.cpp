#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "codecs/DecodedPage.h"
#include "codecs/EncodedPage.h"
#include "codecs/Metadata.h"
#include "codecs/Tiff.h"
#include "codecs/TiffExif.h"
#include "codecs/TiffHandle.h"
#include "core/DibImage.h"
#include "core/IndexRows.h"
#include "io/ByteSink.h"

namespace velloran {
namespace {

/// What the page holds: samples of a pixel, and what they mean.
struct TiffPlan {
    int bits = 8;     // of a sample
    int samples = 1;  // with alpha
    std::uint16_t photometric = PHOTOMETRIC_MINISBLACK;
    std::uint16_t compression = COMPRESSION_NONE;
    bool withAlpha = false;
    bool predict = false;
    int rowsPerStrip = 1;
};

std::uint16_t PhotometricOf(const CDibImage& image) {
    if (image.GetBpp() == 24)
        return PHOTOMETRIC_RGB;
    if (image.HasGrayPalette())
        return PHOTOMETRIC_MINISBLACK;
    return image.IsBW() ? PHOTOMETRIC_MINISWHITE : PHOTOMETRIC_PALETTE;
}

std::uint16_t CodeOf(TiffCompression compression) {
    switch (compression) {
        case TiffCompression::kGroup4:
            return COMPRESSION_CCITTFAX4;
        case TiffCompression::kLzw:
            return COMPRESSION_LZW;
        case TiffCompression::kDeflate:
            return COMPRESSION_ADOBE_DEFLATE;
        case TiffCompression::kJpeg:
            return COMPRESSION_JPEG;
        default:
            return COMPRESSION_NONE;
    }
}

/// Strips of about a megabyte; a fax page is one, as fax readers expect.
int RowsPerStrip(const CDibImage& image, const TiffPlan& plan) {
    if (plan.compression == COMPRESSION_CCITTFAX4)
        return image.GetHeight();
    constexpr std::int64_t kStripBytes = 1 << 20;
    constexpr std::int64_t kJpegRows = 16;  // blocks of two by two
    const std::int64_t rowBytes =
        (std::int64_t{image.GetWidth()} * plan.bits * plan.samples + 7) / 8;
    const std::int64_t rows = std::max<std::int64_t>(kStripBytes / rowBytes, 1);
    return static_cast<int>(
        std::min<std::int64_t>((rows + kJpegRows - 1) / kJpegRows * kJpegRows, image.GetHeight()));
}

TiffPlan PlanFor(const CDibImage& image, TiffCompression compression) {
    TiffPlan plan;
    const bool color = image.GetBpp() == 24;
    plan.photometric = PhotometricOf(image);
    plan.compression = CodeOf(compression);
    plan.bits = std::min(image.GetBpp(), 8);
    plan.withAlpha =
        image.GetAlpha() != nullptr && image.GetBpp() >= 8 && compression != TiffCompression::kJpeg;
    plan.samples = (color ? 3 : 1) + (plan.withAlpha ? 1 : 0);
    plan.predict =
        plan.bits == 8 && plan.photometric != PHOTOMETRIC_PALETTE &&
        (compression == TiffCompression::kLzw || compression == TiffCompression::kDeflate);
    if (color && compression == TiffCompression::kJpeg)
        plan.photometric = PHOTOMETRIC_YCBCR;
    plan.rowsPerStrip = RowsPerStrip(image, plan);
    return plan;
}

bool SetPalette(TIFF* tiff, const CDibImage& image) {
    std::array<std::uint16_t, 256> red{}, green{}, blue{};
    for (std::size_t i = 0; i < static_cast<std::size_t>(image.GetPaletteCount()); ++i) {
        const PaletteEntry& entry = image.GetPalette()[i];
        red[i] = static_cast<std::uint16_t>(entry.red * 257);
        green[i] = static_cast<std::uint16_t>(entry.green * 257);
        blue[i] = static_cast<std::uint16_t>(entry.blue * 257);
    }
    return TIFFSetField(tiff, TIFFTAG_COLORMAP, red.data(), green.data(), blue.data()) == 1;
}

bool SetCodingFields(TIFF* tiff, const CDibImage& image, const TiffPlan& plan) {
    bool set = true;
    if (plan.predict)
        set = set && TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL) == 1;
    if (plan.compression == COMPRESSION_JPEG)
        set = set && TIFFSetField(tiff, TIFFTAG_JPEGQUALITY,
                                  std::clamp<int>(image.Fields().quality, 1, 100)) == 1;
    if (plan.photometric == PHOTOMETRIC_YCBCR)
        set = set && TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB) == 1;
    return set;
}

bool SetFields(TIFF* tiff, const CDibImage& image, const TiffPlan& plan) {
    struct Field {
        std::uint32_t tag;
        int value;
    };
    const Field fields[] = {
        {TIFFTAG_SUBFILETYPE, 0},
        {TIFFTAG_IMAGEWIDTH, image.GetWidth()},
        {TIFFTAG_IMAGELENGTH, image.GetHeight()},
        {TIFFTAG_BITSPERSAMPLE, plan.bits},
        {TIFFTAG_SAMPLESPERPIXEL, plan.samples},
        {TIFFTAG_COMPRESSION, plan.compression},
        {TIFFTAG_PHOTOMETRIC, plan.photometric},
        {TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT},
        {TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG},
        {TIFFTAG_ROWSPERSTRIP, plan.rowsPerStrip},
        {TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH},
    };
    for (const Field& field : fields)
        if (TIFFSetField(tiff, field.tag, field.value) != 1)
            return false;
    const std::uint16_t alpha = EXTRASAMPLE_UNASSALPHA;
    return TIFFSetField(tiff, TIFFTAG_XRESOLUTION, static_cast<double>(image.GetXDpi())) == 1 &&
           TIFFSetField(tiff, TIFFTAG_YRESOLUTION, static_cast<double>(image.GetYDpi())) == 1 &&
           (!plan.withAlpha || TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &alpha) == 1) &&
           (plan.photometric != PHOTOMETRIC_PALETTE || SetPalette(tiff, image)) &&
           SetCodingFields(tiff, image, plan);
}

/// The row as the file holds it; libtiff may change it in place.
void PlaceRow(const CDibImage& image, const TiffPlan& plan, int y, std::uint8_t* out) {
    const std::uint8_t* row = RowFromTop(image, y);
    const std::size_t width = static_cast<std::size_t>(image.GetWidth());
    const std::size_t bits = width * static_cast<std::size_t>(image.GetBpp());
    const std::size_t samples = static_cast<std::size_t>(plan.samples);
    if (image.GetBpp() < 24 && !plan.withAlpha) {
        std::memcpy(out, row, (bits + 7) / 8);
        // No stray bits: equal images give equal files.
        out[(bits + 7) / 8 - 1] &= LastByteMask(image.GetWidth(), image.GetBpp());
        return;
    }
    if (image.GetBpp() < 24) {
        for (std::size_t x = 0; x < width; ++x)
            out[x * samples] = row[x];
    } else {
        for (std::size_t x = 0; x < width; ++x)
            for (std::size_t c = 0; c < 3; ++c)
                out[x * samples + c] = row[x * 3 + 2 - c];
    }
    if (!plan.withAlpha)
        return;
    const std::uint8_t* alpha = AlphaRowFromTop(image, y);
    for (std::size_t x = 0; x < width; ++x)
        out[x * samples + samples - 1] = alpha[x];
}

bool SetBlob(TIFF* tiff, std::uint32_t tag, const Blob& bytes) {
    return bytes.empty() ||
           TIFFSetField(tiff, tag, static_cast<std::uint32_t>(bytes.size()), bytes.data()) == 1;
}

bool WritePage(TIFF* tiff, const CDibImage& image, const TiffPlan& plan, const Metadata& metadata) {
    if (!SetFields(tiff, image, plan) || !SetBlob(tiff, TIFFTAG_ICCPROFILE, metadata.profile) ||
        !SetBlob(tiff, TIFFTAG_XMLPACKET, metadata.xmp))
        return false;
    std::vector<std::uint8_t> row(static_cast<std::size_t>(image.GetWidth()) *
                                  static_cast<std::size_t>(plan.samples));
    for (int y = 0; y < image.GetHeight(); ++y) {
        PlaceRow(image, plan, y, row.data());
        if (TIFFWriteScanline(tiff, row.data(), static_cast<std::uint32_t>(y)) != 1)
            return false;
    }
    return TIFFWriteDirectory(tiff) == 1;
}

bool Code(const CDibImage& image, TiffCompression compression, ByteSink& sink, FileError* error) {
    if (compression == TiffCompression::kGroup4 && image.GetBpp() != 1)
        return FailContent(error, "Group 4 coding holds one bit a pixel",
                           FileReason::kKindNotWritten);
    const TiffPlan plan = PlanFor(image, compression);
    if (compression == TiffCompression::kJpeg &&
        (plan.bits != 8 || plan.photometric == PHOTOMETRIC_PALETTE))
        return FailContent(error, "JPEG coding holds grey and colour only",
                           FileReason::kKindNotWritten);
    const bool fileHasColor = image.GetBpp() == 24 || plan.photometric == PHOTOMETRIC_PALETTE;
    const Metadata metadata = MetadataToWrite(image, fileHasColor);
    TiffHandle handle(sink, /*bigEndian=*/!metadata.exif.empty() && metadata.exif[0] == 'M');
    bool done = handle.Get() != nullptr && WritePage(handle.Get(), image, plan, metadata);
    handle.Close();
    if (done && !metadata.exif.empty())
        done = AppendTiffExif(sink, metadata.exif);
    if (sink.HasFailed())
        return sink.FailWrite(error);
    return done || FailContent(error, handle.Message()[0] != '\0' ? handle.Message()
                                                                  : "TIFF coding failed");
}

}  // namespace

TiffCompression TiffCompressionFor(const CDibImage& image) {
    return image.IsBW() ? TiffCompression::kGroup4 : TiffCompression::kLzw;
}

bool SaveTiff(ByteSink& sink, CDibImage& image, TiffCompression compression, int dpi,
              FileError* error) {
    return SaveWith(image, error, [&] {
        image.SetXDpi(dpi);
        image.SetYDpi(dpi);
        return Code(image, compression, sink, error);
    });
}

}  // namespace velloran
