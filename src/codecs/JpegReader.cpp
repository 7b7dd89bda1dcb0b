#include <algorithm>
#include <new>
#include <vector>

#include "codecs/Cmyk.h"
#include "codecs/Jpeg.h"
#include "codecs/JpegDecoder.h"
#include "codecs/JpegExif.h"
#include "core/DibImage.h"
#include "core/MappedFile.h"
#include "core/Rounding.h"

namespace velloran {
namespace {

constexpr std::size_t kLeastBytes = 10;

/// Density as DPI. The factor of unit 2 is no centimetre's, and is kept: what was marked by it
/// must read the same.
int HeadDpi(const jpeg_decompress_struct& head) {
    if (head.density_unit == 2)
        return TruncToInt(head.X_density * 254.0 / 10000 + 0.5);
    return head.X_density;
}

int BitsInMemory(const jpeg_decompress_struct& head) {
    return head.num_components == 1 ? 8 : 24;
}

void RequireSupported(const jpeg_decompress_struct& head) {
    if (head.num_components != 1 && head.num_components != 3 && head.num_components != 4)
        throw CNewJPEGException("Unsupported count of components");
    if (!IsAcceptableSize(head.image_width, head.image_height, BitsInMemory(head)))
        throw CNewJPEGException("Picture too large");
}

/// White where the data does not reach; zero in the padding.
void CompleteRows(CDibImage& image, int rowsPresent) {
    const int height = image.GetHeight();
    const std::size_t used = static_cast<std::size_t>(image.GetWidth()) * image.GetBpp() / 8;
    for (int y = 0; y < height; ++y) {
        std::uint8_t* row = image.GetBits(height - 1 - y);
        if (y >= rowsPresent)
            std::fill(row, row + used, std::uint8_t{255});
        std::fill(row + used, row + image.GetEffWidth(), std::uint8_t{0});
    }
}

void DecodePlain(JpegDecoder& decoder, CDibImage& image) {
    const int height = image.GetHeight();
    std::vector<JSAMPROW> rows(static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y)
        rows[static_cast<std::size_t>(y)] = image.GetBits(height - 1 - y);
    decoder.Start(image.GetBpp() == 8 ? JCS_GRAYSCALE : JCS_EXT_BGR);
    decoder.ReadRows(rows);
}

void DecodeCmyk(JpegDecoder& decoder, CDibImage& image, bool invert) {
    constexpr int kStripRows = 64;
    const int width = image.GetWidth(), height = image.GetHeight();
    std::vector<std::uint8_t> strip(static_cast<std::size_t>(width) * 4 * kStripRows);
    std::vector<JSAMPROW> rows;
    for (int y = 0; y < kStripRows; ++y)
        rows.push_back(&strip[static_cast<std::size_t>(width) * 4 * static_cast<std::size_t>(y)]);
    decoder.Start(JCS_CMYK);
    for (int top = 0; top < height;) {
        const int count = decoder.ReadRows(rows);
        if (count == 0)
            break;
#pragma omp parallel for schedule(static)
        for (int y = 0; y < count; ++y)
            ConvertCmykRow(rows[static_cast<std::size_t>(y)], image.GetBits(height - 1 - top - y),
                           width, invert);
        top += count;
    }
}

void Decode(std::span<const std::uint8_t> bytes, bool reverseCmyk, CDibImage& image) {
    JpegDecoder decoder(bytes);
    decoder.ReadHead();
    const jpeg_decompress_struct& head = decoder.Head();
    RequireSupported(head);
    CDibImage decoded;
    if (decoded.Create(static_cast<int>(head.image_width), static_cast<int>(head.image_height),
                       BitsInMemory(head)) == nullptr)
        throw std::bad_alloc();
    if (head.num_components == 1)
        decoded.SetGrayPalette();
    if (head.num_components == 4)
        DecodeCmyk(decoder, decoded, (head.saw_Adobe_marker != 0) != reverseCmyk);
    else
        DecodePlain(decoder, decoded);
    CompleteRows(decoded, decoder.RowsPresent());

    const int headDpi = HeadDpi(head);
    const ExifFacts exif = ReadExifFacts(decoder.Exif());
    const PageDpi dpi = ApplyExifResolution(exif, {headDpi, headDpi});
    decoded.SetXDpi(dpi.x);
    decoded.SetYDpi(dpi.y);
    TurnUpright(decoded, exif.orientation);

    image = std::move(decoded);
    image.Source().sourceColours = static_cast<std::uint32_t>(head.num_components) * 8;
    image.Source().sourceFlag = static_cast<std::uint32_t>(image.GetXDpi());
}

/// A file that ends inside a marker segment, behind some of its scans, shows what came before.
void DecodeWhatIsWhole(std::span<const std::uint8_t> bytes, bool reverseCmyk, CDibImage& image) {
    try {
        Decode(bytes, reverseCmyk, image);
    } catch (const CNewJPEGException&) {
        const std::size_t whole = LengthOfWholeSegments(bytes);
        if (whole == bytes.size())
            throw;
        Decode(bytes.first(whole), reverseCmyk, image);
    }
}

/// Runs a reader and turns what it throws into the reason for the caller.
template <typename Work>
bool ReportFailure(FileError* error, Work work) try {
    try {
        work();
        return true;
    } catch (const CNewJPEGException& reason) {
        return FailContent(error, reason.what());
    }
} catch (const std::bad_alloc&) {
    return FailContent(error, "out of memory");
}

void RequireBytes(std::span<const std::uint8_t> bytes, std::size_t least) {
    if (bytes.size() < least)
        throw CNewJPEGException("Too short for a JPEG file");
}

constexpr std::uint8_t kUfoHead[] = {0xFF, 0xD8, 0xFF, 0xE0, 0x00, 0x10, 'J', 'F', 'I', 'F'};

std::vector<std::uint8_t> RepairedUfo(std::span<const std::uint8_t> bytes) {
    RequireBytes(bytes, sizeof kUfoHead + 1);
    std::vector<std::uint8_t> repaired(bytes.begin(), bytes.end());
    std::copy(std::begin(kUfoHead), std::end(kUfoHead), repaired.begin());
    return repaired;
}

int DpiOfImage(int dpi) {
    return dpi < 1 ? 96 : dpi;  // as an image would keep it
}

void ReadInfo(std::span<const std::uint8_t> bytes, ImageInfo& info) {
    JpegDecoder decoder(bytes);
    decoder.ReadHead();
    const jpeg_decompress_struct& head = decoder.Head();
    RequireSupported(head);
    const ExifFacts exif = ReadExifFacts(decoder.Exif());
    const int headDpi = HeadDpi(head);
    const PageDpi dpi = ApplyExifResolution(exif, {headDpi, headDpi});
    info = {};
    info.width = static_cast<int>(head.image_width);
    info.height = static_cast<int>(head.image_height);
    if (SwapsSides(exif.orientation))
        std::swap(info.width, info.height);
    info.bitsPerPixel = head.num_components * 8;
    info.xDpi = DpiOfImage(dpi.x);
    info.yDpi = DpiOfImage(dpi.y);
    info.grey = head.num_components == 1;
}

}  // namespace

bool LoadJpegBytes(std::span<const std::uint8_t> bytes, CDibImage& image, bool reverseCmyk,
                   FileError* error) {
    return ReportFailure(error, [&] {
        RequireBytes(bytes, kLeastBytes);
        DecodeWhatIsWhole(bytes, reverseCmyk, image);
    });
}

bool LoadJpeg(const std::filesystem::path& path, CDibImage& image, bool reverseCmyk,
              FileError* error) {
    MappedFile file;
    return file.Open(path, error) && LoadJpegBytes(file.Bytes(), image, reverseCmyk, error);
}

bool LoadUfo(const std::filesystem::path& path, CDibImage& image, bool reverseCmyk,
             FileError* error) {
    MappedFile file;
    if (!file.Open(path, error))
        return false;
    return ReportFailure(error,
                         [&] { DecodeWhatIsWhole(RepairedUfo(file.Bytes()), reverseCmyk, image); });
}

bool ReadJpegHeader(std::span<const std::uint8_t> bytes, int& outBits, int& outDpi) {
    return ReportFailure(nullptr, [&] {
        RequireBytes(bytes, kLeastBytes);
        JpegDecoder decoder(bytes);
        decoder.ReadHead();
        outBits = decoder.Head().num_components * 8;
        outDpi = HeadDpi(decoder.Head());
    });
}

bool ReadJpegInfo(std::span<const std::uint8_t> bytes, ImageInfo& info, FileError* error) {
    return ReportFailure(error, [&] {
        RequireBytes(bytes, kLeastBytes);
        ReadInfo(bytes, info);
    });
}

bool ReadUfoInfo(std::span<const std::uint8_t> bytes, ImageInfo& info, FileError* error) {
    return ReportFailure(error, [&] { ReadInfo(RepairedUfo(bytes), info); });
}

}  // namespace velloran
