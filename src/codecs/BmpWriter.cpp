#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <vector>

#include "codecs/Bmp.h"
#include "codecs/EncodedPage.h"
#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "io/ByteSink.h"

namespace velloran {
namespace {

constexpr std::uint32_t kHeads = 54;  // of the file and of the picture
constexpr std::uint32_t kBitFields = 3;
constexpr std::array<std::uint32_t, 3> kMasks565 = {0xF800, 0x07E0, 0x001F};
constexpr std::size_t kBufferBytes = 1U << 18;

/// Writes little-endian values and rows through one buffer.
class BmpFile {
 public:
    explicit BmpFile(ByteSink& sink) : sink_(sink) { buffer_.reserve(kBufferBytes); }

    void Put(std::uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i)
            buffer_.push_back(static_cast<std::uint8_t>(value >> 8 * i));
    }
    void PutBytes(const std::uint8_t* bytes, std::size_t count) {
        buffer_.insert(buffer_.end(), bytes, bytes + count);
    }
    /// The last `count` bytes put, to be changed until the next call.
    std::uint8_t* Last(std::size_t count) { return buffer_.data() + buffer_.size() - count; }

    /// Call between rows.
    void FlushWhenFull() {
        if (buffer_.size() >= kBufferBytes)
            Flush();
    }
    bool Finish(FileError* error) {
        Flush();
        return !sink_.HasFailed() || sink_.FailWrite(error);
    }

 private:
    void Flush() {
        sink_.Write(buffer_.data(), buffer_.size());
        buffer_.clear();
    }
    ByteSink& sink_;
    std::vector<std::uint8_t> buffer_;
};

struct HeadValues {
    std::uint32_t width = 0, height = 0, bits = 0, compression = 0;
    std::uint64_t rowsSize = 0;     // bytes of all rows
    std::uint32_t statedSize = 0;   // what the head says of it
    std::uint32_t behindHeads = 0;  // bytes of masks or palette
    std::uint32_t colorsUsed = 0;
    int xDpi = 96, yDpi = 96;
};

std::uint32_t PixelsPerMeter(int dpi) {
    return static_cast<std::uint32_t>((std::int64_t{dpi} * 10000 + 127) / 254);
}

void PutHeads(BmpFile& file, const HeadValues& head) {
    const std::uint32_t pixels = kHeads + head.behindHeads;
    file.PutBytes(reinterpret_cast<const std::uint8_t*>("BM"), 2);
    file.Put(static_cast<std::uint32_t>(pixels + head.rowsSize), 4);
    file.Put(0, 4);
    file.Put(pixels, 4);
    file.Put(40, 4);
    file.Put(head.width, 4);
    file.Put(head.height, 4);
    file.Put(1, 2);
    file.Put(head.bits, 2);
    file.Put(head.compression, 4);
    file.Put(head.statedSize, 4);
    file.Put(PixelsPerMeter(head.xDpi), 4);
    file.Put(PixelsPerMeter(head.yDpi), 4);
    file.Put(head.colorsUsed, 4);
    file.Put(0, 4);
}

HeadValues HeadOf(const CDibImage& image, std::uint32_t bits) {
    HeadValues head;
    head.width = static_cast<std::uint32_t>(image.GetWidth());
    head.height = static_cast<std::uint32_t>(image.GetHeight());
    head.bits = bits;
    head.rowsSize = EffectiveWidth(head.width, bits) * head.height;
    head.statedSize = static_cast<std::uint32_t>(head.rowsSize);
    head.xDpi = image.GetXDpi();
    head.yDpi = image.GetYDpi();
    return head;
}

/// The row with everything behind its last pixel 0: that memory was never set.
void PutRow(BmpFile& file, const CDibImage& image, int y) {
    const std::size_t usedBits =
        static_cast<std::size_t>(image.GetWidth()) * static_cast<std::size_t>(image.GetBpp());
    const std::size_t stride = image.GetEffWidth(), used = (usedBits + 7) / 8;
    file.PutBytes(image.GetBits(y), used);
    std::uint8_t& last = *file.Last(1);
    last = static_cast<std::uint8_t>(last & 0xFF << (used * 8 - usedBits));
    static constexpr std::array<std::uint8_t, 4> kZeros{};
    file.PutBytes(kZeros.data(), stride - used);
}

bool Save(ByteSink& sink, const CDibImage& image, FileError* error) {
    HeadValues head = HeadOf(image, static_cast<std::uint32_t>(image.GetBpp()));
    head.behindHeads = image.GetPaletteSize();
    head.colorsUsed = static_cast<std::uint32_t>(image.GetPaletteCount());
    BmpFile file(sink);
    PutHeads(file, head);
    for (int i = 0; i < image.GetPaletteCount(); ++i) {
        const PaletteEntry& entry = image.GetPalette()[i];
        file.Put(entry.blue | entry.green << 8U | static_cast<std::uint32_t>(entry.red) << 16, 4);
    }
    for (int y = 0; y < image.GetHeight(); ++y) {
        PutRow(file, image, y);
        file.FlushWhenFull();
    }
    return file.Finish(error);
}

void PutRow16(BmpFile& file, const CDibImage& image, int y, bool is565) {
    const std::uint8_t* pixel = image.GetBits(y);
    for (int x = 0; x < image.GetWidth(); ++x, pixel += 3) {
        const std::uint32_t b = pixel[0], g = pixel[1], r = pixel[2];
        file.Put(is565 ? (b >> 3) + ((g & 0xFC) << 3) + ((r & 0xF8) << 8)
                       : (b >> 3) + ((g & 0xF8) << 2) + ((r & 0xF8) << 7),
                 2);
    }
    if (image.GetWidth() % 2 != 0)
        file.Put(0, 2);
}

bool Save16(ByteSink& sink, const CDibImage& image, bool is565, FileError* error) {
    CDibImage widened;
    const CDibImage* pixels = &image;
    if (image.IsValid() && image.GetBpp() != 24) {
        widened = image;
        if (ConvertToRgb(widened) == 0)
            return FailNoMemory(error);
        pixels = &widened;
    }
    HeadValues head = HeadOf(*pixels, 16);
    if (is565) {
        head.compression = kBitFields;
        head.behindHeads = sizeof kMasks565;
    } else {
        head.statedSize = 0;
    }
    BmpFile file(sink);
    PutHeads(file, head);
    if (is565)
        for (const std::uint32_t mask : kMasks565)
            file.Put(mask, 4);
    for (int y = 0; y < pixels->GetHeight(); ++y) {
        PutRow16(file, *pixels, y, is565);
        file.FlushWhenFull();
    }
    return file.Finish(error);
}

}  // namespace

bool SaveBmp(ByteSink& sink, const CDibImage& image, FileError* error) {
    return SaveWith(image, error, [&] { return Save(sink, image, error); });
}

bool SaveBmp16(ByteSink& sink, const CDibImage& image, bool is565, FileError* error) try {
    return Save16(sink, image, is565, error);
} catch (const std::bad_alloc&) {
    return FailNoMemory(error);
}

}  // namespace velloran
