#include "codecs/BmpHead.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "core/Rounding.h"
#include "io/ByteSource.h"

namespace velloran {
namespace {

constexpr std::size_t kFileHead = 14;
constexpr std::uint32_t kOs2Head = 12;       // width and height of 16 bits, palette of 3 bytes
constexpr std::uint32_t kShortestHead = 16;  // the fields up to the bit count
constexpr std::uint32_t kInfoHead = 40;
constexpr std::uint32_t kOs2LongHead = 64;
constexpr std::uint32_t kHeadWithMasks = 52, kHeadWithAlphaMask = 56;

enum Compression : std::uint32_t {
    kPlainPixels = 0,
    kRle8 = 1,
    kRle4 = 2,
    kBitFields = 3,  // Huffman in a 64-byte head
    kRle24 = 4,      // in a 64-byte head; else an embedded JPEG
    kAlphaBitFields = 6,
};

/// Little-endian reads; what lies behind the end is 0.
class Reader {
 public:
    explicit Reader(ByteSource& source) : source_(source) { source.ReadAt(0, first_); }
    std::uint32_t U16(std::size_t at) const { return Byte(at) | Byte(at + 1) << 8; }
    std::uint32_t U32(std::size_t at) const { return U16(at) | U16(at + 2) << 16; }
    std::int32_t S32(std::size_t at) const { return static_cast<std::int32_t>(U32(at)); }
    std::size_t Size() const { return static_cast<std::size_t>(source_.Size()); }
    std::uint32_t Byte(std::size_t at) const {
        if (at < first_.size())
            return first_[at];
        std::uint8_t byte = 0;  // few heads are that long
        source_.ReadAt(at, {&byte, 1});
        return byte;
    }

 private:
    ByteSource& source_;
    std::array<std::uint8_t, 2048> first_{};  // the longest usual head with its palette
};

/// The head as it lies in the file.
struct RawHead {
    std::uint32_t headSize = 0;
    std::int64_t width = 0, height = 0;
    std::uint32_t bitCount = 0, compression = 0, colorsUsed = 0;
    std::int32_t xPerMeter = 0, yPerMeter = 0;
};

RawHead ReadRaw(const Reader& file) {
    RawHead raw;
    raw.headSize = file.U32(14);
    if (raw.headSize == kOs2Head) {
        raw.width = file.U16(18);
        raw.height = file.U16(20);
        raw.bitCount = file.U16(24);
        return raw;
    }
    // A short head ends early; the fields that it lacks are 0.
    const auto holds = [&raw](std::size_t end) { return kFileHead + raw.headSize >= end; };
    raw.width = file.S32(18);
    raw.height = file.S32(22);
    raw.bitCount = file.U16(28);
    raw.compression = holds(34) ? file.U32(30) : 0;
    raw.xPerMeter = holds(42) ? file.S32(38) : 0;
    raw.yPerMeter = holds(46) ? file.S32(42) : 0;
    raw.colorsUsed = holds(50) ? file.U32(46) : 0;
    return raw;
}

int DpiOf(std::int32_t perMeter) {
    const int dpi = TruncToInt(perMeter * 254.0 / 10000 + 0.5);
    return dpi < 1 ? 96 : dpi;
}

/// False for a mask with a hole.
bool SetField(std::uint32_t mask, BmpField& field) {
    field = {};
    if (mask == 0)
        return true;
    field.shift = std::countr_zero(mask);
    field.bits = std::popcount(mask);
    return field.ValueOf(mask) == 0xFFFFFFFFU >> (32 - field.bits) &&
           field.shift + field.bits == 32 - std::countl_zero(mask);
}

bool SetFields(const std::array<std::uint32_t, 4>& masks, BmpHead& head) {
    return SetField(masks[0], head.red) && SetField(masks[1], head.green) &&
           SetField(masks[2], head.blue) && SetField(masks[3], head.alpha);
}

bool IsOneOf(std::uint32_t value, std::initializer_list<std::uint32_t> values) {
    return std::find(values.begin(), values.end(), value) != values.end();
}

std::string ReadMasks(const Reader& file, const RawHead& raw, BmpHead& head) {
    if (!IsOneOf(raw.bitCount, {16, 32}))
        return "bit fields at a depth without them";
    const bool alphaMask = raw.headSize >= kHeadWithAlphaMask || raw.compression == kAlphaBitFields;
    if (file.Size() < kFileHead + kInfoHead + (alphaMask ? 16 : 12))
        return "cut off in its head";
    const std::size_t at = kFileHead + kInfoHead;
    if (!SetFields(
            {file.U32(at), file.U32(at + 4), file.U32(at + 8), alphaMask ? file.U32(at + 12) : 0},
            head))
        return "bit fields with holes";
    return {};
}

/// Coding and channels by compression and depth.
std::string ReadCoding(const Reader& file, const RawHead& raw, BmpHead& head) {
    if (!IsOneOf(raw.bitCount, {1, 2, 4, 8, 16, 24, 32}))
        return "unknown depth";
    const bool os2 = raw.headSize < kInfoHead || raw.headSize == kOs2LongHead;
    const bool rle = (raw.compression == kRle8 && raw.bitCount == 8) ||
                     (raw.compression == kRle4 && raw.bitCount == 4) ||
                     (raw.compression == kRle24 && raw.bitCount == 24 && os2);
    if (rle) {
        head.coding = BmpCoding::kRle;
        return {};
    }
    if (raw.compression == kAlphaBitFields || (raw.compression == kBitFields && !os2))
        return ReadMasks(file, raw, head);
    if (raw.compression != kPlainPixels)
        return "unknown compression";
    if (raw.bitCount == 16)
        SetFields({0x7C00, 0x03E0, 0x001F, 0}, head);
    if (raw.bitCount == 32)
        SetFields({0x00FF0000, 0x0000FF00, 0x000000FF, 0xFF000000}, head);
    return {};
}

/// Where the head, with masks behind it, ends and the palette starts.
std::size_t EndOfHead(const RawHead& raw) {
    std::size_t end = kFileHead + raw.headSize;
    if (raw.headSize < kHeadWithMasks && raw.compression == kBitFields)
        end += 12;
    if (raw.headSize < kHeadWithAlphaMask && raw.compression == kAlphaBitFields)
        end = kFileHead + kInfoHead + 16;
    return end;
}

std::string ReadPalette(const Reader& file, const RawHead& raw, BmpHead& head) {
    const std::size_t start = EndOfHead(raw);
    const std::size_t entryBytes = raw.headSize == kOs2Head ? 3 : 4;
    const std::size_t stated = file.U32(10);
    if (raw.bitCount <= 8) {
        const std::uint32_t most = 1U << raw.bitCount;
        std::size_t count = raw.colorsUsed == 0 ? most : std::min(raw.colorsUsed, most);
        // The pixels may start before the count of entries says so; they are right.
        if (stated > start && stated <= file.Size())
            count = std::min(count, (stated - start) / entryBytes);
        if (file.Size() < start + count * entryBytes)
            return "cut off in its palette";
        head.paletteCount = static_cast<int>(count);
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t at = start + i * entryBytes;
            head.palette[i] = {static_cast<std::uint8_t>(file.Byte(at)),
                               static_cast<std::uint8_t>(file.Byte(at + 1)),
                               static_cast<std::uint8_t>(file.Byte(at + 2)), 0};
        }
    }
    const std::size_t end = start + static_cast<std::size_t>(head.paletteCount) * entryBytes;
    head.pixelOffset = stated >= start && stated <= file.Size() ? stated : end;
    return {};
}

}  // namespace

std::string ReadBmpHead(ByteSource& source, BmpHead& head) {
    head = {};
    const Reader file(source);
    if (file.Size() < kFileHead + kOs2Head || file.Byte(0) != 'B' || file.Byte(1) != 'M')
        return "no BMP head";
    const RawHead raw = ReadRaw(file);
    if (raw.headSize != kOs2Head && raw.headSize < kShortestHead)
        return "unknown kind of head";
    if (file.Size() < kFileHead + std::size_t{raw.headSize})
        return "cut off in its head";
    head.topDown = raw.height < 0;
    const std::int64_t height = head.topDown ? -raw.height : raw.height;
    if (!IsOneOf(raw.bitCount, {1, 2, 4, 8, 16, 24, 32}))
        return "unknown depth";
    const int bits = static_cast<int>(raw.bitCount);
    if (!IsAcceptableSize(raw.width, height, bits == 16 ? 24 : bits))
        return "picture empty or too large";
    head.width = static_cast<int>(raw.width);
    head.height = static_cast<int>(height);
    head.bitsPerPixel = bits;
    head.xDpi = DpiOf(raw.xPerMeter);
    head.yDpi = DpiOf(raw.yPerMeter);
    if (std::string reason = ReadCoding(file, raw, head); !reason.empty())
        return reason;
    return ReadPalette(file, raw, head);
}

int BitsInMemory(const BmpHead& head) {
    if (head.bitsPerPixel == 2)
        return 4;
    return head.bitsPerPixel > 8 ? 24 : head.bitsPerPixel;
}

bool BmpHead::IsCutTo16Bits() const {
    const bool is555 = red == BmpField{10, 5} && green == BmpField{5, 5} && blue == BmpField{0, 5};
    const bool is565 = red == BmpField{11, 5} && green == BmpField{5, 6} && blue == BmpField{0, 5};
    return bitsPerPixel == 16 && (is555 || is565);
}

bool BmpHead::IsIdentityGray() const {
    if (bitsPerPixel != 8 || paletteCount != 256)
        return false;
    for (int i = 0; i < 256; ++i) {
        const auto level = static_cast<std::uint8_t>(i);
        if (palette[static_cast<std::size_t>(i)] != PaletteEntry{level, level, level, 0})
            return false;
    }
    return true;
}

}  // namespace velloran
