#include <algorithm>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "codecs/Bmp.h"
#include "codecs/BmpHead.h"
#include "codecs/BmpRle.h"
#include "codecs/DecodedPage.h"
#include "core/DibImage.h"

namespace velloran {
namespace {

constexpr std::int64_t kMaxRatio = 128;  // run codes tell 255 pixels in two bytes

std::uint8_t* RowInFileOrder(const BmpHead& head, CDibImage& image, int y) {
    return image.GetBits(head.topDown ? head.height - 1 - y : y);
}

std::size_t FileStride(const BmpHead& head) {
    return EffectiveWidth(static_cast<std::uint64_t>(head.width),
                          static_cast<std::uint64_t>(head.bitsPerPixel));
}

/// Bytes of a row that hold pixels.
std::size_t UsedBytes(int width, int bits) {
    return (static_cast<std::size_t>(width) * static_cast<std::size_t>(bits) + 7) / 8;
}

/// The byte that makes a row of the image white, or as light as its palette goes.
std::uint8_t LightestByte(const BmpHead& head, int bits) {
    if (bits == 24)
        return 255;
    const int index = NearestToWhite(std::span(head.palette).first(std::size_t{1} << bits));
    return static_cast<std::uint8_t>(bits == 1 ? index * 0xFF : bits == 4 ? index * 0x11 : index);
}

void SpreadTwoBits(const std::uint8_t* from, int width, std::uint8_t* to) {
    for (int x = 0; x < width; ++x) {
        const int index = from[x / 4] >> (6 - x % 4 * 2) & 3;
        if (x % 2 == 0)
            to[x / 2] = static_cast<std::uint8_t>(index << 4);
        else
            to[x / 2] = static_cast<std::uint8_t>(to[x / 2] | index);
    }
}

std::uint32_t PixelAt(const std::uint8_t* row, int x, int bytes) {
    const std::uint8_t* at = row + static_cast<std::ptrdiff_t>(x) * bytes;
    std::uint32_t pixel = at[0] | static_cast<std::uint32_t>(at[1]) << 8;
    if (bytes == 4)
        pixel |= static_cast<std::uint32_t>(at[2]) << 16 | static_cast<std::uint32_t>(at[3]) << 24;
    return pixel;
}

void ConvertFields(const BmpHead& head, const std::uint8_t* from, std::uint8_t* to) {
    const int bytes = head.bitsPerPixel / 8;
    const bool wholeBytes = bytes == 4 && head.blue == BmpField{0, 8} &&
                            head.green == BmpField{8, 8} && head.red == BmpField{16, 8};
    const bool cut = head.IsCutTo16Bits();
    for (int x = 0; x < head.width; ++x, to += 3) {
        if (wholeBytes) {
            std::memcpy(to, from + 4 * static_cast<std::ptrdiff_t>(x), 3);
            continue;
        }
        const std::uint32_t pixel = PixelAt(from, x, bytes);
        to[0] = cut ? head.blue.HighBits(pixel) : head.blue.Stretched(pixel);
        to[1] = cut ? head.green.HighBits(pixel) : head.green.Stretched(pixel);
        to[2] = cut ? head.red.HighBits(pixel) : head.red.Stretched(pixel);
    }
}

void ConvertRow(const BmpHead& head, const std::uint8_t* from, std::uint8_t* to) {
    if (head.bitsPerPixel == 2)
        SpreadTwoBits(from, head.width, to);
    else if (head.bitsPerPixel == 16 || head.bitsPerPixel == 32)
        ConvertFields(head, from, to);
    else
        std::memcpy(to, from, UsedBytes(head.width, head.bitsPerPixel));
}

std::uint8_t AlphaByte(const BmpField& field, std::uint32_t pixel) {
    const std::uint32_t most = 0xFFFFFFFFU >> (32 - field.bits);
    return static_cast<std::uint8_t>(std::uint64_t{field.ValueOf(pixel)} * 255 / most);
}

/// True when any of the row's pixels can be seen.
bool TakeAlphaRow(const BmpHead& head, const std::uint8_t* from, std::uint8_t* alpha) {
    const int bytes = head.bitsPerPixel / 8;
    bool anyVisible = false;
    for (int x = 0; x < head.width; ++x) {
        alpha[x] = AlphaByte(head.alpha, PixelAt(from, x, bytes));
        anyVisible |= alpha[x] != 0;
    }
    return anyVisible;
}

/// Count of whole rows in `bytes`; the padding of the last row is often left out.
int WholeRows(const BmpHead& head, std::uint64_t bytes) {
    const std::size_t stride = FileStride(head);
    const std::size_t padding = stride - UsedBytes(head.width, head.bitsPerPixel);
    return static_cast<int>(std::min<std::uint64_t>(static_cast<std::uint64_t>(head.height),
                                                    (bytes + padding) / stride));
}

/// Rows that lie in the file as they lie in the image go there at once.
int ReadRowsAsTheyAre(const BmpHead& head, ByteSource& source, CDibImage& image) {
    const std::size_t size = FileStride(head) * static_cast<std::size_t>(head.height);
    return WholeRows(head, source.ReadAt(head.pixelOffset, {image.GetBits(0), size}));
}

/// Reads a few rows at a time. A plane of zeros is a writer's that left the byte alone, and is no
/// alpha.
int ReadRowsInStrips(const BmpHead& head, ByteSource& source, CDibImage& image) {
    constexpr std::size_t kStripBytes = std::size_t{1} << 18;
    const std::size_t stride = FileStride(head);
    const int stripRows = static_cast<int>(
        std::clamp<std::size_t>(kStripBytes / stride, 1, static_cast<std::size_t>(head.height)));
    std::vector<std::uint8_t> strip(stride * static_cast<std::size_t>(stripRows));
    const bool withAlpha = head.alpha.bits > 0;
    if (withAlpha && !image.CreateAlpha())
        throw std::bad_alloc();
    bool anyVisible = false;
    int done = 0;
    while (done < head.height) {
        const int wanted = std::min(stripRows, head.height - done);
        const std::size_t size = stride * static_cast<std::size_t>(wanted);
        const std::uint64_t place =
            head.pixelOffset + std::uint64_t{stride} * static_cast<std::uint64_t>(done);
        const int rows =
            std::min(wanted, WholeRows(head, source.ReadAt(place, std::span(strip).first(size))));
        for (int i = 0; i < rows; ++i, ++done) {
            const std::uint8_t* from = strip.data() + stride * static_cast<std::size_t>(i);
            ConvertRow(head, from, RowInFileOrder(head, image, done));
            const int row = head.topDown ? head.height - 1 - done : done;
            if (withAlpha)
                anyVisible |=
                    TakeAlphaRow(head, from, image.GetAlpha() + std::ptrdiff_t{row} * head.width);
        }
        if (rows < wanted)
            break;
    }
    if (withAlpha && !anyVisible)
        image.DeleteAlpha();
    return done;
}

/// Returns the count of rows that the file holds whole.
int ReadPlainRows(const BmpHead& head, ByteSource& source, CDibImage& image) {
    const bool asTheyAre = !head.topDown && head.bitsPerPixel == image.GetBpp();
    return asTheyAre ? ReadRowsAsTheyAre(head, source, image)
                     : ReadRowsInStrips(head, source, image);
}

int ReadRleRows(const BmpHead& head, ByteSource& source, CDibImage& image) {
    const auto bytes = source.AllBytes(nullptr);
    if (!bytes)
        return 0;
    image.Clear(0);
    return DecodeBmpRle(bytes->subspan(std::min(head.pixelOffset, bytes->size())), head, image);
}

bool Decode(ByteSource& source, const BmpHead& head, CDibImage& page, LoadNotes& notes,
            FileError* error) {
    if (head.pixelOffset >= source.Size())
        return FailDamaged(error, "no pixels");
    const std::int64_t rowBytes = EffectiveWidth(static_cast<std::uint64_t>(head.width),
                                                 static_cast<std::uint64_t>(BitsInMemory(head)));
    if (!IsPlausibleSize(rowBytes * head.height, source.Size(), kMaxRatio))
        return FailDamaged(error, "picture too large for its file");
    if (!CreatePage(head.width, head.height, BitsInMemory(head), false, page, error))
        return false;
    std::copy_n(head.palette.begin(), page.GetPaletteCount(), page.GetPalette());
    const int rows = head.coding == BmpCoding::kRle ? ReadRleRows(head, source, page)
                                                    : ReadPlainRows(head, source, page);
    if (rows == 0)
        return FailDamaged(error, "no whole row");
    if (rows < head.height)
        notes.NoteDamage("rows of the picture are missing");
    const std::uint8_t white = LightestByte(head, page.GetBpp());
    for (int y = rows; y < head.height; ++y)
        std::memset(RowInFileOrder(head, page, y), white, page.GetEffWidth());
    return true;
}

/// In the form that the shared frame of the readers takes.
class BmpReader {
 public:
    explicit BmpReader(ByteSource& source) : source_(source) {}
    bool ReadHead(FileError* error) {
        std::string reason = ReadBmpHead(source_, head_);
        return reason.empty() || FailDamaged(error, std::move(reason));
    }
    ImageInfo Info() const {
        return {head_.width, head_.height, head_.bitsPerPixel,    head_.paletteCount,
                head_.xDpi,  head_.yDpi,   head_.IsIdentityGray()};
    }
    int SourceBits() const { return head_.bitsPerPixel; }
    bool ReadPage(CDibImage& page, LoadNotes& notes, FileError* error) {
        if (!Decode(source_, head_, page, notes, error))
            return false;
        page.SetXDpi(head_.xDpi);
        page.SetYDpi(head_.yDpi);
        return true;
    }

 private:
    ByteSource& source_;
    BmpHead head_;
};

}  // namespace

bool LoadBmp(ByteSource& source, CDibImage& image, LoadNotes& notes, FileError* error) {
    return LoadWith<BmpReader>(source, image, notes, error);
}

bool ReadBmpInfo(ByteSource& source, ImageInfo& info, FileError* error) {
    return InfoWith<BmpReader>(source, info, error);
}

}  // namespace velloran
