#include "codecs/DjvuHead.h"

#include <array>
#include <cstring>
#include <span>
#include <utility>

#include "codecs/ByteOrder.h"
#include "io/ByteSource.h"

namespace velloran {
namespace {

constexpr std::uint64_t kFormAt = 4;  // behind the mark of four bytes

/// The head of a chunk that holds others: its name, its length, and what kind of thing it is.
struct Form {
    std::array<std::uint8_t, 12> bytes{};
    bool Read(ByteSource& source, std::uint64_t at) {
        return source.ReadAt(at, bytes) == bytes.size() &&
               std::memcmp(bytes.data(), "FORM", 4) == 0;
    }
    bool Is(const char* kind) const { return std::memcmp(bytes.data() + 8, kind, 4) == 0; }
};

/// The places of all components stand at the head of the directory, before its packed part.
bool ReadDirectory(ByteSource& source, std::vector<std::uint64_t>& places, FileError* error) {
    std::array<std::uint8_t, 11> head{};  // chunk head, flags, count
    constexpr std::uint64_t kAt = kFormAt + 12;
    if (source.ReadAt(kAt, head) != head.size() || std::memcmp(head.data(), "DIRM", 4) != 0)
        return FailDamaged(error, "the document has no directory");
    constexpr int kBundled = 0x80;
    if ((head[8] & kBundled) == 0)
        return FailContent(error, "the document's pages lie in other files",
                           FileReason::kKindNotRead);
    std::vector<std::uint8_t> list(std::size_t{Big16(head.data() + 9)} * 4);
    list.resize(source.ReadAt(kAt + head.size(), list) / 4 * 4);
    for (std::size_t i = 0; i < list.size(); i += 4) {
        const std::uint64_t place = Big32(list.data() + i);
        Form form;
        if (form.Read(source, place) && form.Is("DJVU"))
            places.push_back(place);
    }
    return !places.empty() || FailDamaged(error, "the document has no page");
}

}  // namespace

bool FindDjvuPages(ByteSource& source, std::vector<std::uint64_t>& places, FileError* error) {
    places.clear();
    Form form;
    if (!form.Read(source, kFormAt))
        return FailDamaged(error, "not a whole DjVu head");
    if (form.Is("DJVM"))
        return ReadDirectory(source, places, error);
    if (!form.Is("DJVU"))
        return FailContent(error, "a part of a document, not a page", FileReason::kKindNotRead);
    places.push_back(kFormAt);
    return true;
}

bool ReadDjvuPageHead(ByteSource& source, std::uint64_t place, DjvuPageHead& head,
                      FileError* error) {
    std::array<std::uint8_t, 18> bytes{};
    source.ReadAt(place + 12, bytes);
    const std::uint8_t* fields = bytes.data() + 8;
    if (std::memcmp(bytes.data(), "INFO", 4) != 0 || Big32(bytes.data() + 4) < 5)
        return FailDamaged(error, "the page does not tell its size");
    head.width = Big16(fields);
    head.height = Big16(fields + 2);
    const bool hasDpi = Big32(bytes.data() + 4) >= 8, hasTurn = Big32(bytes.data() + 4) >= 10;
    constexpr int kLeast = 25, kMost = 6000;  // others are taken for the usual one
    if (const int dpi = Little16(fields + 6); hasDpi && dpi >= kLeast && dpi <= kMost)
        head.dpi = dpi;
    const int turn = hasTurn ? fields[9] & 7 : 1;
    if (turn == 5 || turn == 6)  // a quarter, either way
        std::swap(head.width, head.height);
    return true;
}

}  // namespace velloran
