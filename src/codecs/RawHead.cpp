#include "codecs/RawHead.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <vector>

#include "codecs/ByteOrder.h"
#include "io/ByteSource.h"

namespace velloran {
namespace {

using namespace std::string_view_literals;

struct Mark {
    std::size_t offset;
    std::string_view bytes;
};
// Heads that only raw files have.
constexpr Mark kMarks[] = {
    {6, "HEAPCCDR"sv},  // CRW
    {8, "CR\x02"sv},    // CR2
    {4, "ftypcrx "sv},  // CR3
    {0, "FUJIFILMCCD-RAW"sv}, {0, "IIRO"sv},  {0, "IIRS"sv}, {0, "MMOR"sv},
    {0, "IIU\0"sv},           {0, "\0MRM"sv}, {0, "FOVb"sv},
};

constexpr int kPhotometric = 262, kSubDirectories = 330, kDngVersion = 50706;
constexpr std::uint64_t kColorFilter = 32803, kLinearRaw = 34892;
constexpr std::size_t kMostDirectories = 16, kMostEntries = 512;

/// Walks directories and those below them; true at the first that holds raw samples.
bool HasRawSamples(ByteSource& source, bool bigEndian, std::uint64_t first) {
    std::vector<std::uint64_t> places = {first};
    std::array<std::uint8_t, 12> entry{};
    for (std::size_t i = 0; i < places.size() && i < kMostDirectories; ++i) {
        const std::uint64_t place = places[i];
        if (place == 0 || source.ReadAt(place, std::span(entry).first(2)) != 2)
            continue;
        const std::size_t count = std::min<std::size_t>(
            static_cast<std::size_t>(NumberAt(entry.data(), 2, bigEndian)), kMostEntries);
        for (std::size_t e = 0; e < count; ++e) {
            if (source.ReadAt(place + 2 + e * entry.size(), entry) != entry.size())
                break;
            const auto tag = static_cast<int>(NumberAt(entry.data(), 2, bigEndian));
            const bool isShort = NumberAt(entry.data() + 2, 2, bigEndian) == 3;
            const std::uint64_t values = NumberAt(entry.data() + 4, 4, bigEndian);
            const std::uint64_t value = NumberAt(entry.data() + 8, isShort ? 2 : 4, bigEndian);
            if (tag == kDngVersion ||
                (tag == kPhotometric && (value == kColorFilter || value == kLinearRaw)))
                return true;
            if (tag != kSubDirectories)
                continue;
            for (std::uint64_t v = 0; v < std::min<std::uint64_t>(values, kMostDirectories); ++v) {
                std::array<std::uint8_t, 4> at{};
                if (values == 1)
                    places.push_back(value);
                else if (source.ReadAt(value + 4 * v, at) == at.size())
                    places.push_back(NumberAt(at.data(), 4, bigEndian));
            }
        }
    }
    return false;
}

}  // namespace

bool LooksRaw(ByteSource& source) {
    std::array<std::uint8_t, 16> head{};
    source.ReadAt(0, head);
    for (const Mark& mark : kMarks)
        if (std::memcmp(head.data() + mark.offset, mark.bytes.data(),
                        std::min(mark.bytes.size(), head.size() - mark.offset)) == 0)
            return true;
    const bool bigEndian = head[0] == 'M';
    if ((head[0] != 'I' && head[0] != 'M') || head[1] != head[0] ||
        NumberAt(head.data() + 2, 2, bigEndian) != 42)
        return false;
    return HasRawSamples(source, bigEndian, NumberAt(head.data() + 4, 4, bigEndian));
}

}  // namespace velloran
