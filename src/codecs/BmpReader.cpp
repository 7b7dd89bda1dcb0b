#include <algorithm>
#include <cstring>
#include <new>

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
    for (int x = 0; x < head.width; ++x, to += 3) {
        if (wholeBytes) {
            std::memcpy(to, from + 4 * static_cast<std::ptrdiff_t>(x), 3);
            continue;
        }
        const std::uint32_t pixel = PixelAt(from, x, bytes);
        to[0] = head.blue.ByteOf(pixel);
        to[1] = head.green.ByteOf(pixel);
        to[2] = head.red.ByteOf(pixel);
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

/// A plane of zeros is a writer's that left the byte alone, and is no alpha.
void ReadAlpha(const BmpHead& head, std::span<const std::uint8_t> pixels, int rows,
               CDibImage& image) {
    const int bytes = head.bitsPerPixel / 8;
    const std::size_t stride = FileStride(head);
    if (!image.CreateAlpha())
        throw std::bad_alloc();
    bool anyVisible = false;
    for (int y = 0; y < rows; ++y) {
        const std::uint8_t* from = &pixels[stride * static_cast<std::size_t>(y)];
        const int row = head.topDown ? head.height - 1 - y : y;
        std::uint8_t* alpha = image.GetAlpha() + std::ptrdiff_t{row} * head.width;
        for (int x = 0; x < head.width; ++x) {
            alpha[x] = AlphaByte(head.alpha, PixelAt(from, x, bytes));
            anyVisible |= alpha[x] != 0;
        }
    }
    if (!anyVisible)
        image.DeleteAlpha();
}

/// Returns the count of rows that the file holds whole.
int ReadPlainRows(const BmpHead& head, std::span<const std::uint8_t> pixels, CDibImage& image) {
    const std::size_t stride = FileStride(head);
    // The padding of the last row is often left out.
    const std::size_t padding = stride - UsedBytes(head.width, head.bitsPerPixel);
    const auto rows = static_cast<int>(std::min<std::size_t>(static_cast<std::size_t>(head.height),
                                                             (pixels.size() + padding) / stride));
    for (int y = 0; y < rows; ++y)
        ConvertRow(head, &pixels[stride * static_cast<std::size_t>(y)],
                   RowInFileOrder(head, image, y));
    if (head.alpha.bits > 0 && rows > 0)
        ReadAlpha(head, pixels, rows, image);
    return rows;
}

int ReadRleRows(const BmpHead& head, std::span<const std::uint8_t> codes, CDibImage& image) {
    image.Clear(0);
    return DecodeBmpRle(codes, head, image);
}

bool Load(std::span<const std::uint8_t> bytes, CDibImage& image, FileError* error) {
    BmpHead head;
    if (std::string reason = ReadBmpHead(bytes, head); !reason.empty())
        return FailContent(error, std::move(reason));
    const auto pixels = bytes.subspan(std::min(head.pixelOffset, bytes.size()));
    if (pixels.empty())
        return FailContent(error, "no pixels");

    const std::int64_t rowBytes = EffectiveWidth(static_cast<std::uint64_t>(head.width),
                                                 static_cast<std::uint64_t>(BitsInMemory(head)));
    if (!IsPlausibleSize(rowBytes * head.height, bytes.size(), kMaxRatio))
        return FailContent(error, "picture too large for its file");

    CDibImage loaded;
    if (loaded.Create(head.width, head.height, BitsInMemory(head)) == nullptr)
        throw std::bad_alloc();
    std::copy_n(head.palette.begin(), loaded.GetPaletteCount(), loaded.GetPalette());
    const int rows = head.coding == BmpCoding::kRle ? ReadRleRows(head, pixels, loaded)
                                                    : ReadPlainRows(head, pixels, loaded);
    if (rows == 0)
        return FailContent(error, "no whole row");
    const std::uint8_t white = LightestByte(head, loaded.GetBpp());
    for (int y = rows; y < head.height; ++y)
        std::memset(RowInFileOrder(head, loaded, y), white, loaded.GetEffWidth());
    HandOver(loaded, head.bitsPerPixel, head.xDpi, head.yDpi, image);
    return true;
}

}  // namespace

bool LoadBmpBytes(std::span<const std::uint8_t> bytes, CDibImage& image, FileError* error) {
    return FailWhenOutOfMemory(error, [&] { return Load(bytes, image, error); });
}

bool LoadBmp(const std::filesystem::path& path, CDibImage& image, FileError* error) {
    return LoadMapped(path, image, error, LoadBmpBytes);
}

bool ReadBmpInfo(std::span<const std::uint8_t> bytes, ImageInfo& info, FileError* error) {
    return FailWhenOutOfMemory(error, [&] {
        BmpHead head;
        if (std::string reason = ReadBmpHead(bytes, head); !reason.empty())
            return FailContent(error, std::move(reason));
        info = {head.width, head.height, head.bitsPerPixel,    head.paletteCount,
                head.xDpi,  head.yDpi,   head.IsIdentityGray()};
        return true;
    });
}

}  // namespace velloran
