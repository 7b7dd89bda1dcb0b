#include "files/PageSniffer.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "codecs/Formats.h"
#include "codecs/LoadNotes.h"
#include "core/DibImage.h"
#include "files/FileType.h"
#include "files/ImageFiles.h"
#include "io/FileSource.h"
#include "io/MemorySource.h"
#include "io/SubSource.h"

namespace velloran {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t kHeadBytes = 140;
constexpr std::uint64_t kMostPdfBytes = std::uint64_t{4} << 30;
using Head = std::array<std::uint8_t, kHeadBytes>;

std::mutex decoderLock;
PageDecoder pageDecoder;

PageDecoder DecoderInUse() {
    const std::lock_guard hold(decoderLock);
    return pageDecoder;
}

struct HeadTest {
    std::size_t offset;
    std::string_view bytes;
    int type;
    int result = kSniffDone;
};

/// In the order in which they are asked.
constexpr HeadTest kHeadTests[] = {
    {0, "%PDF-"sv, kPagePdf, kSniffPdf},
    {1, "PNG"sv, kPagePng},
    {0, "GIF8"sv, kPageGif},
    {0, "BM"sv, kPageBmp},
    {0, "II"sv, kPageTiff},
    {0, "MM"sv, kPageTiff},
    {0, "AT&T"sv, kPageDjvu},
    {8, "WEBP"sv, kPageWebp},
    {0, "\0\0\0\x0CjP  \x0D\x0A\x87\x0A"sv, kPageJp2},
    {0, "\xFF\x4F\xFF\x51"sv, kPageJ2k},
    {0, "\x80\x80"sv, kPage8080, kSniff8080},
    {0, "\xFF\xD8"sv, kPageJpeg},
};

/// What of a head was read.
using Bytes = std::span<const std::uint8_t>;

bool Holds(Bytes head, std::size_t offset, std::string_view bytes) {
    return head.size() >= offset + bytes.size() &&
           std::equal(bytes.begin(), bytes.end(),
                      head.begin() + static_cast<std::ptrdiff_t>(offset),
                      [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; });
}

std::uint64_t Little(Bytes head, std::size_t offset, std::size_t size) {
    std::uint64_t value = 0;
    for (std::size_t i = size; i-- > 0;)
        value = value << 8 | head[offset + i];
    return value;
}

/// White space and a byte order mark, then a tag that pages of the web begin with.
bool IsHtml(Bytes head) {
    std::string text;
    for (const std::uint8_t byte : head)
        text += static_cast<char>(byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte);
    std::string_view rest = text;
    if (rest.starts_with("\xEF\xBB\xBF"))
        rest.remove_prefix(3);
    rest.remove_prefix(std::min(rest.find_first_not_of(" \t\r\n\f"), rest.size()));
    constexpr std::string_view kBeginnings[] = {"<!doctype html", "<html",   "<head",
                                                "<body",          "<script", "<title"};
    return std::any_of(std::begin(kBeginnings), std::end(kBeginnings),
                       [&](std::string_view beginning) { return rest.starts_with(beginning); });
}

/// The fields of a head of the page format. `head` may be shorter than the whole head.
SniffedPage ReadPageHead(Bytes head, std::uint64_t fileSize) {
    constexpr std::size_t kVersionAt = 2, kOldWordAt = 7, kPdfAt = 14, kTypeAt = 15, kFlagAt = 20,
                          kFormAt = 21, kPayloadAt = 24, kSizeAt = 28, kFields = 32;
    constexpr std::uint64_t kLeastOld = 56, kLeastOldWithWord = 189;
    SniffedPage page;
    page.hasHead = true;
    page.result = kSniffTooShort;
    if (head.size() <= kVersionAt)
        return page;
    if (head[kVersionAt] < 2) {
        page.kind = kKindPayload;
        const bool hasWord = head.size() >= kOldWordAt + 2 && Little(head, kOldWordAt, 2) != 0;
        if (fileSize >= (hasWord ? kLeastOldWithWord : kLeastOld))
            page.result = kSniffDone;
        return page;
    }
    if (head.size() < kFields)
        return page;
    page.payloadAt = Little(head, kPayloadAt, 4);
    page.payloadSize = Little(head, kSizeAt, 4);
    if (page.payloadAt + page.payloadSize > fileSize)
        return page;
    if (head[kPdfAt] == 'F') {
        page.type = kPagePdf;
        page.kind = kKindPlain;
        page.result = kSniffPdf;
        return page;
    }
    page.type = head[kTypeAt];
    const int flag = (static_cast<int>(head[kFlagAt]) - 8) & 0xEF;
    page.kind = head[kFormAt] != 0 ? kKindPayloadRepair : (flag != 0 ? kKindPayload : kKindPlain);
    constexpr int kLockedTypes = 96;
    page.isLocked = (page.type & ~15) == kLockedTypes;
    page.result = page.isLocked ? kSniffFailed : kSniffDone;
    return page;
}

SniffedPage ReadPlainHead(Bytes head) {
    SniffedPage page;
    for (const HeadTest& test : kHeadTests)
        if (Holds(head, test.offset, test.bytes)) {
            page.type = test.type;
            page.kind = kKindPlain;
            page.result = test.result;
            return page;
        }
    if (IsHtml(head))
        page.result = kSniffHtml;
    return page;
}

/// The formats behind the types that the sniffer tells; PDF and its like have none.
int FormatOfPage(int type) {
    constexpr std::pair<int, FileTypeId> kFormats[] = {
        {kPageJpeg, kTypeJpeg}, {kPagePng, kTypePng}, {kPageDjvu, kTypeDjvu},
        {kPageTiff, kTypeTiff}, {kPageJp2, kTypeJp2}, {kPageJ2k, kTypeJ2k},
        {kPageGif, kTypeGif},   {kPageBmp, kTypeBmp}, {kPageRaw, kTypeRaw},
        {kPageWebp, kTypeWebp}};
    for (const auto& [page, format] : kFormats)
        if (page == type)
            return format;
    return kTypeUnknown;
}

/// Reads one plain picture, known by its content alone.
bool LoadPlain(ByteSource& source, int type, LoadOptions options, CDibImage& image,
               LoadNotes& notes, FileError* error) {
    options.reverseCmyk = false;
    const Format* format = FindFormat(FormatOfPage(type));
    if (format == nullptr || format->load == nullptr)
        return FailContent(error, "not a picture of a known type", FileReason::kKindNotRead);
    return format->load(source, options, image, notes, error);
}

bool LoadPayload(ByteSource& source, const SniffedPage& sniffed, bool tryRepair, CDibImage& image,
                 FileError* error) {
    const PageDecoder decoder = DecoderInUse();
    if (decoder.decode == nullptr)
        return FailContent(error, "the page's payload has no decoder", FileReason::kKindNotRead);
    const auto bytes = source.AllBytes(error);
    if (!bytes)
        return false;
    if (!decoder.decode(*bytes, image) || !image.IsValid())
        return FailDamaged(error, "the page's payload cannot be decoded");
    if (sniffed.kind == kKindPayloadRepair && tryRepair && decoder.repair != nullptr)
        decoder.repair(*bytes, image);
    return true;
}

void SettleDpi(CDibImage& image) {
    constexpr int kUntold = 96, kNarrow = 1200;
    if (image.GetXDpi() != kUntold || image.GetYDpi() != kUntold)
        return;
    const int dpi = image.GetWidth() <= kNarrow ? 150 : 300;
    image.SetXDpi(dpi);
    image.SetYDpi(dpi);
}

}  // namespace

SniffedPage SniffPage(ByteSource& source, const std::filesystem::path& name) {
    Head bytes{};
    const std::size_t came = source.ReadAt(0, bytes);
    const Bytes head(bytes.data(), came);
    SniffedPage page =
        Holds(head, 0, "HH") ? ReadPageHead(head, source.Size()) : ReadPlainHead(head);
    page.fileSize = source.Size();
    if (page.hasHead)
        return page;
    if (page.result == kSniffUnknown && IsCameraRaw(source, name)) {
        page.type = kPageRaw;
        page.kind = kKindPlain;
        page.result = kSniffDone;
    }
    return page;
}

bool FailSniffed(const SniffedPage& page, FileError* error) {
    switch (page.result) {
        case kSniffPdf:
            return page.fileSize > kMostPdfBytes
                       ? FailContent(error, "holds PDF of over 4 GB", FileReason::kPdfTooLarge)
                       : FailContent(error, "holds PDF", FileReason::kHoldsPdf);
        case kSniffHtml:
            return FailContent(error, "holds HTML", FileReason::kHoldsHtml);
        case kSniffTooShort:
            return FailContent(error, "too short for its head", FileReason::kDamaged);
        case kSniffFailed:
            return page.isLocked ? FailContent(error, "a locked page", FileReason::kLocked)
                                 : FailDamaged(error, "too short for its head");
        default:
            return FailContent(error, "not a picture of a known type", FileReason::kKindNotRead);
    }
}

bool LoadSniffedPage(ByteSource& source, const SniffedPage& sniffed, const LoadOptions& options,
                     bool tryRepair, CDibImage& image, LoadNotes& notes, FileError* error) {
    if (sniffed.result != kSniffDone)
        return FailSniffed(sniffed, error);
    bool done = false;
    if (!sniffed.hasHead) {
        done = LoadPlain(source, sniffed.type, options, image, notes, error);
    } else if (sniffed.kind == kKindPlain) {
        SubSource payload(source, sniffed.payloadAt, sniffed.payloadSize);
        const SniffedPage inner = SniffPage(payload, {});
        // One page in another is no page that anybody writes.
        done = inner.result == kSniffDone && !inner.hasHead
                   ? LoadPlain(payload, inner.type, options, image, notes, error)
                   : LoadPayload(source, sniffed, tryRepair, image, error);
    } else {
        done = LoadPayload(source, sniffed, tryRepair, image, error);
    }
    if (done)
        SettleDpi(image);
    return done;
}

void SetPageDecoder(PageDecoder decoder) {
    const std::lock_guard hold(decoderLock);
    pageDecoder = decoder;
}

int CPdgLoader::SniffFile(const std::filesystem::path& path, int& outType, int& outKind) {
    FileSource source;
    outType = kPageUnknown;
    outKind = kKindUnknown;
    if (!source.Open(path))
        return kSniffFailed;
    const SniffedPage page = SniffPage(source, path);
    if (source.IsUnreadable() || (page.hasHead && source.Size() < kHeadBytes))
        return kSniffFailed;
    outType = page.type;
    outKind = page.kind;
    return page.result;
}

bool CPdgLoader::LoadPage(const std::uint8_t* bytes, std::size_t size, CDibImage& image,
                          bool tryRepair) try {
    if (bytes == nullptr || size == 0)
        return false;
    MemorySource source({bytes, size});
    LoadNotes notes;
    return LoadSniffedPage(source, SniffPage(source, {}), LoadOptions(), tryRepair, image, notes,
                           nullptr);
} catch (const std::bad_alloc&) {
    return false;
}

}  // namespace velloran
