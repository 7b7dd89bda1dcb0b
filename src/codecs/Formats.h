#pragma once

// The table of formats, one row a format. Type detection, filters, refusals, the automatic
// extension, help and completions read it: a new format is one row and one file pair.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "codecs/JpegRules.h"
#include "params/TargetRule.h"

namespace velloran {

class ByteSink;
class ByteSource;
class CDibImage;
struct FileError;
struct ImageInfo;
struct LoadNotes;

// clang-format off
enum FileTypeId : int {
    kTypeUnknown = 0, kTypeJpeg = 1, kTypeUfo = 2, kTypeGif = 3, kTypeBmp = 4, kTypePng = 5,
    kTypeTiff = 6, kTypeMetafile = 7, kTypeJ2k = 8, kTypeJp2 = 9, kTypeWebp = 10, kTypeRaw = 11,
    kTypeDjvu = 260,  // as the sniffer of page files counts
};
// clang-format on

struct LoadOptions {
    bool reverseCmyk = false;  // inks of JPEG
    int page = 1;              // of those that the file holds
};

/// Positions of PARA_COLOR that only BMP can hold.
inline constexpr int kColorIndex565 = 18, kColorIndex555 = 19;

struct SaveOptions {
    int quality = 90, dpi = 96;
    int colorIndex = 2;             // position of PARA_COLOR
    int jp2Rate = 15;               // PARA_JP2_RATE
    bool transparentWhite = false;  // PARA_DECREASE_TRANSPARENT
    bool cropGif = false;           // keeps only the tight frame of a GIF
    JpegRules jpeg;
    const CDibImage* jpegSource = nullptr;  // stands in for an image that came from no JPEG
};

/// Reads the page asked for, where the format has several. False, with a reason, leaves the image
/// as it was.
using FormatLoad = bool (*)(ByteSource& source, const LoadOptions& options, CDibImage& image,
                            LoadNotes& notes, FileError* error);
/// What the file says, without decoding pixels.
using FormatInfo = bool (*)(ByteSource& source, ImageInfo& info, FileError* error);
/// What stands beside the picture: what travels with it, and how many pictures there are, without
/// decoding pixels.
using FormatNotes = bool (*)(ByteSource& source, LoadNotes& notes, FileError* error);
/// Writes into an open sink. The image may take the DPI written and be normalised in depth.
using FormatSave = bool (*)(ByteSink& sink, CDibImage& image, const SaveOptions& options,
                            FileError* error);

struct FormatExtension {
    std::string_view text;  // with its dot, in small letters
    FileTypeId type;        // what a name with it stands for; unknown: known by content alone
    enum Lists : unsigned {
        kOpen = 1,        // stands in the filters of open dialogs
        kOwnSources = 2,  // in its own entry of PARA_SRC_FILES
        kAllSources = 4,  // in the entry of PARA_SRC_FILES that means all
        kEverywhere = 7,
    };
    unsigned lists = kEverywhere;
    std::string_view ownPattern = {};  // in the format's own entry of open dialogs, if another
};

/// Bytes that a file of the format has at an offset.
struct HeadRule {
    struct Part {
        std::size_t offset = 0;
        std::string_view bytes;
    };
    Part first, second;  // the second part may be empty
};

struct Format {
    FileTypeId id = kTypeUnknown;
    std::string_view name = {};           // "JPEG"
    std::u16string_view filterName = {};  // of its entry in open dialogs; empty: in another's entry
    std::span<const FormatExtension> extensions = {};
    std::span<const HeadRule> heads = {};  // any of them; an earlier format wins
    FormatInfo info = nullptr;             // null where there is none (yet)
    FormatNotes notes = nullptr;           // null where nothing can stand there
    FormatLoad load = nullptr;
    FormatSave save = nullptr;
    TargetFormat target = TargetFormat::kAuto;  // as which it is saved; kAuto: never
    std::u16string_view firstSave = {};         // where a save dialog begins; empty: by the depth
    enum Traits : unsigned {
        kHoldsPalette = 1,  // 1, 4 and 8 bits
        kHoldsGray = 2,
        kHoldsColor = 4,  // 24 bits
        kHolds16Bit = 8,  // 565 and 555
        kHoldsAll = 7,
        kHoldsAlpha = 16,        // a plane of it
        kHoldsTransparent = 32,  // at least one transparent index
        kLossy = 64,
        kHoldsProfile = 128,     // of colour, with EXIF and XMP
        kSeveralPages = 256,     // pages or frames
        kReducedTarget = 512,    // a reduced result may be written to it
        kRenamed = 1024,         // the renamer takes it
        kSourcesEndOpen = 2048,  // its entry of PARA_SRC_FILES ends with a semicolon
    };
    unsigned traits = 0;

    bool Has(unsigned wanted) const { return (traits & wanted) == wanted; }
    bool IsSaveTarget() const { return target != TargetFormat::kAuto; }
};

/// All formats, in the order of the lists.
std::span<const Format> Formats();
/// The row of an id; null for 0 and for numbers that are no id.
const Format* FindFormat(int id);
/// The row whose extension this is (with its dot, ignoring case); null for none.
const Format* FormatOfName(std::string_view extension);
/// The row that pages are saved as; null for kAuto.
const Format* FormatOfTarget(TargetFormat target);

/// The type that the first bytes (512 are enough) tell; unknown for none.
FileTypeId TypeOfHead(std::span<const std::uint8_t> head);
/// The type that an extension with its dot stands for, ignoring case.
FileTypeId TypeOfExtension(std::string_view extension);
/// "JPEG", "UFO" and so on; "unknown" for 0 and for numbers that are no id.
std::string_view FileTypeName(int id);

/// What a user's word for a target extension means, ignoring case, with or without dot: "auto" or
/// any extension of a format that pages are saved as ("jpeg" and "JPG" are jpg). Nothing else.
std::optional<TargetFormat> FormatOfExtension(std::string_view text);
/// The words that stand for the positions of the list of target extensions: "auto", "jpg" ...
std::span<const std::string_view> TargetExtensionWords();

/// The filter of open dialogs, parts divided by "|".
std::u16string_view SupportedFilter();
/// Extensions that a position of PARA_SRC_FILES means; empty for a position that is none.
std::u16string_view SourceFilter(int position);
int SourceFilterCount();

}  // namespace velloran
