#include "codecs/JpegMetadata.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <string_view>

#include "codecs/JpegErrors.h"

namespace velloran {
namespace {

using namespace std::string_view_literals;
using Bytes = std::span<const std::uint8_t>;

constexpr std::string_view kExifMark = "Exif\0\0"sv;
constexpr std::string_view kXmpMark = "http://ns.adobe.com/xap/1.0/\0"sv;
constexpr std::string_view kProfileMark = "ICC_PROFILE\0"sv;
constexpr std::size_t kProfileHead = 14;   // the mark, number and count
constexpr std::size_t kMostBytes = 65533;  // of a segment

bool Begins(Bytes bytes, std::string_view mark) {
    return bytes.size() > mark.size() && std::memcmp(bytes.data(), mark.data(), mark.size()) == 0;
}

/// The pieces of a profile in their order; nothing when one is missing.
Blob JoinProfile(const jpeg_decompress_struct& head) {
    std::array<Bytes, 256> pieces{};
    std::size_t count = 0;
    for (jpeg_saved_marker_ptr marker = head.marker_list; marker; marker = marker->next) {
        const Bytes bytes(marker->data, marker->data_length);
        if (marker->marker != JPEG_APP0 + 2 || !Begins(bytes, kProfileMark) ||
            bytes.size() < kProfileHead)
            continue;
        count = std::max<std::size_t>(count, bytes[13]);
        if (pieces[bytes[12]].empty())
            pieces[bytes[12]] = bytes.subspan(kProfileHead);
    }
    Blob profile;
    for (std::size_t i = 1; i <= count; ++i) {
        if (pieces[i].empty() || profile.size() + pieces[i].size() > kMostMetadataBytes)
            return {};
        profile.insert(profile.end(), pieces[i].begin(), pieces[i].end());
    }
    return profile;
}

void AddSegment(std::vector<JpegSegment>& segments, int marker, std::string_view mark,
                Bytes bytes) {
    if (bytes.empty() || bytes.size() + mark.size() > kMostBytes)
        return;
    JpegSegment segment{marker, Blob(mark.begin(), mark.end())};
    segment.bytes.insert(segment.bytes.end(), bytes.begin(), bytes.end());
    segments.push_back(std::move(segment));
}

}  // namespace

Metadata JpegMetadataOf(const jpeg_decompress_struct& head) {
    Metadata metadata;
    for (jpeg_saved_marker_ptr marker = head.marker_list; marker; marker = marker->next) {
        const Bytes bytes(marker->data, marker->data_length);
        if (marker->marker != JPEG_APP0 + 1)
            continue;
        if (metadata.exif.empty() && Begins(bytes, kExifMark)) {
            const Bytes exif = BareExif(bytes);
            metadata.exif.assign(exif.begin(), exif.end());
        } else if (metadata.xmp.empty() && Begins(bytes, kXmpMark)) {
            metadata.xmp.assign(bytes.begin() + static_cast<std::ptrdiff_t>(kXmpMark.size()),
                                bytes.end());
        }
    }
    metadata.profile = JoinProfile(head);
    return metadata;
}

std::vector<JpegSegment> JpegSegmentsOf(const Metadata& metadata) {
    std::vector<JpegSegment> segments;
    AddSegment(segments, JPEG_APP0 + 1, kExifMark, metadata.exif);
    AddSegment(segments, JPEG_APP0 + 1, kXmpMark, metadata.xmp);
    constexpr std::size_t kPiece = kMostBytes - kProfileHead;
    const Bytes profile(metadata.profile);
    const std::size_t count = (profile.size() + kPiece - 1) / kPiece;
    for (std::size_t i = 0; i < count && count <= 255; ++i) {
        std::string mark(kProfileMark);
        mark += static_cast<char>(i + 1);
        mark += static_cast<char>(count);
        AddSegment(segments, JPEG_APP0 + 2, mark,
                   profile.subspan(i * kPiece, std::min(kPiece, profile.size() - i * kPiece)));
    }
    return segments;
}

}  // namespace velloran
