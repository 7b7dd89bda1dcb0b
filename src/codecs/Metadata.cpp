#include "codecs/Metadata.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "codecs/ExifBlock.h"
#include "core/DibImage.h"

namespace velloran {
namespace {

/// Orientation stands in XMP as an attribute or as an element, one digit in either.
void SetXmpUpright(Blob& xmp) {
    static constexpr std::array<std::string_view, 3> kForms = {
        "tiff:Orientation=\"", "tiff:Orientation='", "<tiff:Orientation>"};
    for (const std::string_view form : kForms) {
        auto at = xmp.begin();
        while ((at = std::search(at, xmp.end(), form.begin(), form.end())) != xmp.end()) {
            at += static_cast<std::ptrdiff_t>(form.size());
            if (at != xmp.end() && *at >= '1' && *at <= '8')
                *at = '1';
        }
    }
}

}  // namespace

ProfileKind KindOfProfile(std::span<const std::uint8_t> profile) {
    constexpr std::size_t kHeadBytes = 128;
    if (profile.size() < kHeadBytes || std::memcmp(profile.data() + 36, "acsp", 4) != 0)
        return ProfileKind::kNone;
    const auto space = [&](const char* name) {
        return std::memcmp(profile.data() + 16, name, 4) == 0;
    };
    if (space("GRAY"))
        return ProfileKind::kGray;
    if (space("RGB "))
        return ProfileKind::kRgb;
    return space("CMYK") ? ProfileKind::kCmyk : ProfileKind::kOther;
}

bool HasColor(const CDibImage& image) {
    if (image.GetBpp() > 8)
        return true;
    const PaletteEntry* entries = image.GetPalette();
    return std::any_of(entries, entries + image.GetPaletteCount(), [](const PaletteEntry& entry) {
        return entry.red != entry.green || entry.green != entry.blue;
    });
}

Metadata MetadataToWrite(const CDibImage& image, bool fileHasColor) {
    if (image.Source().metadata == nullptr)
        return {};
    Metadata metadata = *image.Source().metadata;
    const ProfileKind wanted = fileHasColor ? ProfileKind::kRgb : ProfileKind::kGray;
    if (KindOfProfile(metadata.profile) != wanted || HasColor(image) != fileHasColor)
        metadata.profile.clear();
    if (!metadata.exif.empty())
        SettleExif({image.GetWidth(), image.GetHeight(), image.GetXDpi(), image.GetYDpi()},
                   metadata.exif);
    SetXmpUpright(metadata.xmp);
    return metadata;
}

std::span<const std::uint8_t> BareExif(std::span<const std::uint8_t> bytes) {
    constexpr std::size_t kMark = 6;
    if (bytes.size() > kMark && (std::memcmp(bytes.data(), "Exif\0\0", kMark) == 0 ||
                                 std::memcmp(bytes.data(), "EXIF\0\0", kMark) == 0))
        bytes = bytes.subspan(kMark);
    return IsExif(bytes) ? bytes : std::span<const std::uint8_t>{};
}

}  // namespace velloran
