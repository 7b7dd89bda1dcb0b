#include "codecs/PngMetadata.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <span>
#include <string_view>

#include "codecs/ByteOrder.h"
#include "io/ByteSource.h"

namespace velloran {
namespace {

using Bytes = std::span<const std::uint8_t>;
using namespace std::string_view_literals;

constexpr std::string_view kXmpKeyword = "XML:com.adobe.xmp\0"sv;
constexpr std::string_view kProfileName = "ICC profile\0\0"sv;  // with the method of packing

/// Unpacked data of at most kMostMetadataBytes; nothing for more, and for damage.
Blob Inflate(Bytes packed) {
    z_stream stream{};
    if (packed.empty() || inflateInit(&stream) != Z_OK)
        return {};
    Blob unpacked(std::min(kMostMetadataBytes, packed.size() * 4 + 1024));
    stream.next_in = const_cast<Bytef*>(packed.data());  // zlib only reads it
    stream.avail_in = static_cast<uInt>(packed.size());
    int status = Z_OK;
    while (status == Z_OK) {
        if (stream.total_out == unpacked.size()) {
            if (unpacked.size() == kMostMetadataBytes)
                break;
            unpacked.resize(std::min(kMostMetadataBytes, unpacked.size() * 2));
        }
        stream.next_out = unpacked.data() + stream.total_out;
        stream.avail_out = static_cast<uInt>(unpacked.size() - stream.total_out);
        status = inflate(&stream, Z_NO_FLUSH);
    }
    unpacked.resize(status == Z_STREAM_END ? static_cast<std::size_t>(stream.total_out) : 0);
    inflateEnd(&stream);
    return unpacked;
}

/// A name, a zero, the method of packing, and the packed profile.
Blob ProfileOf(Bytes chunk) {
    const auto zero = std::find(chunk.begin(), chunk.end(), 0);
    const std::size_t at = static_cast<std::size_t>(zero - chunk.begin()) + 2;
    if (at >= chunk.size() || chunk[at - 1] != 0)
        return {};
    return Inflate(chunk.subspan(at));
}

/// Keyword, whether it is packed, method, and two texts that each end in a zero.
Blob XmpOf(Bytes chunk) {
    if (chunk.size() < kXmpKeyword.size() + 2 ||
        std::memcmp(chunk.data(), kXmpKeyword.data(), kXmpKeyword.size()) != 0)
        return {};
    const bool isPacked = chunk[kXmpKeyword.size()] != 0;
    Bytes text = chunk.subspan(kXmpKeyword.size() + 2);
    for (int i = 0; i < 2; ++i) {
        const auto zero = std::find(text.begin(), text.end(), 0);
        if (zero == text.end())
            return {};
        text = text.subspan(static_cast<std::size_t>(zero - text.begin()) + 1);
    }
    return isPacked ? Inflate(text) : Blob(text.begin(), text.end());
}

void Take(std::string_view name, Bytes chunk, Metadata& metadata) {
    if (name == "eXIf" && metadata.exif.empty()) {
        const Bytes exif = BareExif(chunk);
        metadata.exif.assign(exif.begin(), exif.end());
    } else if (name == "iCCP" && metadata.profile.empty()) {
        metadata.profile = ProfileOf(chunk);
    } else if (name == "iTXt" && metadata.xmp.empty()) {
        metadata.xmp = XmpOf(chunk);
    }
}

}  // namespace

Metadata ReadPngMetadata(ByteSource& source) {
    Metadata metadata;
    std::array<std::uint8_t, 8> head{};
    constexpr std::uint64_t kSignature = 8, kAround = 12;  // length, name, check sum
    for (std::uint64_t at = kSignature; source.Size() - at >= kAround && at < source.Size();) {
        if (source.ReadAt(at, head) != head.size())
            break;
        const std::uint64_t length = Big32(head.data());
        const std::string_view name(reinterpret_cast<const char*>(head.data()) + 4, 4);
        if (length > source.Size() - at - kAround || name == "IEND")
            break;
        if ((name == "eXIf" || name == "iCCP" || name == "iTXt") && length <= kMostMetadataBytes) {
            Blob chunk(static_cast<std::size_t>(length));
            chunk.resize(source.ReadAt(at + 8, chunk));
            Take(name, chunk, metadata);
        }
        at += kAround + length;
    }
    return metadata;
}

std::vector<PngChunk> PngChunksOf(const Metadata& metadata) {
    std::vector<PngChunk> chunks;
    if (!metadata.profile.empty()) {
        PngChunk chunk{{"iCCP"}, Blob(kProfileName.begin(), kProfileName.end())};
        uLongf size = compressBound(static_cast<uLong>(metadata.profile.size()));
        chunk.bytes.resize(kProfileName.size() + size);
        if (compress(chunk.bytes.data() + kProfileName.size(), &size, metadata.profile.data(),
                     static_cast<uLong>(metadata.profile.size())) == Z_OK) {
            chunk.bytes.resize(kProfileName.size() + size);
            chunks.push_back(std::move(chunk));
        }
    }
    if (!metadata.exif.empty())
        chunks.push_back({{"eXIf"}, metadata.exif});
    if (!metadata.xmp.empty()) {
        PngChunk chunk{{"iTXt"}, Blob(kXmpKeyword.begin(), kXmpKeyword.end())};
        chunk.bytes.resize(chunk.bytes.size() + 4);  // not packed, no language, no translation
        AppendBytes(chunk.bytes, metadata.xmp);
        chunks.push_back(std::move(chunk));
    }
    return chunks;
}

}  // namespace velloran
