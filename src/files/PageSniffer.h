#pragma once

// Files of scanned books, told by their first bytes, and loaded. Beside the common formats these
// are pages with a head of their own ("HH") round an ordinary picture, or round a payload that only
// its decoder understands.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>

#include "io/FileError.h"

namespace velloran {

class ByteSource;
class CDibImage;
struct LoadNotes;
struct LoadOptions;

// clang-format off
/// Types that the sniffer tells. Of a page with a payload it is the payload's own number, below 256.
enum PageTypeId : int {
    kPageUnknown = 0, kPageJpeg = 256, kPage8080 = 257, kPagePdf = 258, kPagePng = 259,
    kPageDjvu = 260, kPageTiff = 261, kPageJp2 = 262, kPageJ2k = 263, kPageGif = 264,
    kPageBmp = 265, kPageRaw = 266, kPageWebp = 267,
};
// clang-format on

/// 1 and 3 are the two forms of a payload.
enum PageKind : int { kKindUnknown = 0, kKindPayload = 1, kKindPlain = 2, kKindPayloadRepair = 3 };

/// What came of sniffing; 0 alone may be loaded.
enum SniffResult : int {
    kSniffFailed = -1,  // cannot be read, is cut short in its head, or is locked
    kSniffDone = 0,
    kSniffUnknown = 2,
    kSniffHtml = 3,
    kSniffTooShort = 4,
    kSniff8080 = 5,
    kSniffPdf = 6,
};

struct SniffedPage {
    int type = kPageUnknown, kind = kKindUnknown, result = kSniffUnknown;
    bool hasHead = false;   // begins with "HH"
    bool isLocked = false;  // a payload that its publisher locked
    std::uint64_t payloadAt = 0, payloadSize = 0;
    std::uint64_t fileSize = 0;
};

/// `name` is what the source is called.
SniffedPage SniffPage(ByteSource& source, const std::filesystem::path& name);

/// Says why a page may not be loaded, in the reason's kind too. False always; not for kSniffDone.
bool FailSniffed(const SniffedPage& page, FileError* error);

/// Loads a page that SniffPage let pass: an ordinary picture by its content, a payload by the
/// decoder. Where a page is marked with 96 dpi, as nobody scans, it becomes 150, or 300 where it is
/// wider than 1200 pixels.
bool LoadSniffedPage(ByteSource& source, const SniffedPage& sniffed, const LoadOptions& options,
                     bool tryRepair, CDibImage& image, LoadNotes& notes, FileError* error);

/// What turns a payload into a picture. There is none in the system itself: payloads then end in a
/// message.
struct PageDecoder {
    /// The whole file; true with an image, or nothing.
    bool (*decode)(std::span<const std::uint8_t> bytes, CDibImage& image) = nullptr;
    /// Works on a loaded page of kind 3; may be null.
    void (*repair)(std::span<const std::uint8_t> bytes, CDibImage& image) = nullptr;
};
void SetPageDecoder(PageDecoder decoder);

/// The same in the form that callers of page files know.
class CPdgLoader {
 public:
    /// The result code; type and kind also where it is not 0.
    static int SniffFile(const std::filesystem::path& path, int& outType, int& outKind);
    /// Whether pixels came.
    static bool LoadPage(const std::uint8_t* bytes, std::size_t size, CDibImage& image,
                         bool tryRepair);
};

}  // namespace velloran
