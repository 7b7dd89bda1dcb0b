#include "codecs/TiffReader.h"

#include <algorithm>

#include "codecs/ColorProfile.h"
#include "codecs/DecodedPage.h"
#include "codecs/Tiff.h"
#include "codecs/TiffBands.h"
#include "codecs/TiffExif.h"
#include "codecs/TiffPages.h"
#include "codecs/TiffRgba.h"
#include "codecs/TiffSamples.h"
#include "codecs/Upright.h"

namespace velloran {
namespace {

using Kind = TiffFormat::Kind;

}  // namespace

bool TiffReader::ReadHead(FileError* error) {
    if (handle_.Get() == nullptr)
        return handle_.Fail(error, "not a TIFF file");
    if (number_ != 1) {
        const std::uint64_t place = FindTiffPage(source_, number_);
        if (place == 0)
            return FailNoSuchPage(error, CountPictures());
        if (TIFFSetSubDirectory(handle_.Get(), place) != 1)
            return handle_.Fail(error, "the page cannot be read");
    }
    return ReadTiffFormat(handle_, format_, error);
}

int TiffReader::SourceBits() const {
    return format_.samples == 1 && format_.kind != Kind::kRgba && format_.bits <= 8
               ? format_.PageBits()
               : format_.bits * format_.samples;
}

bool TiffReader::ReadPage(CDibImage& page, LoadNotes& notes, FileError* error) {
    if (!IsPlausibleSize(format_.DecodedBytes(), source_.Size(), format_.MaxRatio()))
        return FailDamaged(error, "the file is too short for its picture");
    const bool cut = ShortenCutStrips();
    if (format_.photometric == PHOTOMETRIC_YCBCR && format_.kind == Kind::kRgb)
        TIFFSetField(handle_.Get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    if (!CreatePage(format_.width, format_.height, format_.PageBits(), format_.alphaSample >= 0,
                    page, error))
        return false;
    FillPalette(page);
    const int done = DecodeRows(page);
    if (done == 0)
        return handle_.Fail(error, "the picture cannot be decoded");
    WhitenRows(page, done);
    if (done < format_.height)
        notes.NoteDamage("rows of the picture are missing");
    if (!CountTiffPages(source_, notes.pictures) || cut || handle_.ReadBeyondEnd())
        notes.NoteDamage("the file breaks off before its end");
    if (handle_.Message()[0] != '\0')
        notes.NoteDamage(handle_.Message());
    TurnUpright(page, format_.orientation);
    const ImageInfo info = Info();
    page.SetXDpi(info.xDpi);
    page.SetYDpi(info.yDpi);
    return true;
}

// libtiff gives nothing of a strip that reaches beyond the end of the file, and many pages are
// one strip. Told that the strip ends with the file, it decodes as far as that goes. True when any
// strip was cut.
bool TiffReader::ShortenCutStrips() {
    TIFF* tiff = handle_.Get();
    const std::uint64_t* offsets = nullptr;
    const std::uint64_t* counts = nullptr;
    if (TIFFGetField(tiff, format_.tiled ? TIFFTAG_TILEOFFSETS : TIFFTAG_STRIPOFFSETS, &offsets) !=
            1 ||
        TIFFGetField(tiff, format_.tiled ? TIFFTAG_TILEBYTECOUNTS : TIFFTAG_STRIPBYTECOUNTS,
                     &counts) != 1 ||
        offsets == nullptr || counts == nullptr)
        return false;
    auto* lengths = const_cast<std::uint64_t*>(counts);  // libtiff's own, for this handle alone
    const std::uint32_t strips = format_.tiled ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff);
    const std::uint64_t size = source_.Size();
    bool cut = false;
    for (std::uint32_t i = 0; i < strips; ++i) {
        cut |= offsets[i] > size || lengths[i] > size - offsets[i];
        if (offsets[i] < size && lengths[i] > size - offsets[i])
            lengths[i] = size - offsets[i];
    }
    return cut;
}

void TiffReader::FillPalette(CDibImage& page) const {
    if (page.GetBpp() > 8)
        return;
    PaletteEntry* entries = page.GetPalette();
    const TiffPalette palette = TiffPaletteOf(handle_.Get(), format_);
    for (int i = 0; i < palette.count; ++i)
        entries[i] = {static_cast<std::uint8_t>(palette.blue[i] >> palette.shift),
                      static_cast<std::uint8_t>(palette.green[i] >> palette.shift),
                      static_cast<std::uint8_t>(palette.red[i] >> palette.shift), 0};
    if (palette.count > 0)
        return;
    page.SetGrayPalette();
    if (page.GetBpp() == 8)
        return;  // white as zero is turned round in the samples, for the identity ramp
    const int last = (1 << format_.bits) - 1;
    for (int i = 0; i <= last; ++i) {
        const int step = format_.photometric == PHOTOMETRIC_MINISWHITE ? last - i : i;
        const auto level = static_cast<std::uint8_t>(step * 255 / last);
        entries[i] = {level, level, level, 0};
    }
}

/// Scratch beside the page: as much as two pages, or 32 MiB.
bool TiffReader::FitsBand(std::int64_t bytes) const {
    constexpr std::int64_t kSmall = 32 << 20;
    const std::int64_t pageBytes =
        std::max(format_.DecodedBytes(), std::int64_t{4} * format_.width * format_.height);
    return bytes > 0 && bytes <= kMaxImageBytes && bytes <= std::max(kSmall, 2 * pageBytes);
}

/// Returns the count of whole rows from the top.
int TiffReader::DecodeRows(CDibImage& page) {
    TIFF* tiff = handle_.Get();
    if (format_.kind == Kind::kRgba)
        return FitsBand(TiffRgbaScratch(tiff, format_)) ? ReadTiffRgba(tiff, format_, page) : 0;
    const Metadata metadata = format_.kind == Kind::kCmyk ? ReadMetadata() : Metadata();
    const InkConverter inks(metadata.profile, /*invert=*/false);
    TiffSamples samples(format_, inks, page);
    return format_.tiled || format_.separate ? ReadBands(samples) : ReadScanlines(samples);
}

int TiffReader::ReadScanlines(TiffSamples& samples) {
    TIFF* tiff = handle_.Get();
    const std::int64_t rowBytes = TIFFScanlineSize(tiff);
    if (rowBytes != (std::int64_t{format_.width} * format_.bits * format_.samples + 7) / 8)
        return 0;
    for (int y = 0; y < format_.height; ++y) {
        std::uint8_t* row = samples.Target(y, static_cast<std::size_t>(rowBytes));
        if (TIFFReadScanline(tiff, row, static_cast<std::uint32_t>(y)) != 1)
            return y;
        samples.Take(row, y);
    }
    return format_.height;
}

int TiffReader::ReadBands(TiffSamples& samples) {
    TiffBands bands(handle_.Get(), format_);
    if (!FitsBand(bands.Bytes()))
        return 0;
    bands.Allocate();
    int y = 0;
    while (y < format_.height && bands.Read(y)) {
        const int end = static_cast<int>(
            std::min<std::int64_t>(format_.height, std::int64_t{y} + bands.Rows()));
        for (int row = 0; y < end; ++row, ++y)
            samples.Take(bands.Row(row), y);
    }
    return y;
}

Metadata TiffReader::ReadMetadata() const {
    Metadata metadata;
    const auto take = [this](std::uint32_t tag, Blob& to) {
        std::uint32_t count = 0;
        const void* bytes = nullptr;
        if (TIFFGetField(handle_.Get(), tag, &count, &bytes) != 1 || bytes == nullptr ||
            count > kMostMetadataBytes)
            return;
        const auto* first = static_cast<const std::uint8_t*>(bytes);
        to.assign(first, first + count);
    };
    take(TIFFTAG_ICCPROFILE, metadata.profile);
    take(TIFFTAG_XMLPACKET, metadata.xmp);
    metadata.exif = CollectTiffExif(source_, TIFFCurrentDirOffset(handle_.Get()));
    return metadata;
}

void TiffReader::ReadNotes(LoadNotes& notes) {
    notes.TakeMetadata(ReadMetadata());
}

int TiffReader::CountPictures() const {
    int pages = 1;
    CountTiffPages(source_, pages);
    return pages;
}

bool LoadTiff(ByteSource& source, CDibImage& image, LoadNotes& notes, FileError* error) {
    return LoadWith<TiffReader>(source, image, notes, error);
}

bool LoadTiffPage(ByteSource& source, int page, CDibImage& image, LoadNotes& notes,
                  FileError* error) {
    return LoadWith<TiffReader>(source, image, notes, error, page);
}

bool ReadTiffInfo(ByteSource& source, ImageInfo& info, FileError* error) {
    return InfoWith<TiffReader>(source, info, error);
}

bool ReadTiffNotes(ByteSource& source, LoadNotes& notes, FileError* error) {
    return NotesWith<TiffReader>(source, notes, error);
}

}  // namespace velloran
