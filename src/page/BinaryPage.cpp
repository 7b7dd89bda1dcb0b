#include "page/BinaryPage.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>

namespace velloran {

imageproc::BinaryImage BinaryOf(const CDibImage& gray) {
    if (gray.GetBpp() != 8)
        throw std::invalid_argument("BinaryOf: the image is not 8-bit");
    const ConstPlaneView rows = TopDownViewOf(gray);
    imageproc::BinaryImage binary(rows.width, rows.height);
    std::uint32_t* word = binary.data();
    for (int y = 0; y < rows.height; ++y) {
        const std::uint8_t* row = rows.Row(y).data();
        for (int x = 0; x < rows.width; x += 32) {
            std::uint32_t bits = 0;
            const int count = std::min(32, rows.width - x);
            for (int i = 0; i < count; ++i)
                bits |= static_cast<std::uint32_t>(row[x + i] < 128) << (31 - i);
            *word++ = bits;
        }
    }
    return binary;
}

void PaintBinary(const imageproc::BinaryImage& binary, CDibImage& gray) {
    if (gray.GetBpp() != 8 || gray.GetWidth() != binary.width() ||
        gray.GetHeight() != binary.height())
        throw std::invalid_argument("PaintBinary: the images have different sizes");
    gray.SetGrayPalette();
    const PlaneView rows = TopDownViewOf(gray);
    const std::uint32_t* words = binary.data();
    for (int y = 0; y < rows.height; ++y, words += binary.wordsPerLine()) {
        std::uint8_t* row = rows.Row(y).data();
        for (int x = 0; x < rows.width; ++x)
            row[x] = (words[x / 32] >> (31 - x % 32) & 1) != 0 ? 0 : 255;
    }
}

}  // namespace velloran
