#include <algorithm>
#include <new>
#include <utility>
#include <vector>

#include "codecs/Cmyk.h"
#include "codecs/DecodedPage.h"
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

/// A picture of nothing but paper, 4:1:0, holds about 1200 bytes in one of the file.
constexpr std::int64_t kMaxRatio = 2000;

void RequireSupported(const jpeg_decompress_struct& head, std::size_t fileBytes) {
    if (head.num_components != 1 && head.num_components != 3 && head.num_components != 4)
        throw CNewJPEGException("Unsupported count of components");
    if (!IsAcceptableSize(head.image_width, head.image_height, BitsInMemory(head)))
        throw CNewJPEGException("Picture too large");
    const std::int64_t pixels = std::int64_t{head.image_width} * head.image_height;
    if (!IsPlausibleSize(pixels * (BitsInMemory(head) / 8), fileBytes, kMaxRatio))
        throw CNewJPEGException("Picture too large for its file");
}

void DecodePlain(JpegDecoder& decoder, CDibImage& image) {
    const int height = image.GetHeight();
    std::vector<JSAMPROW> rows(static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y)
        rows[static_cast<std::size_t>(y)] = RowFromTop(image, y);
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
            ConvertCmykRow(rows[static_cast<std::size_t>(y)], RowFromTop(image, top + y), width,
                           invert);
        top += count;
    }
}

void Decode(std::span<const std::uint8_t> bytes, bool reverseCmyk, CDibImage& image) {
    JpegDecoder decoder(bytes);
    decoder.ReadHead();
    const jpeg_decompress_struct& head = decoder.Head();
    RequireSupported(head, bytes.size());
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
    WhitenRows(decoded, decoder.RowsPresent());

    const int headDpi = HeadDpi(head);
    const ExifFacts exif = ReadExifFacts(decoder.Exif());
    const PageDpi dpi = ApplyExifResolution(exif, {headDpi, headDpi});
    TurnUpright(decoded, exif.orientation);
    HandOver(decoded, head.num_components * 8, dpi.x, dpi.y, image);
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

/// Runs a reader, which returns bool or throws, and turns what it throws into the reason.
template <typename Work>
bool ReportFailure(FileError* error, Work work) {
    return FailWhenOutOfMemory(error, [&] {
        try {
            return work();
        } catch (const CNewJPEGException& reason) {
            return FailContent(error, reason.what());
        }
    });
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
    RequireSupported(head, bytes.size());
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
        return true;
    });
}

bool LoadJpeg(const std::filesystem::path& path, CDibImage& image, bool reverseCmyk,
              FileError* error) {
    return ReportFailure(error, [&] {
        MappedFile file;
        return file.Open(path, error) && LoadJpegBytes(file.Bytes(), image, reverseCmyk, error);
    });
}

bool LoadUfo(const std::filesystem::path& path, CDibImage& image, bool reverseCmyk,
             FileError* error) {
    return ReportFailure(error, [&] {
        MappedFile file;
        if (!file.Open(path, error))
            return false;
        DecodeWhatIsWhole(RepairedUfo(file.Bytes()), reverseCmyk, image);
        return true;
    });
}

bool ReadJpegHeader(std::span<const std::uint8_t> bytes, int& outBits, int& outDpi) {
    return ReportFailure(nullptr, [&] {
        RequireBytes(bytes, kLeastBytes);
        JpegDecoder decoder(bytes);
        decoder.ReadHead();
        outBits = decoder.Head().num_components * 8;
        outDpi = HeadDpi(decoder.Head());
        return true;
    });
}

bool ReadJpegInfo(std::span<const std::uint8_t> bytes, ImageInfo& info, FileError* error) {
    return ReportFailure(error, [&] {
        RequireBytes(bytes, kLeastBytes);
        ReadInfo(bytes, info);
        return true;
    });
}

bool ReadUfoInfo(std::span<const std::uint8_t> bytes, ImageInfo& info, FileError* error) {
    return ReportFailure(error, [&] {
        ReadInfo(RepairedUfo(bytes), info);
        return true;
    });
}

}  // namespace velloran
