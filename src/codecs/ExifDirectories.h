#pragma once

// The directories of EXIF and TIFF: entries of twelve bytes that hold their values or the place of
// them. Internal to the codecs.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "codecs/ByteOrder.h"

namespace velloran::exif {

inline constexpr std::size_t kHeadBytes = 8, kEntryBytes = 12;
inline constexpr int kShort = 3, kLong = 4, kRational = 5;

enum Tag : int {
    kImageWidth = 0x100,
    kImageLength = 0x101,
    kOrientation = 0x112,
    kStripOffsets = 0x111,
    kStripByteCounts = 0x117,
    kXResolution = 0x11A,
    kYResolution = 0x11B,
    kResolutionUnit = 0x128,
    kThumbnail = 0x201,
    kThumbnailLength = 0x202,
    kExifDirectory = 0x8769,
    kGpsDirectory = 0x8825,
    kInteropDirectory = 0xA005,
    kPixelWidth = 0xA002,
    kPixelHeight = 0xA003,
    kRelatedWidth = 0x1001,
    kRelatedHeight = 0x1002,
};

/// A piece of the block that something lies in.
struct Piece {
    std::size_t begin = 0, end = 0;
    bool Meets(const Piece& other) const { return begin < other.end && other.begin < end; }
};

/// Bytes of one value of a type; 0 for a type that there is none of.
inline std::size_t SizeOfType(int type) {
    constexpr std::uint8_t kSizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};
    return type >= 0 && type < static_cast<int>(sizeof kSizes) ? kSizes[type] : 0;
}

struct Entry {
    std::size_t at = 0;  // in the block
    int tag = 0, type = 0;
    std::size_t count = 0;
};

/// Directories in one block of memory; places are counted from its beginning.
class Block {
 public:
    /// `bytes` begins as IsExif asks.
    explicit Block(std::span<const std::uint8_t> bytes)
        : bytes_(bytes), bigEndian_(bytes[0] == 'M') {}

    bool IsBigEndian() const { return bigEndian_; }
    std::uint64_t Number(std::size_t at, std::size_t size) const {
        return NumberAt(bytes_.data() + at, size, bigEndian_);
    }
    std::size_t FirstDirectory() const { return static_cast<std::size_t>(Number(4, 4)); }

    /// Entries of a directory as far as they lie in the block; none for a place outside.
    std::vector<Entry> EntriesOf(std::size_t directory) const {
        std::vector<Entry> entries;
        if (directory < kHeadBytes || directory > bytes_.size() || bytes_.size() - directory < 2)
            return entries;
        const std::size_t fits = (bytes_.size() - directory - 2) / kEntryBytes;
        const std::size_t count = std::min(static_cast<std::size_t>(Number(directory, 2)), fits);
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t at = directory + 2 + i * kEntryBytes;
            entries.push_back({at, static_cast<int>(Number(at, 2)),
                               static_cast<int>(Number(at + 2, 2)),
                               static_cast<std::size_t>(Number(at + 4, 4))});
        }
        return entries;
    }

    /// Where the place of the next directory stands; nothing when that is cut off.
    std::optional<std::size_t> NextPlaceOf(std::size_t directory) const {
        if (directory < kHeadBytes || directory > bytes_.size() || bytes_.size() - directory < 2)
            return std::nullopt;
        const std::size_t at =
            directory + 2 + static_cast<std::size_t>(Number(directory, 2)) * kEntryBytes;
        return at <= bytes_.size() && bytes_.size() - at >= 4 ? std::optional(at) : std::nullopt;
    }

    /// Where an entry's values lie; empty when not wholly in the block.
    Piece ValuesOf(const Entry& entry) const {
        const std::uint64_t size = std::uint64_t{entry.count} * SizeOfType(entry.type);
        if (size == 0)
            return {};
        const std::size_t begin =
            size <= 4 ? entry.at + 8 : static_cast<std::size_t>(Number(entry.at + 8, 4));
        if (begin > bytes_.size() || size > bytes_.size() - begin)
            return {};
        return {begin, begin + static_cast<std::size_t>(size)};
    }

    /// The one whole number that an entry holds.
    std::optional<std::uint64_t> IntegerOf(const Entry& entry) const {
        if (entry.count != 1 || (entry.type != kShort && entry.type != kLong))
            return std::nullopt;
        return Number(entry.at + 8, SizeOfType(entry.type));
    }

    std::optional<std::uint64_t> Find(std::size_t directory, int tag) const {
        for (const Entry& entry : EntriesOf(directory))
            if (entry.tag == tag)
                return IntegerOf(entry);
        return std::nullopt;
    }

 private:
    std::span<const std::uint8_t> bytes_;
    bool bigEndian_;
};

}  // namespace velloran::exif
