#pragma once

// The heads of a BMP, of every kind, brought to one form. Internal to the codecs.

#include <array>
#include <cstdint>
#include <string>

#include "codecs/ImageInfo.h"
#include "core/BaseImage.h"

namespace velloran {

class ByteSource;

/// One colour's bits in a 16- or 32-bit pixel.
struct BmpField {
    int shift = 0, bits = 0;  // 0 bits: the pixels have no such channel

    std::uint32_t ValueOf(std::uint32_t pixel) const {
        return bits == 0 ? 0 : pixel >> shift & (0xFFFFFFFFU >> (32 - bits));
    }
    /// The highest 8 bits of the field.
    std::uint8_t HighBits(std::uint32_t pixel) const {
        const std::uint32_t value = ValueOf(pixel);
        return static_cast<std::uint8_t>(bits > 8 ? value >> (bits - 8) : value << (8 - bits));
    }
    /// The field stretched to 0..255, rounded.
    std::uint8_t Stretched(std::uint32_t pixel) const {
        if (bits == 0)
            return 0;
        const std::uint64_t most = 0xFFFFFFFFU >> (32 - bits);
        return static_cast<std::uint8_t>((ValueOf(pixel) * 255ULL + most / 2) / most);
    }
    bool operator==(const BmpField&) const = default;
};

enum class BmpCoding { kPlain, kRle };

struct BmpHead {
    int width = 0, height = 0;  // of the picture, positive
    bool topDown = false;
    int bitsPerPixel = 0;  // 1, 2, 4, 8, 16, 24, 32
    BmpCoding coding = BmpCoding::kPlain;
    BmpField red, green, blue, alpha;  // at 16 and 32 bits
    int paletteCount = 0;              // entries that the file holds
    std::array<PaletteEntry, 256> palette{};
    int xDpi = 96, yDpi = 96;
    std::size_t pixelOffset = 0;  // within the file

    bool IsIdentityGray() const;
    /// The channels are 565 or 555 as the 16-bit writer lays them.
    bool IsCutTo16Bits() const;
};

/// Fills `head`. The text of the refusal, empty when the head is good: a wrong mark, a head or
/// palette that the file does not hold whole, sizes outside the readers' limits, depths and codings
/// that no page comes in (embedded JPEG and PNG, Huffman).
std::string ReadBmpHead(ByteSource& source, BmpHead& head);

/// Bits per pixel in memory: 2 bits become 4, 16 and 32 bits become 24.
int BitsInMemory(const BmpHead& head);

}  // namespace velloran
