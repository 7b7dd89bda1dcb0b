#include <algorithm>
#include <cerrno>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "codecs/ColorProfile.h"
#include "codecs/DecodedPage.h"
#include "codecs/Jpeg.h"
#include "codecs/JpegDecoder.h"
#include "codecs/JpegExif.h"
#include "codecs/JpegMetadata.h"
#include "codecs/JpegSource.h"
#include "codecs/Upright.h"
#include "core/DibImage.h"
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

void RequireSupported(const jpeg_decompress_struct& head, std::uint64_t fileBytes) {
    if (head.num_components != 1 && head.num_components != 3 && head.num_components != 4)
        throw CNewJPEGException("Unsupported count of components", FileReason::kKindNotRead);
    if (!IsAcceptableSize(head.image_width, head.image_height, BitsInMemory(head)))
        throw CNewJPEGException("Picture too large", FileReason::kTooLarge);
    const std::int64_t pixels = std::int64_t{head.image_width} * head.image_height;
    if (!IsPlausibleSize(pixels * (BitsInMemory(head) / 8), static_cast<std::size_t>(fileBytes),
                         kMaxRatio))
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

void DecodeCmyk(JpegDecoder& decoder, CDibImage& image, const InkConverter& inks) {
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
            inks.ConvertRow(rows[static_cast<std::size_t>(y)], RowFromTop(image, top + y), width);
        top += count;
    }
}

/// What comes out of a source, before it is handed over.
struct Decoded {
    CDibImage page;
    int components = 3;
    PageDpi dpi;
    std::shared_ptr<const JpegSourceHead> head;
    LoadNotes notes;
};

void Decode(ByteSource& source, std::uint64_t limit, bool reverseCmyk, Decoded& decoded) {
    JpegDecoder decoder(source, limit);
    decoder.ReadHead();
    const jpeg_decompress_struct& head = decoder.Head();
    RequireSupported(head, std::min(limit, source.Size()));
    decoded.head = std::make_shared<const JpegSourceHead>(SourceHeadOf(head));
    CDibImage& page = decoded.page;
    if (page.Create(static_cast<int>(head.image_width), static_cast<int>(head.image_height),
                    BitsInMemory(head)) == nullptr)
        throw std::bad_alloc();
    if (head.num_components == 1)
        page.SetGrayPalette();
    Metadata metadata = JpegMetadataOf(head);
    if (head.num_components == 4)
        DecodeCmyk(decoder, page,
                   InkConverter(metadata.profile, (head.saw_Adobe_marker != 0) != reverseCmyk));
    else
        DecodePlain(decoder, page);
    WhitenRows(page, decoder.RowsPresent());

    const int headDpi = HeadDpi(head);
    const ExifFacts exif = ReadExifFacts(decoder.Exif());
    decoded.dpi = ApplyExifResolution(exif, {headDpi, headDpi});
    decoded.components = head.num_components;
    if (decoder.RowsPresent() < page.GetHeight())
        decoded.notes.NoteDamage("rows of the picture are missing");
    decoder.Finish();
    if (decoder.Damage()[0] != '\0')
        decoded.notes.NoteDamage(decoder.Damage());
    TurnUpright(page, exif.orientation);
    decoded.notes.TakeMetadata(std::move(metadata));
}

/// A file that ends inside a marker segment, behind some of its scans, shows what came before.
void DecodeWhatIsWhole(ByteSource& source, bool reverseCmyk, Decoded& decoded) {
    try {
        Decode(source, source.Size(), reverseCmyk, decoded);
    } catch (const CNewJPEGException&) {
        const auto bytes = source.AllBytes(nullptr);
        const std::size_t whole = bytes ? LengthOfWholeSegments(*bytes) : 0;
        if (!bytes || whole == bytes->size())
            throw;
        decoded = {};
        decoded.notes.NoteDamage("the file breaks off before its end");
        Decode(source, whole, reverseCmyk, decoded);
    }
}

/// Runs a reader, which returns bool or throws, and turns what it throws into the reason.
template <typename Work>
bool ReportFailure(ByteSource& source, FileError* error, Work work) {
    return ReadFrom(source, error, [&](FileError* own) {
        try {
            return work();
        } catch (const CNewJPEGException& reason) {
            return FailContent(own, reason.what(), reason.reason);
        }
    });
}

void RequireBytes(const ByteSource& source, std::size_t least) {
    if (source.Size() < least)
        throw CNewJPEGException("Too short for a JPEG file");
}

/// A JPEG whose first bytes are not its own, with the usual ones in their place.
class RepairedUfo : public ByteSource {
 public:
    explicit RepairedUfo(ByteSource& ufo) : ufo_(ufo) { SetSize(ufo.Size()); }
    static constexpr std::uint8_t kHead[] = {0xFF, 0xD8, 0xFF, 0xE0, 0x00,
                                             0x10, 'J',  'F',  'I',  'F'};

 protected:
    std::ptrdiff_t Read(std::uint64_t offset, std::uint8_t* to, std::size_t size) override {
        const std::size_t came = ufo_.ReadAt(offset, {to, size});
        if (came == 0 && ufo_.IsUnreadable()) {
            errno = EIO;  // the source itself keeps the true one
            return -1;
        }
        for (std::size_t i = 0; i < came && offset + i < sizeof kHead; ++i)
            to[i] = kHead[offset + i];
        return static_cast<std::ptrdiff_t>(came);
    }

 private:
    ByteSource& ufo_;
};

int DpiOfImage(int dpi) {
    return dpi < 1 ? 96 : dpi;  // as an image would keep it
}

void ReadInfo(ByteSource& source, ImageInfo& info) {
    JpegDecoder decoder(source);
    decoder.ReadHead();
    const jpeg_decompress_struct& head = decoder.Head();
    RequireSupported(head, source.Size());
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
    info.gray = head.num_components == 1;
}

void ReadNotes(ByteSource& source, LoadNotes& notes) {
    JpegDecoder decoder(source);
    decoder.ReadHead();
    LoadNotes found;
    found.TakeMetadata(JpegMetadataOf(decoder.Head()));
    notes = std::move(found);
}

/// Decodes `source`, whose bytes come from `file`, and hands the page over.
bool Load(ByteSource& source, const ByteSource& file, bool reverseCmyk, bool keepHead,
          CDibImage& image, LoadNotes& notes) {
    Decoded decoded;
    DecodeWhatIsWhole(source, reverseCmyk, decoded);
    if (!MayHandOver(file, decoded.notes))
        return false;
    HandOver(decoded.page, decoded.components * 8, decoded.dpi.x, decoded.dpi.y, image);
    if (keepHead)
        image.Source().jpegHead = std::move(decoded.head);
    image.Source().metadata = decoded.notes.metadata;
    notes = std::move(decoded.notes);
    return true;
}

}  // namespace

bool LoadJpeg(ByteSource& source, CDibImage& image, bool reverseCmyk, LoadNotes& notes,
              FileError* error) {
    return ReportFailure(source, error, [&] {
        RequireBytes(source, kLeastBytes);
        return Load(source, source, reverseCmyk, /*keepHead=*/true, image, notes);
    });
}

bool LoadUfo(ByteSource& source, CDibImage& image, bool reverseCmyk, LoadNotes& notes,
             FileError* error) {
    return ReportFailure(source, error, [&] {
        RequireBytes(source, sizeof RepairedUfo::kHead + 1);
        RepairedUfo repaired(source);
        return Load(repaired, source, reverseCmyk, /*keepHead=*/false, image, notes);
    });
}

bool ReadJpegHeader(ByteSource& source, int& outBits, int& outDpi) {
    return ReportFailure(source, nullptr, [&] {
        RequireBytes(source, kLeastBytes);
        JpegDecoder decoder(source);
        decoder.ReadHead();
        outBits = decoder.Head().num_components * 8;
        outDpi = HeadDpi(decoder.Head());
        return true;
    });
}

bool ReadJpegInfo(ByteSource& source, ImageInfo& info, FileError* error) {
    return ReportFailure(source, error, [&] {
        RequireBytes(source, kLeastBytes);
        ReadInfo(source, info);
        return true;
    });
}

bool ReadJpegNotes(ByteSource& source, LoadNotes& notes, FileError* error) {
    return ReportFailure(source, error, [&] {
        RequireBytes(source, kLeastBytes);
        ReadNotes(source, notes);
        return true;
    });
}

bool ReadUfoNotes(ByteSource& source, LoadNotes& notes, FileError* error) {
    return ReportFailure(source, error, [&] {
        RequireBytes(source, sizeof RepairedUfo::kHead + 1);
        RepairedUfo repaired(source);
        ReadNotes(repaired, notes);
        return true;
    });
}

bool ReadUfoInfo(ByteSource& source, ImageInfo& info, FileError* error) {
    return ReportFailure(source, error, [&] {
        RequireBytes(source, sizeof RepairedUfo::kHead + 1);
        RepairedUfo repaired(source);
        ReadInfo(repaired, info);
        return true;
    });
}

}  // namespace velloran
