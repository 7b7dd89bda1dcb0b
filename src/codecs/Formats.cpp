#include "codecs/Formats.h"

#include <algorithm>
#include <vector>

#include "codecs/Bmp.h"
#include "codecs/Djvu.h"
#include "codecs/Gif.h"
#include "codecs/Jpeg.h"
#include "codecs/Jpeg2000.h"
#include "codecs/Png.h"
#include "codecs/Raw.h"
#include "codecs/Tiff.h"
#include "codecs/Webp.h"
#include "core/DibImage.h"
#include "text/Text.h"

namespace velloran {
namespace {

using namespace std::string_view_literals;
using Extension = FormatExtension;

constexpr Extension kJpegExtensions[] = {
    {".jpg", kTypeJpeg}, {".jpeg", kTypeJpeg}, {".jpe", kTypeUnknown, Extension::kOpen}};
constexpr Extension kGifExtensions[] = {{".gif", kTypeGif}};
constexpr Extension kUfoExtensions[] = {{".ufo", kTypeUfo}};
constexpr Extension kBmpExtensions[] = {
    {".bmp", kTypeBmp}, {".dib", kTypeBmp, Extension::kOpen | Extension::kOwnSources}};
constexpr Extension kPngExtensions[] = {{".png", kTypePng}};
constexpr Extension kTiffExtensions[] = {{".tif", kTypeTiff}, {".tiff", kTypeTiff}};
constexpr Extension kMetafileExtensions[] = {
    {".wmf", kTypeMetafile}, {".emf", kTypeMetafile, Extension::kOpen | Extension::kOwnSources}};
// Files and code streams stand in one entry of every list, in this order.
constexpr Extension kJpeg2000Extensions[] = {{".jpf", kTypeJp2}, {".jpx", kTypeJp2},
                                             {".jp2", kTypeJp2}, {".j2k", kTypeJ2k},
                                             {".jpc", kTypeJ2k}, {".j2c", kTypeJp2}};
constexpr Extension kWebpExtensions[] = {{".webp", kTypeWebp}};
// "*cr2" stands without its dot: stored filters hold the list as it is.
constexpr Extension kRawExtensions[] = {{".nef", kTypeRaw},
                                        {".crw", kTypeRaw},
                                        {".cr2", kTypeRaw, Extension::kEverywhere, "*cr2"},
                                        {".dng", kTypeRaw}};

constexpr HeadRule kJpegHeads[] = {{{0, "\xFF\xD8"sv}, {}}};
constexpr HeadRule kGifHeads[] = {{{0, "GI"sv}, {2, "F"sv}}};
constexpr HeadRule kBmpHeads[] = {{{0, "BM"sv}, {}}};
constexpr HeadRule kPngHeads[] = {{{1, "PN"sv}, {3, "G"sv}}};
constexpr HeadRule kTiffHeads[] = {{{0, "II"sv}, {}}, {{0, "MM"sv}, {}}};
constexpr HeadRule kMetafileHeads[] = {{{0, "\xD7\xCD"sv}, {}}};
constexpr HeadRule kJp2Heads[] = {{{0, "\0\0\0\x0CjP  "sv}, {8, "\x0D\x0A\x87\x0A"sv}}};
constexpr HeadRule kJ2kHeads[] = {{{0, "\xFF\x4F\xFF\x51"sv}, {}}};
constexpr HeadRule kDjvuHeads[] = {{{0, "AT&TFORM"sv}, {}}};
constexpr HeadRule kWebpHeads[] = {{{8, "WEBP"sv}, {}}};

constexpr unsigned kAnyDepth = Format::kHoldsAll | Format::kReducedTarget | Format::kRenamed;
constexpr unsigned kPhoto =
    Format::kHoldsGray | Format::kHoldsColor | Format::kLossy | Format::kRenamed;

// The codecs in the one form that the table holds.

bool LoadJpegRow(ByteSource& source, const LoadOptions& options, CDibImage& image, LoadNotes& notes,
                 FileError* error) {
    return LoadJpeg(source, image, options.reverseCmyk, notes, error);
}

bool LoadUfoRow(ByteSource& source, const LoadOptions& options, CDibImage& image, LoadNotes& notes,
                FileError* error) {
    return LoadUfo(source, image, options.reverseCmyk, notes, error);
}

template <bool (*kLoad)(ByteSource&, CDibImage&, LoadNotes&, FileError*)>
bool LoadRow(ByteSource& source, const LoadOptions&, CDibImage& image, LoadNotes& notes,
             FileError* error) {
    return kLoad(source, image, notes, error);
}

template <bool (*kLoad)(ByteSource&, int, CDibImage&, LoadNotes&, FileError*)>
bool LoadPageRow(ByteSource& source, const LoadOptions& options, CDibImage& image, LoadNotes& notes,
                 FileError* error) {
    return kLoad(source, options.page, image, notes, error);
}

bool SaveJpegRow(ByteSink& sink, CDibImage& image, const SaveOptions& options, FileError* error) {
    return SaveJpeg(sink, image, options.jpegSource, options.quality, options.dpi, options.jpeg,
                    error);
}

bool SaveBmpRow(ByteSink& sink, CDibImage& image, const SaveOptions& options, FileError* error) {
    image.SetXDpi(options.dpi);
    image.SetYDpi(options.dpi);
    if (options.colorIndex == kColorIndex565 || options.colorIndex == kColorIndex555)
        return SaveBmp16(sink, image, /*is565=*/options.colorIndex == kColorIndex565, error);
    return SaveBmp(sink, image, error);
}

bool SavePngRow(ByteSink& sink, CDibImage& image, const SaveOptions& options, FileError* error) {
    return SavePng(sink, image, options.dpi, options.transparentWhite, error);
}

bool SaveTiffRow(ByteSink& sink, CDibImage& image, const SaveOptions& options, FileError* error) {
    return SaveTiff(sink, image, TiffCompressionFor(image), options.dpi, error);
}

bool SaveGifRow(ByteSink& sink, CDibImage& image, const SaveOptions& options, FileError* error) {
    return SaveGif(sink, image, options.transparentWhite, options.cropGif, error);
}

bool SaveJp2Row(ByteSink& sink, CDibImage& image, const SaveOptions& options, FileError* error) {
    return SaveJp2(sink, image, options.jp2Rate, options.dpi, error);
}

bool SaveWebpRow(ByteSink& sink, CDibImage& image, const SaveOptions& options, FileError* error) {
    image.SetXDpi(options.dpi);  // told by EXIF alone
    image.SetYDpi(options.dpi);
    return SaveWebp(sink, image, options.quality, error);
}

/// Heads are tried in the order of the rows, so the weakest stands last.
const Format kFormats[] = {
    {.id = kTypeJpeg,
     .name = "JPEG",
     .filterName = u"JPEG",
     .extensions = kJpegExtensions,
     .heads = kJpegHeads,
     .info = ReadJpegInfo,
     .notes = ReadJpegNotes,
     .load = LoadJpegRow,
     .save = SaveJpegRow,
     .target = TargetFormat::kJpeg,
     .firstSave = u"jpg",
     .traits = kPhoto | Format::kHoldsProfile},
    {.id = kTypeGif,
     .name = "GIF",
     .filterName = u"GIF",
     .extensions = kGifExtensions,
     .heads = kGifHeads,
     .info = ReadGifInfo,
     .notes = ReadGifNotes,
     .load = LoadPageRow<LoadGifPage>,
     .save = SaveGifRow,
     .target = TargetFormat::kGif,
     .firstSave = u"gif",
     .traits = Format::kHoldsPalette | Format::kHoldsGray | Format::kReducedTarget |
               Format::kRenamed | Format::kHoldsTransparent | Format::kSeveralPages},
    {.id = kTypeUfo,
     .name = "UFO",
     .filterName = u"UFO",
     .extensions = kUfoExtensions,
     .info = ReadUfoInfo,
     .notes = ReadUfoNotes,
     .load = LoadUfoRow,
     .traits = Format::kLossy},
    {.id = kTypeBmp,
     .name = "BMP",
     .filterName = u"BMP",
     .extensions = kBmpExtensions,
     .heads = kBmpHeads,
     .info = ReadBmpInfo,
     .load = LoadRow<LoadBmp>,
     .save = SaveBmpRow,
     .target = TargetFormat::kBmp,
     .firstSave = u"bmp",
     .traits = kAnyDepth | Format::kHolds16Bit},
    {.id = kTypePng,
     .name = "PNG",
     .filterName = u"PNG",
     .extensions = kPngExtensions,
     .heads = kPngHeads,
     .info = ReadPngInfo,
     .notes = ReadPngNotes,
     .load = LoadRow<LoadPng>,
     .save = SavePngRow,
     .target = TargetFormat::kPng,
     .firstSave = u"png",
     .traits = kAnyDepth | Format::kHoldsAlpha | Format::kHoldsTransparent | Format::kHoldsProfile},
    {.id = kTypeTiff,
     .name = "TIFF",
     .filterName = u"TIFF",
     .extensions = kTiffExtensions,
     .heads = kTiffHeads,
     .info = ReadTiffInfo,
     .notes = ReadTiffNotes,
     .load = LoadPageRow<LoadTiffPage>,
     .save = SaveTiffRow,
     .target = TargetFormat::kTiff,
     .firstSave = u"tif",
     .traits = kAnyDepth | Format::kHoldsAlpha | Format::kHoldsProfile | Format::kSeveralPages},
    {.id = kTypeMetafile,
     .name = "WMF",
     .filterName = u"WMF",
     .extensions = kMetafileExtensions,
     .heads = kMetafileHeads},
    {.id = kTypeJp2,
     .name = "JP2",
     .filterName = u"JPEG 2000",
     .extensions = kJpeg2000Extensions,
     .heads = kJp2Heads,
     .info = ReadJpeg2000Info,
     .notes = ReadJpeg2000Notes,
     .load = LoadRow<LoadJpeg2000>,
     .save = SaveJp2Row,
     .target = TargetFormat::kJp2,
     .firstSave = u"jp2",
     .traits = kPhoto | Format::kHoldsProfile | Format::kSourcesEndOpen},
    {.id = kTypeJ2k,
     .name = "J2K",
     .heads = kJ2kHeads,
     .info = ReadJpeg2000Info,
     .notes = ReadJpeg2000Notes,
     .load = LoadRow<LoadJpeg2000>,
     .firstSave = u"jp2",
     .traits = kPhoto},
    {.id = kTypeWebp,
     .name = "WebP",
     .filterName = u"Webp",
     .extensions = kWebpExtensions,
     .heads = kWebpHeads,
     .info = ReadWebpInfo,
     .notes = ReadWebpNotes,
     .load = LoadPageRow<LoadWebpPage>,
     .save = SaveWebpRow,
     .target = TargetFormat::kWebp,
     .traits = kAnyDepth | Format::kLossy | Format::kHoldsAlpha | Format::kHoldsProfile |
               Format::kSeveralPages},
    {.id = kTypeDjvu,
     .name = "DjVu",
     .heads = kDjvuHeads,
     .info = ReadDjvuInfo,
     .notes = ReadDjvuNotes,
     .load = LoadPageRow<LoadDjvu>,
     .traits = Format::kSeveralPages},
    {.id = kTypeRaw,
     .name = "RAW",
     .filterName = u"Raw",
     .extensions = kRawExtensions,
     .info = ReadRawInfo,
     .notes = ReadRawNotes,
     .load = LoadRow<LoadRaw>},
};

bool HoldsPart(std::span<const std::uint8_t> head, const HeadRule::Part& part) {
    return head.size() >= part.offset + part.bytes.size() &&
           std::equal(part.bytes.begin(), part.bytes.end(),
                      head.begin() + static_cast<std::ptrdiff_t>(part.offset),
                      [](char wanted, std::uint8_t byte) {
                          return static_cast<std::uint8_t>(wanted) == byte;
                      });
}

/// Adds the patterns of one format that stand in `list`, divided by semicolons.
void AddPatterns(const Format& format, unsigned list, bool ownEntry, std::u16string& text) {
    for (const Extension& extension : format.extensions) {
        if ((extension.lists & list) == 0)
            continue;
        if (!text.empty() && text.back() != u'|')
            text += u';';
        const bool odd = ownEntry && !extension.ownPattern.empty();
        text +=
            ToUtf16(odd ? std::string(extension.ownPattern) : "*" + std::string(extension.text));
    }
}

std::u16string MakeSupportedFilter() {
    std::u16string text = u"Supported|";
    for (const Format& format : kFormats)
        AddPatterns(format, Extension::kOpen, /*ownEntry=*/false, text);
    text += u'|';
    for (const Format& format : kFormats) {
        if (format.filterName.empty())
            continue;
        text += std::u16string(format.filterName) + u'|';
        AddPatterns(format, Extension::kOpen, /*ownEntry=*/true, text);
        text += u'|';
    }
    return text + u"All Files(*.*)|*.*||";
}

std::vector<std::u16string> MakeSourceFilters() {
    std::vector<std::u16string> filters(1);
    for (const Format& format : kFormats) {
        if (format.filterName.empty())
            continue;
        AddPatterns(format, Extension::kAllSources, /*ownEntry=*/false, filters[0]);
        AddPatterns(format, Extension::kOwnSources, /*ownEntry=*/false, filters.emplace_back());
        if (format.Has(Format::kSourcesEndOpen))
            filters.back() += u';';
    }
    return filters;
}

const std::vector<std::u16string>& SourceFilters() {
    static const std::vector<std::u16string> filters = MakeSourceFilters();
    return filters;
}

}  // namespace

std::span<const Format> Formats() {
    return kFormats;
}

const Format* FindFormat(int id) {
    const auto* found = std::ranges::find(kFormats, id, [](const Format& f) { return int{f.id}; });
    return found != std::end(kFormats) ? found : nullptr;
}

const Format* FormatOfName(std::string_view extension) {
    return FindFormat(TypeOfExtension(extension));
}

const Format* FormatOfTarget(TargetFormat target) {
    const auto* found = std::ranges::find(kFormats, target, &Format::target);
    return target != TargetFormat::kAuto && found != std::end(kFormats) ? found : nullptr;
}

FileTypeId TypeOfHead(std::span<const std::uint8_t> head) {
    for (const Format& format : kFormats)
        for (const HeadRule& rule : format.heads)
            if (HoldsPart(head, rule.first) && HoldsPart(head, rule.second))
                return format.id;
    return kTypeUnknown;
}

FileTypeId TypeOfExtension(std::string_view extension) {
    for (const Format& format : kFormats)
        for (const Extension& known : format.extensions)
            if (EqualIgnoringCase(extension, known.text))
                return known.type;
    return kTypeUnknown;
}

std::string_view FileTypeName(int id) {
    const Format* format = FindFormat(id);
    return format != nullptr ? format->name : "unknown";
}

std::optional<TargetFormat> FormatOfExtension(std::string_view text) {
    if (EqualIgnoringCase(text, "auto"))
        return TargetFormat::kAuto;
    const std::string dotted = (text.starts_with('.') ? "" : ".") + std::string(text);
    const Format* format = FormatOfName(dotted);
    if (format == nullptr || !format->IsSaveTarget())
        return std::nullopt;
    return format->target;
}

std::span<const std::string_view> TargetExtensionWords() {
    static const std::vector<std::string> words = [] {
        std::vector<std::string> made;
        for (const TargetFormat target : ExtensionChoices())
            made.push_back(target == TargetFormat::kAuto ? "auto"
                                                         : ToUtf8(TargetExtension(target)));
        return made;
    }();
    static const std::vector<std::string_view> views(words.begin(), words.end());
    return views;
}

std::u16string_view SupportedFilter() {
    static const std::u16string filter = MakeSupportedFilter();
    return filter;
}

std::u16string_view SourceFilter(int position) {
    if (position < 0 || position >= SourceFilterCount())
        return {};
    return SourceFilters()[static_cast<std::size_t>(position)];
}

int SourceFilterCount() {
    return static_cast<int>(SourceFilters().size());
}

}  // namespace velloran
