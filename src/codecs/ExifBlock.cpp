#include "codecs/ExifBlock.h"

#include <algorithm>

#include "codecs/ExifDirectories.h"

namespace velloran {
namespace {

using namespace exif;

constexpr int kInch = 2;

/// The changes of one block.
class Settler {
 public:
    Settler(const ExifPage& page, std::vector<std::uint8_t>& bytes)
        : page_(page), exif_(bytes), block_(bytes) {}

    void Run() {
        const std::size_t first = block_.FirstDirectory();
        const auto main = static_cast<std::size_t>(block_.Find(first, kExifDirectory).value_or(0));
        const auto gps = static_cast<std::size_t>(block_.Find(first, kGpsDirectory).value_or(0));
        const auto interop =
            static_cast<std::size_t>(block_.Find(main, kInteropDirectory).value_or(0));
        for (const std::size_t directory : {first, main, gps, interop})
            NotePieces(directory);
        for (const std::size_t directory : {first, main, interop})
            for (const Entry& entry : block_.EntriesOf(directory))
                Settle(entry);
        DropThumbnail(first);
    }

 private:
    void NotePieces(std::size_t directory) {
        const std::vector<Entry> entries = block_.EntriesOf(directory);
        if (entries.empty())
            return;
        kept_.push_back({directory, entries.back().at + kEntryBytes + 4});
        for (const Entry& entry : entries)
            kept_.push_back(block_.ValuesOf(entry));
    }

    void Settle(const Entry& entry) {
        switch (entry.tag) {
            case kOrientation:
                return PutInteger(entry, 1);
            case kImageWidth:
            case kPixelWidth:
            case kRelatedWidth:
                return PutInteger(entry, page_.width);
            case kImageLength:
            case kPixelHeight:
            case kRelatedHeight:
                return PutInteger(entry, page_.height);
            case kResolutionUnit:
                return PutInteger(entry, kInch);
            case kXResolution:
                return PutRational(entry, page_.xDpi);
            case kYResolution:
                return PutRational(entry, page_.yDpi);
            default:
                return;
        }
    }

    void Put(std::size_t at, std::size_t size, std::uint64_t value) {
        PutNumberAt(exif_.data() + at, size, block_.IsBigEndian(), value);
    }

    /// A number that the entry's type is too short for makes it a long one; both lie in the entry.
    void PutInteger(const Entry& entry, int value) {
        if (entry.count != 1 || (entry.type != kShort && entry.type != kLong))
            return;
        const bool isLong = entry.type == kLong || value > 0xFFFF;
        Put(entry.at + 2, 2, isLong ? kLong : kShort);
        Put(entry.at + 8, 4, 0);
        Put(entry.at + 8, isLong ? 4 : 2, static_cast<std::uint64_t>(value));
    }

    void PutRational(const Entry& entry, int value) {
        const Piece place = block_.ValuesOf(entry);
        if (entry.type != kRational || entry.count != 1 || place.end == 0)
            return;
        Put(place.begin, 4, static_cast<std::uint64_t>(value));
        Put(place.begin + 4, 4, 1);
    }

    /// Takes the second directory out of the chain, and its picture out of the block. What that
    /// would share with the rest stays, as bytes that nothing points to.
    void DropThumbnail(std::size_t first) {
        const std::optional<std::size_t> link = block_.NextPlaceOf(first);
        if (!link)
            return;
        const auto second = static_cast<std::size_t>(block_.Number(*link, 4));
        const std::vector<Entry> entries = block_.EntriesOf(second);
        std::vector<Piece> pieces;
        for (const auto& [place, length] :
             {std::pair(kThumbnail, kThumbnailLength), std::pair(kStripOffsets, kStripByteCounts)})
            if (const auto begin = block_.Find(second, place), size = block_.Find(second, length);
                begin && size && *begin < exif_.size())
                pieces.push_back({static_cast<std::size_t>(*begin),
                                  static_cast<std::size_t>(
                                      std::min<std::uint64_t>(exif_.size(), *begin + *size))});
        for (const Entry& entry : entries)
            if (const Piece values = block_.ValuesOf(entry); values.begin != entry.at + 8)
                pieces.push_back(values);
        if (!entries.empty())
            pieces.push_back({second, std::min(exif_.size(), entries.back().at + kEntryBytes + 4)});
        Put(*link, 4, 0);
        std::erase_if(pieces, [this](const Piece& piece) { return IsShared(piece); });
        for (const Piece& piece : pieces)
            std::fill(exif_.begin() + static_cast<std::ptrdiff_t>(piece.begin),
                      exif_.begin() + static_cast<std::ptrdiff_t>(piece.end), std::uint8_t{0});
        CutTail(pieces);
    }

    bool IsShared(const Piece& piece) const {
        return piece.begin < kHeadBytes ||
               std::any_of(kept_.begin(), kept_.end(),
                           [&](const Piece& kept) { return kept.Meets(piece); });
    }

    /// Pieces that end the block are cut off, the last one first.
    void CutTail(std::vector<Piece>& pieces) {
        std::sort(pieces.begin(), pieces.end(),
                  [](const Piece& a, const Piece& b) { return a.end > b.end; });
        for (const Piece& piece : pieces)
            if (piece.end + 1 >= exif_.size() && piece.begin < exif_.size())
                exif_.resize(piece.begin);
    }

    const ExifPage& page_;
    std::vector<std::uint8_t>& exif_;
    Block block_;
    std::vector<Piece> kept_;
};

}  // namespace

bool IsExif(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < exif::kHeadBytes + 2 || bytes[0] != bytes[1] ||
        (bytes[0] != 'I' && bytes[0] != 'M'))
        return false;
    return NumberAt(bytes.data() + 2, 2, bytes[0] == 'M') == 42;
}

int ExifOrientation(std::span<const std::uint8_t> bytes) {
    if (!IsExif(bytes))
        return 1;
    const exif::Block block(bytes);
    const std::uint64_t value = block.Find(block.FirstDirectory(), exif::kOrientation).value_or(1);
    return value >= 1 && value <= 8 ? static_cast<int>(value) : 1;
}

void SettleExif(const ExifPage& page, std::vector<std::uint8_t>& bytes) {
    if (IsExif(bytes))
        Settler(page, bytes).Run();
}

}  // namespace velloran
