#pragma once

// What travels with a picture from file to file: colour profile, EXIF and XMP, each as the bytes
// of its own standard, without what a format wraps round them.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace velloran {

class CDibImage;

using Blob = std::vector<std::uint8_t>;

struct Metadata {
    Blob profile;  // ICC
    Blob exif;     // from its byte order mark on, "II" or "MM"
    Blob xmp;      // a packet, UTF-8

    bool IsEmpty() const { return profile.empty() && exif.empty() && xmp.empty(); }
};

/// Larger parts are not taken along: no camera and no scanner writes them.
inline constexpr std::size_t kMostMetadataBytes = std::size_t{16} << 20;

/// What a profile speaks of, by its head.
enum class ProfileKind { kNone, kGray, kRgb, kCmyk, kOther };
ProfileKind KindOfProfile(std::span<const std::uint8_t> profile);

/// Whether any colour of the image is one: 24 bits, or a palette entry that is not grey.
bool HasColor(const CDibImage& image);

/// What a file of the image as it is now may hold of what came with its source. The profile stays
/// where the image, the file (`fileHasColor`) and the profile are of one kind of colour. EXIF gets
/// orientation 1, the image's sizes and resolution, and no thumbnail; XMP orientation 1.
Metadata MetadataToWrite(const CDibImage& image, bool fileHasColor);

/// The bytes without the "Exif" mark and the zeros that some formats put before them; empty where
/// they are no EXIF.
std::span<const std::uint8_t> BareExif(std::span<const std::uint8_t> bytes);

}  // namespace velloran
