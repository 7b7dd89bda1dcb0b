#include "codecs/BmpRle.h"

#include <algorithm>
#include <array>

#include "codecs/BmpHead.h"
#include "core/DibImage.h"

namespace velloran {
namespace {

enum Escape : std::uint8_t { kEndOfLine = 0, kEndOfPicture = 1, kDelta = 2 };  // else a count

class RleDecoder {
 public:
    RleDecoder(std::span<const std::uint8_t> codes, const BmpHead& head, CDibImage& image)
        : codes_(codes), head_(head), image_(image) {}

    int Decode() {
        while (y_ < head_.height) {
            if (codes_.size() < 2)
                break;
            const std::uint8_t count = Take(), value = Take();
            if (count > 0) {
                if (!TakeRun(count, value))
                    break;
            } else if (value == kEndOfPicture) {
                return head_.height;
            } else if (!TakeEscape(value)) {
                break;
            }
        }
        // The last row is often left without its end code.
        return std::min(x_ == head_.width ? y_ + 1 : y_, head_.height);
    }

 private:
    using Pixel = std::array<std::uint8_t, 3>;

    std::uint8_t Take() {
        const std::uint8_t byte = codes_[0];
        codes_ = codes_.subspan(1);
        return byte;
    }

    bool TakeRun(int count, std::uint8_t value) {
        Pixel pixel = {value, 0, 0};
        if (head_.bitsPerPixel == 24) {
            if (codes_.size() < 2)
                return false;
            pixel[1] = Take();
            pixel[2] = Take();
        }
        for (int i = 0; i < count; ++i) {
            if (head_.bitsPerPixel == 4)
                pixel[0] = static_cast<std::uint8_t>(i % 2 == 0 ? value >> 4 : value & 15);
            Put(pixel);
        }
        return true;
    }

    bool TakeEscape(std::uint8_t value) {
        if (value == kEndOfLine) {
            x_ = 0;
            ++y_;
            return true;
        }
        if (value != kDelta)
            return TakeLiterals(value);
        if (codes_.size() < 2)
            return false;
        x_ = std::min(x_ + Take(), head_.width);
        y_ += Take();
        return true;
    }

    /// Pixels as they stand, the whole padded to an even count of bytes.
    bool TakeLiterals(int count) {
        const int bits = head_.bitsPerPixel;
        const auto bytes = static_cast<std::size_t>(count * bits + 7) / 8;
        if (codes_.size() < bytes)
            return false;
        for (int i = 0; i < count; ++i) {
            const std::uint8_t* at = &codes_[static_cast<std::size_t>(i * bits / 8)];
            if (bits == 24)
                Put({at[0], at[1], at[2]});
            else if (bits == 4)
                Put({static_cast<std::uint8_t>(i % 2 == 0 ? *at >> 4 : *at & 15)});
            else
                Put({*at});
        }
        codes_ = codes_.subspan(std::min(bytes + bytes % 2, codes_.size()));
        return true;
    }

    void Put(const Pixel& pixel) {
        if (x_ >= head_.width || y_ >= head_.height)
            return;
        std::uint8_t* row = image_.GetBits(head_.topDown ? head_.height - 1 - y_ : y_);
        if (head_.bitsPerPixel == 4) {
            std::uint8_t& byte = row[x_ / 2];
            byte = static_cast<std::uint8_t>(x_ % 2 == 0 ? (byte & 0x0F) | pixel[0] << 4
                                                         : (byte & 0xF0) | pixel[0]);
        } else {
            const std::ptrdiff_t size = head_.bitsPerPixel / 8;
            std::copy_n(pixel.begin(), size, row + x_ * size);
        }
        ++x_;
    }

    std::span<const std::uint8_t> codes_;
    const BmpHead& head_;
    CDibImage& image_;
    int x_ = 0, y_ = 0;  // the row in the file's order
};

}  // namespace

int DecodeBmpRle(std::span<const std::uint8_t> codes, const BmpHead& head, CDibImage& image) {
    return RleDecoder(codes, head, image).Decode();
}

}  // namespace velloran
