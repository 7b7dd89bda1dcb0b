#include "codecs/Jp2Boxes.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "codecs/ByteOrder.h"
#include "codecs/DecodedPage.h"
#include "io/ByteSource.h"

namespace velloran {
namespace {

using Name = std::array<char, 4>;
using Uuid = std::array<std::uint8_t, 16>;

// The registered names of EXIF and XMP in boxes of this family.
constexpr Uuid kExifUuid = {0x4A, 0x70, 0x67, 0x54, 0x69, 0x66, 0x66, 0x45,
                            0x78, 0x69, 0x66, 0x2D, 0x3E, 0x4A, 0x50, 0x32};
constexpr Uuid kXmpUuid = {0xBE, 0x7A, 0xCF, 0xCB, 0x97, 0xA9, 0x42, 0xE8,
                           0x9C, 0x71, 0x99, 0x94, 0x91, 0xE3, 0xAF, 0xAC};
constexpr int kEnumCmyk = 12, kEnumRgb = 16, kEnumGray = 17, kEnumYcc = 18;
constexpr int kMostBoxes = 1000;

struct Box {
    Name name{};
    std::uint64_t at = 0, end = 0;  // of what it holds
    bool isCut = false;             // it says that it goes on behind `end`
    bool Is(const char* other) const { return std::memcmp(name.data(), other, 4) == 0; }
    std::uint64_t Size() const { return end - at; }
};

class BoxReader {
 public:
    BoxReader(ByteSource& source, Jp2Head& head) : source_(source), head_(head) {}

    /// The boxes of the file; each kind is taken once.
    void ReadFile() {
        for (const Box& box : BoxesIn(0, source_.Size())) {
            if (box.Is("jp2h")) {
                ReadHeader(box);
            } else if (box.Is("uuid")) {
                ReadUuid(box);
            } else if (box.Is("jp2c") && head_.streamEnd == 0) {
                head_.streamAt = box.at;
                head_.streamEnd = box.end;
                head_.isCut = box.isCut;
            }
        }
    }

 private:
    std::vector<Box> BoxesIn(std::uint64_t at, std::uint64_t end) {
        std::vector<Box> boxes;
        std::array<std::uint8_t, 16> bytes{};
        while (boxes.size() < kMostBoxes && at < end && end - at >= 8 &&
               source_.ReadAt(at, std::span(bytes).first(8)) == 8) {
            std::uint64_t size = Big32(bytes.data()), headBytes = 8;
            Box box;
            std::memcpy(box.name.data(), bytes.data() + 4, 4);
            if (size == 1) {  // the length follows as a number of 64 bits
                if (end - at < 16 || source_.ReadAt(at, bytes) != 16)
                    break;
                size = NumberAt(bytes.data() + 8, 8, true);
                headBytes = 16;
            } else if (size == 0) {  // up to the end
                size = end - at;
            }
            if (size < headBytes)
                break;
            box.isCut = size > end - at;
            box.at = at + headBytes;
            box.end = box.isCut ? end : at + size;
            boxes.push_back(box);
            at = box.end;
        }
        return boxes;
    }

    Blob Bytes(std::uint64_t at, std::uint64_t end) {
        if (end - at > kMostMetadataBytes)
            return {};
        Blob bytes(static_cast<std::size_t>(end - at));
        bytes.resize(source_.ReadAt(at, bytes));
        return bytes;
    }

    void ReadHeader(const Box& header) {
        for (const Box& box : BoxesIn(header.at, header.end)) {
            if (box.Is("colr"))
                ReadColor(box);
            else if (box.Is("pclr"))
                ReadPalette(box);
            else if (box.Is("res "))
                ReadResolution(box);
        }
    }

    /// The first box that is understood counts.
    void ReadColor(const Box& box) {
        if (sawColor_ || box.Size() < 3)
            return;
        std::array<std::uint8_t, 7> bytes{};
        source_.ReadAt(box.at, bytes);
        if (bytes[0] == 1 && box.Size() >= 7) {
            sawColor_ = true;
            head_.color = ColorOf(static_cast<int>(Big32(bytes.data() + 3) & 0x7FFFFFFF));
        } else if (bytes[0] == 2 || bytes[0] == 3) {
            sawColor_ = true;
            head_.metadata.profile = Bytes(box.at + 3, box.end);
            const ProfileKind kind = KindOfProfile(head_.metadata.profile);
            head_.color =
                kind == ProfileKind::kCmyk ? Jp2Head::Color::kCmyk : Jp2Head::Color::kUntold;
        }
    }

    static Jp2Head::Color ColorOf(int number) {
        switch (number) {
            case kEnumCmyk:
                return Jp2Head::Color::kCmyk;
            case kEnumRgb:
                return Jp2Head::Color::kRgb;
            case kEnumGray:
                return Jp2Head::Color::kGray;
            case kEnumYcc:
                return Jp2Head::Color::kYcc;
            default:
                return Jp2Head::Color::kOther;
        }
    }

    void ReadPalette(const Box& box) {
        std::array<std::uint8_t, 3> bytes{};
        if (box.Size() < 3 || source_.ReadAt(box.at, bytes) != 3)
            return;
        head_.paletteEntries = Big16(bytes.data());
        head_.paletteColumns = bytes[2];
    }

    /// How it was scanned is taken before how it is to be shown.
    void ReadResolution(const Box& resolution) {
        bool sawCapture = false;
        for (const Box& box : BoxesIn(resolution.at, resolution.end)) {
            const bool isCapture = box.Is("resc");
            std::array<std::uint8_t, 10> bytes{};
            if ((!isCapture && (!box.Is("resd") || sawCapture)) || box.Size() < 10 ||
                source_.ReadAt(box.at, bytes) != 10)
                continue;
            sawCapture = isCapture;
            head_.yDpi = DpiOf(bytes.data(), static_cast<std::int8_t>(bytes[8]));
            head_.xDpi = DpiOf(bytes.data() + 4, static_cast<std::int8_t>(bytes[9]));
        }
    }

    /// Pixels a metre as a fraction and a power of ten.
    static int DpiOf(const std::uint8_t* fraction, int exponent) {
        const double divisor = Big16(fraction + 2);
        if (divisor == 0)
            return PlausibleDpi(0);
        double perMeter = Big16(fraction) / divisor;
        for (int i = 0; i < std::abs(exponent); ++i)
            perMeter = exponent > 0 ? perMeter * 10 : perMeter / 10;
        return PlausibleDpi(perMeter * 0.0254);
    }

    void ReadUuid(const Box& box) {
        Uuid uuid{};
        if (box.Size() < uuid.size() || source_.ReadAt(box.at, uuid) != uuid.size())
            return;
        const std::uint64_t at = box.at + uuid.size();
        if (uuid == kExifUuid && head_.metadata.exif.empty()) {
            const Blob bytes = Bytes(at, box.end);
            const std::span<const std::uint8_t> exif = BareExif(bytes);
            head_.metadata.exif.assign(exif.begin(), exif.end());
        } else if (uuid == kXmpUuid && head_.metadata.xmp.empty()) {
            head_.metadata.xmp = Bytes(at, box.end);
        }
    }

    ByteSource& source_;
    Jp2Head& head_;
    bool sawColor_ = false;
};

constexpr std::uint8_t kStreamHead[] = {0xFF, 0x4F, 0xFF, 0x51};
constexpr std::size_t kSizeFields = 4 + 38;  // both marks, and the fields before the components

/// The segment that tells sizes and components, which comes first in every code stream.
bool ReadStreamHead(ByteSource& source, Jp2Head& head, FileError* error) {
    std::array<std::uint8_t, kSizeFields> bytes{};
    if (source.ReadAt(head.streamAt, bytes) != bytes.size() ||
        !std::equal(std::begin(kStreamHead), std::end(kStreamHead), bytes.begin()))
        return FailDamaged(error, "not a whole JPEG 2000 code stream");
    const std::uint8_t* fields = bytes.data() + 8;
    const std::int64_t right = Big32(fields), bottom = Big32(fields + 4);
    const std::int64_t left = Big32(fields + 8), top = Big32(fields + 12);
    const std::int64_t tileWidth = Big32(fields + 16), tileHeight = Big32(fields + 20);
    const std::int64_t tileLeft = Big32(fields + 24), tileTop = Big32(fields + 28);
    const int count = Big16(fields + 32);
    head.width = right - left;
    head.height = bottom - top;
    if (head.width < 1 || head.height < 1 || tileWidth < 1 || tileHeight < 1 || tileLeft > left ||
        tileTop > top || count < 1)
        return FailDamaged(error, "not a whole JPEG 2000 code stream");
    const std::int64_t across = (right - tileLeft + tileWidth - 1) / tileWidth;
    const std::int64_t down = (bottom - tileTop + tileHeight - 1) / tileHeight;
    head.tiles = across > (std::int64_t{1} << 31) / down ? std::int64_t{1} << 31 : across * down;
    constexpr int kMostComponents = 16;
    if (count > kMostComponents)
        return FailContent(error, "more components than a picture has", FileReason::kKindNotRead);
    std::vector<std::uint8_t> list(static_cast<std::size_t>(count) * 3);
    if (source.ReadAt(head.streamAt + kSizeFields, list) != list.size())
        return FailDamaged(error, "not a whole JPEG 2000 code stream");
    for (std::size_t i = 0; i < list.size(); i += 3)
        head.components.push_back(
            {(list[i] & 0x7F) + 1, (list[i] & 0x80) != 0, list[i + 1], list[i + 2]});
    return true;
}

/// Begins a box; EndBox fills in its length.
std::size_t BeginBox(Blob& to, const char* name) {
    AppendBig(to, 4, 0);
    to.insert(to.end(), name, name + 4);
    return to.size() - 8;
}

void EndBox(Blob& to, std::size_t at) {
    PutNumberAt(to.data() + at, 4, true, to.size() - at);
}

void AddColorBox(Blob& to, const Jp2Page& page, const Blob& profile) {
    const std::size_t box = BeginBox(to, "colr");
    AppendBig(to, 1, profile.empty() ? 1 : 2);
    AppendBig(to, 2, 0);
    if (profile.empty())
        AppendBig(to, 4, page.isGray ? kEnumGray : kEnumRgb);
    else
        AppendBytes(to, profile);
    EndBox(to, box);
}

/// Dots per inch as pixels a metre without a rounding: dpi / 254 * 10^4.
void AddResolutionBox(Blob& to, const char* name, const Jp2Page& page) {
    const std::size_t box = BeginBox(to, name);
    for (const int dpi : {page.yDpi, page.xDpi}) {
        AppendBig(to, 2, static_cast<std::uint64_t>(std::clamp(dpi, 1, 0xFFFF)));
        AppendBig(to, 2, 254);
    }
    AppendBig(to, 1, 4);
    AppendBig(to, 1, 4);
    EndBox(to, box);
}

void AddUuidBox(Blob& to, const Uuid& uuid, const Blob& bytes) {
    if (bytes.empty())
        return;
    const std::size_t box = BeginBox(to, "uuid");
    AppendBytes(to, uuid);
    AppendBytes(to, bytes);
    EndBox(to, box);
}

}  // namespace

bool ReadJp2Head(ByteSource& source, Jp2Head& head, FileError* error) {
    head = Jp2Head();
    std::array<std::uint8_t, 4> first{};
    source.ReadAt(0, first);
    head.hasBoxes = !std::equal(first.begin(), first.end(), std::begin(kStreamHead));
    if (head.hasBoxes)
        BoxReader(source, head).ReadFile();
    else
        head.streamEnd = source.Size();
    if (head.streamEnd == 0)
        return FailDamaged(error, "the file holds no code stream");
    return ReadStreamHead(source, head, error);
}

Blob Jp2BoxesFor(const Jp2Page& page, const Metadata& metadata, std::uint64_t streamBytes) {
    Blob to;
    const std::size_t signature = BeginBox(to, "jP  ");
    AppendBig(to, 4, 0x0D0A870A);
    EndBox(to, signature);
    const std::size_t type = BeginBox(to, "ftyp");
    for (const std::string_view word : {"jp2 ", "\0\0\0\0", "jp2 "})
        to.insert(to.end(), word.data(), word.data() + 4);
    EndBox(to, type);
    const std::size_t header = BeginBox(to, "jp2h");
    const std::size_t sizes = BeginBox(to, "ihdr");
    AppendBig(to, 4, static_cast<std::uint64_t>(page.height));
    AppendBig(to, 4, static_cast<std::uint64_t>(page.width));
    AppendBig(to, 2, page.isGray ? 1 : 3);
    for (const int value : {7, 7, 0, 0})  // 8 bits, wavelets, colour is told, no rights
        AppendBig(to, 1, static_cast<std::uint64_t>(value));
    EndBox(to, sizes);
    AddColorBox(to, page, metadata.profile);
    const std::size_t resolution = BeginBox(to, "res ");
    AddResolutionBox(to, "resc", page);
    AddResolutionBox(to, "resd", page);
    EndBox(to, resolution);
    EndBox(to, header);
    AddUuidBox(to, kExifUuid, metadata.exif);
    AddUuidBox(to, kXmpUuid, metadata.xmp);
    // A length above 32 bits follows as a number of 64.
    const bool isLong = streamBytes + 8 > 0xFFFFFFFF;
    AppendBig(to, 4, isLong ? 1 : streamBytes + 8);
    to.insert(to.end(), {'j', 'p', '2', 'c'});
    if (isLong)
        AppendBig(to, 8, streamBytes + 16);
    return to;
}

}  // namespace velloran
