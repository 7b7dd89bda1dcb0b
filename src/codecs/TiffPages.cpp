#include "codecs/TiffPages.h"

#include <tiff.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <set>

#include "io/ByteSource.h"

namespace velloran {
namespace {

constexpr std::size_t kMostPages = 65535;
constexpr std::uint64_t kPreviewOrMask = FILETYPE_REDUCEDIMAGE | FILETYPE_MASK;

/// Numbers in the file's order of bytes.
class Numbers {
 public:
    Numbers(ByteSource& source, bool bigEndian) : source_(source), bigEndian_(bigEndian) {}

    /// `size` is at most 8. False behind the end.
    bool Read(std::uint64_t place, std::size_t size, std::uint64_t& value) {
        std::array<std::uint8_t, 8> bytes{};
        if (source_.ReadAt(place, std::span(bytes).first(size)) < size)
            return false;
        value = 0;
        for (std::size_t i = 0; i < size; ++i)
            value = value << 8 | bytes[bigEndian_ ? i : size - 1 - i];
        return true;
    }

 private:
    ByteSource& source_;
    bool bigEndian_;
};

/// Sizes of the fields: classic files and those of 64 bits.
struct Layout {
    std::size_t countBytes, entryBytes, offsetBytes;
};
constexpr Layout kClassic = {2, 12, 4}, kBig = {8, 20, 8};

/// Whether the page at `place` is one that a reader would show. Entries are sorted, and the kind
/// has the lowest number of all.
bool IsPage(Numbers& numbers, std::uint64_t place, const Layout& layout) {
    std::uint64_t tag = 0, kind = 0;
    const std::uint64_t entry = place + layout.countBytes;
    if (!numbers.Read(entry, 2, tag) || tag != TIFFTAG_SUBFILETYPE ||
        !numbers.Read(entry + layout.entryBytes - layout.offsetBytes, 4, kind))
        return true;
    return (kind & kPreviewOrMask) == 0;
}

/// Calls `visit` with the place of each page, until it says false. False when the chain leads out
/// of the file.
template <typename Visit>
bool WalkPages(ByteSource& source, Visit visit) {
    std::array<std::uint8_t, 4> head{};
    source.ReadAt(0, head);
    Numbers numbers(source, head[0] == 'M');
    std::uint64_t version = 0, place = 0;
    if (!numbers.Read(2, 2, version))
        return false;
    const Layout& layout = version == 43 ? kBig : kClassic;
    if (!numbers.Read(version == 43 ? 8 : 4, layout.offsetBytes, place))
        return false;
    std::set<std::uint64_t> seen;
    bool whole = true;
    while (place != 0 && seen.size() < kMostPages && seen.insert(place).second) {
        std::uint64_t entries = 0;
        whole = numbers.Read(place, layout.countBytes, entries) && entries <= 0xFFFF;
        if (!whole)
            break;
        if (IsPage(numbers, place, layout) && !visit(place))
            return true;
        whole = numbers.Read(place + layout.countBytes + entries * layout.entryBytes,
                             layout.offsetBytes, place);
        if (!whole)
            break;
    }
    return whole;
}

}  // namespace

bool CountTiffPages(ByteSource& source, int& pages) {
    int count = 0;
    const bool whole = WalkPages(source, [&](std::uint64_t) {
        ++count;
        return true;
    });
    pages = std::max(count, 1);
    return whole;
}

std::uint64_t FindTiffPage(ByteSource& source, int page) {
    std::uint64_t found = 0;
    int count = 0;
    WalkPages(source, [&](std::uint64_t place) {
        found = ++count == page ? place : 0;
        return found == 0;
    });
    return found;
}

}  // namespace velloran
