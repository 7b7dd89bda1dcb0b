#include "codecs/TiffExif.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <span>
#include <utility>
#include <vector>

#include "codecs/ExifBlock.h"
#include "codecs/ExifDirectories.h"
#include "io/ByteSink.h"
#include "io/ByteSource.h"

namespace velloran {
namespace {

using namespace exif;

// Fields that describe samples, strips and coding, and what is carried by other ways: they belong
// to the file, not to the picture's origin.
constexpr std::uint16_t kOwnTags[] = {
    254, 255, 256, 257, 258, 259, 262, 263, 264, 265, 266, 273, 277, 278,   279,   280,  281, 284,
    288, 289, 290, 291, 292, 293, 297, 301, 317, 320, 321, 322, 323, 324,   325,   326,  327, 328,
    330, 332, 333, 334, 336, 337, 338, 339, 340, 341, 342, 343, 344, 345,   346,   347,  400, 512,
    513, 514, 515, 517, 518, 519, 520, 521, 529, 530, 531, 532, 700, 34377, 34675, 37724};
// Those that every scan has, and that alone are no reason to carry a block.
constexpr int kTrivialTags[] = {kOrientation, kXResolution, kYResolution, kResolutionUnit};
constexpr std::size_t kMostEntries = 4096;

bool IsOwn(int tag) {
    constexpr int kFirstOfRaw = 50706, kLastOfRaw = 52600;  // digital negatives
    return std::binary_search(std::begin(kOwnTags), std::end(kOwnTags), tag) ||
           (tag >= kFirstOfRaw && tag <= kLastOfRaw);
}

bool IsTrivial(int tag) {
    return std::find(std::begin(kTrivialTags), std::end(kTrivialTags), tag) !=
           std::end(kTrivialTags);
}

bool IsPointer(int tag) {
    return tag == kExifDirectory || tag == kGpsDirectory || tag == kInteropDirectory;
}

struct Field {
    int tag = 0, type = 0;
    std::uint32_t count = 0;
    Blob values;                // as they lie in the file
    std::vector<Field> fields;  // of a directory
};
using Directory = std::vector<Field>;

/// Reads directories out of a file.
class Collector {
 public:
    Collector(ByteSource& source, bool bigEndian) : source_(source), bigEndian_(bigEndian) {}

    Directory Read(std::uint64_t place, bool isFirst, int depth) {
        Directory directory;
        std::array<std::uint8_t, kEntryBytes> bytes{};
        if (source_.ReadAt(place, std::span(bytes).first(2)) != 2)
            return directory;
        const std::size_t count =
            std::min<std::size_t>(NumberAt(bytes.data(), 2, bigEndian_), kMostEntries);
        for (std::size_t i = 0; i < count; ++i) {
            if (source_.ReadAt(place + 2 + i * kEntryBytes, bytes) != bytes.size())
                break;
            const int tag = static_cast<int>(NumberAt(bytes.data(), 2, bigEndian_));
            if (!isFirst || !IsOwn(tag))
                Take(bytes, tag, depth, directory);
        }
        return directory;
    }

 private:
    void Take(const std::array<std::uint8_t, kEntryBytes>& bytes, int tag, int depth,
              Directory& directory) {
        Field field;
        field.tag = tag;
        field.type = static_cast<int>(NumberAt(bytes.data() + 2, 2, bigEndian_));
        field.count = static_cast<std::uint32_t>(NumberAt(bytes.data() + 4, 4, bigEndian_));
        const std::uint64_t place = NumberAt(bytes.data() + 8, 4, bigEndian_);
        constexpr int kMostDepth = 3;
        if (IsPointer(tag)) {
            if (depth < kMostDepth)
                field.fields = Read(place, /*isFirst=*/false, depth + 1);
            if (!field.fields.empty())
                directory.push_back(std::move(field));
            return;
        }
        const std::uint64_t size = std::uint64_t{field.count} * SizeOfType(field.type);
        if (size == 0 || size > kMostMetadataBytes - taken_)
            return;
        taken_ += size;
        field.values.assign(bytes.begin() + 8, bytes.end());
        if (size > 4) {
            field.values.resize(static_cast<std::size_t>(size));
            if (source_.ReadAt(place, field.values) != size)
                return;
        }
        directory.push_back(std::move(field));
    }

    ByteSource& source_;
    bool bigEndian_;
    std::uint64_t taken_ = 0;
};

/// Lays directories out in a block.
class Layout {
 public:
    explicit Layout(bool bigEndian) : bigEndian_(bigEndian) {
        block_ = {'I', 'I', 0, 0, 0, 0, 0, 0};
        if (bigEndian)
            block_[0] = block_[1] = 'M';
        Put(2, 2, 42);
        Put(4, 4, kHeadBytes);
    }

    Blob Take() { return std::move(block_); }

    /// Returns where the directory lies.
    std::size_t Add(const Directory& directory) {
        const std::size_t at = Room(2 + directory.size() * kEntryBytes + 4);
        Put(at, 2, directory.size());
        for (std::size_t i = 0; i < directory.size(); ++i) {
            const Field& field = directory[i];
            const std::size_t entry = at + 2 + i * kEntryBytes;
            Put(entry, 2, static_cast<std::uint64_t>(field.tag));
            Put(entry + 2, 2,
                static_cast<std::uint64_t>(IsPointer(field.tag) ? kLong : field.type));
            Put(entry + 4, 4, IsPointer(field.tag) ? 1 : field.count);
            if (IsPointer(field.tag)) {
                Put(entry + 8, 4, Add(field.fields));
            } else if (field.values.size() <= 4) {
                std::copy(field.values.begin(), field.values.end(), block_.data() + entry + 8);
            } else {
                const std::size_t place = Room(field.values.size());
                std::copy(field.values.begin(), field.values.end(), block_.data() + place);
                Put(entry + 8, 4, place);
            }
        }
        return at;
    }

 private:
    std::size_t Room(std::size_t size) {
        const std::size_t at = block_.size() + (block_.size() & 1);
        block_.resize(at + size);
        return at;
    }
    void Put(std::size_t at, std::size_t size, std::uint64_t value) {
        PutNumberAt(block_.data() + at, size, bigEndian_, value);
    }

    Blob block_;
    bool bigEndian_;
};

/// Moves everything that a block's entries point to by `shift`; each directory once.
void Relocate(Blob& exif, std::uint64_t shift) {
    const Blob before = exif;
    const Block block(before);
    const std::size_t first = block.FirstDirectory();
    std::vector<std::size_t> directories = {first};
    for (std::size_t i = 0; i < directories.size(); ++i)
        for (const Entry& entry : block.EntriesOf(directories[i])) {
            const auto place = static_cast<std::size_t>(block.Number(entry.at + 8, 4));
            const std::uint64_t size = std::uint64_t{entry.count} * SizeOfType(entry.type);
            if (!IsPointer(entry.tag) && size <= 4)
                continue;
            PutNumberAt(exif.data() + entry.at + 8, 4, block.IsBigEndian(), place + shift);
            if (IsPointer(entry.tag) &&
                std::find(directories.begin(), directories.end(), place) == directories.end())
                directories.push_back(place);
        }
}

using EntryBytes = std::array<std::uint8_t, kEntryBytes>;

/// The file's entries and those of the block that it has not, sorted by tag.
std::vector<EntryBytes> Joined(std::span<const std::uint8_t> own, const Blob& exif,
                               bool bigEndian) {
    std::vector<EntryBytes> joined(own.size() / kEntryBytes);
    std::memcpy(joined.data(), own.data(), joined.size() * kEntryBytes);
    const auto tagOf = [&](const EntryBytes& entry) {
        return NumberAt(entry.data(), 2, bigEndian);
    };
    const std::size_t ownCount = joined.size();
    const Block block(exif);
    for (const Entry& entry : block.EntriesOf(block.FirstDirectory())) {
        const auto ownEnd = joined.begin() + static_cast<std::ptrdiff_t>(ownCount);
        const bool isThere = std::any_of(joined.begin(), ownEnd, [&](const EntryBytes& other) {
            return tagOf(other) == static_cast<std::uint64_t>(entry.tag);
        });
        if (isThere || IsOwn(entry.tag))
            continue;
        std::memcpy(joined.emplace_back().data(), exif.data() + entry.at, kEntryBytes);
    }
    std::stable_sort(joined.begin(), joined.end(),
                     [&](const EntryBytes& a, const EntryBytes& b) { return tagOf(a) < tagOf(b); });
    return joined;
}

bool ReadBack(ByteSink& sink, std::uint64_t at, std::span<std::uint8_t> to) {
    return sink.Seek(at) && sink.Read(to.data(), to.size()) == to.size();
}

}  // namespace

Blob CollectTiffExif(ByteSource& source, std::uint64_t place) {
    std::array<std::uint8_t, 4> head{};
    source.ReadAt(0, head);
    const bool bigEndian = head[0] == 'M';
    if (NumberAt(head.data() + 2, 2, bigEndian) != 42)
        return {};
    const Directory directory = Collector(source, bigEndian).Read(place, /*isFirst=*/true, 0);
    const bool isWorth = std::any_of(directory.begin(), directory.end(),
                                     [](const Field& field) { return !IsTrivial(field.tag); });
    if (!isWorth)
        return {};
    Layout layout(bigEndian);
    layout.Add(directory);
    return layout.Take();
}

bool AppendTiffExif(ByteSink& sink, Blob exif) {
    std::array<std::uint8_t, kHeadBytes> head{};
    std::array<std::uint8_t, 2> countBytes{};
    if (!IsExif(exif) || !ReadBack(sink, 0, head))
        return !sink.HasFailed();
    const bool bigEndian = head[0] == 'M';
    const std::uint64_t place = NumberAt(head.data() + 4, 4, bigEndian);
    if (bigEndian != (exif[0] == 'M') || !ReadBack(sink, place, countBytes))
        return !sink.HasFailed();
    Blob own(static_cast<std::size_t>(NumberAt(countBytes.data(), 2, bigEndian)) * kEntryBytes);
    if (!ReadBack(sink, place + 2, own))
        return !sink.HasFailed();
    const std::uint64_t end = sink.Size() + (sink.Size() & 1);
    constexpr std::uint64_t kMostPlace = 0xFFFFFFFF;
    if (end + exif.size() + own.size() + 0x10000 > kMostPlace)
        return true;      // no room left in 32 bits
    Relocate(exif, end);  // its head stays: the first directory is found as before
    const std::vector<EntryBytes> joined = Joined(own, exif, bigEndian);
    const std::uint64_t directory = end + exif.size() + (exif.size() & 1);
    Blob bytes(2 + joined.size() * kEntryBytes + 4);
    PutNumberAt(bytes.data(), 2, bigEndian, joined.size());
    std::memcpy(bytes.data() + 2, joined.data(), joined.size() * kEntryBytes);
    PutNumberAt(head.data() + 4, 4, bigEndian, directory);
    return sink.Seek(end) && sink.Write(exif.data(), exif.size()) && sink.Seek(directory) &&
           sink.Write(bytes.data(), bytes.size()) && sink.Seek(0) &&
           sink.Write(head.data(), head.size());
}

}  // namespace velloran
