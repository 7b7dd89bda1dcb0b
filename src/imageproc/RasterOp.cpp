#include "imageproc/RasterOp.h"

#include <stdexcept>

namespace velloran::imageproc {
namespace {

struct RopSubtract {
    static std::uint32_t transform(std::uint32_t src, std::uint32_t dst) { return dst & ~src; }
};

void requireImages(const BinaryImage& dst, const BinaryImage& src) {
    if (dst.isNull() || src.isNull())
        throw std::invalid_argument("rasterOp: can't operate on null images");
}

bool holds(const BinaryImage& image, int left, int top, int width, int height) {
    return left >= 0 && top >= 0 && width <= image.width() - left && height <= image.height() - top;
}

/// One row of source words as if it began `shift` bits (0..31) into word `first`; words outside
/// the row are 0.
struct ShiftedLine {
    const std::uint32_t* line;
    int words, first, shift;

    std::uint32_t word(int index) const { return index < 0 || index >= words ? 0 : line[index]; }
    std::uint32_t operator[](int w) const {
        const std::uint32_t left = word(first + w) << shift;
        return shift == 0 ? left : left | word(first + w + 1) >> (32 - shift);
    }
};

template <typename Operator>
void combineRow(std::uint32_t* dst, int firstWord, int lastWord, std::uint32_t firstMask,
                std::uint32_t lastMask, const ShiftedLine& src, bool backward) {
    const int count = lastWord - firstWord + 1;
    for (int i = 0; i < count; ++i) {
        const int w = backward ? lastWord - i : firstWord + i;
        std::uint32_t mask = ~0U;
        if (w == firstWord)
            mask &= firstMask;
        if (w == lastWord)
            mask &= lastMask;
        const std::uint32_t result = Operator::transform(src[w], dst[w]);
        dst[w] = (dst[w] & ~mask) | (result & mask);
    }
}

template <typename Operator>
void combine(BinaryImage& dst, const QT::QRect& rect, const BinaryImage& src, Point from) {
    // A writable dst clones shared pixels first; src must be read after that, for it may be dst.
    std::uint32_t* target = dst.data();
    const std::uint32_t* source = src.data();
    const int firstWord = rect.left / 32, lastWord = rect.right / 32;
    const std::uint32_t firstMask = ~0U >> (rect.left % 32);
    const std::uint32_t lastMask = ~0U << (31 - rect.right % 32);
    // Bit 32 * w of dst meets bit 32 * w + offset of src.
    const int offset = from.x - rect.left;
    const int first = offset >= 0 ? offset / 32 : -((31 - offset) / 32);
    const int shift = offset - first * 32;
    const bool upward = rect.top > from.y;
    const bool leftward = rect.left > from.x;
    for (int i = 0; i < rect.Height(); ++i) {
        const int row = upward ? rect.Height() - 1 - i : i;
        const ShiftedLine line{
            source + static_cast<std::ptrdiff_t>(from.y + row) * src.wordsPerLine(),
            src.wordsPerLine(), first, shift};
        combineRow<Operator>(
            target + static_cast<std::ptrdiff_t>(rect.top + row) * dst.wordsPerLine(), firstWord,
            lastWord, firstMask, lastMask, line, leftward);
    }
}

}  // namespace

template <typename Operator>
void rasterOp(BinaryImage& dst, const QT::QRect& dstRect, const BinaryImage& src, Point srcPoint) {
    requireImages(dst, src);
    if (dstRect.IsEmpty())
        return;
    if (!holds(dst, dstRect.left, dstRect.top, dstRect.Width(), dstRect.Height()) ||
        !holds(src, srcPoint.x, srcPoint.y, dstRect.Width(), dstRect.Height()))
        throw std::invalid_argument("rasterOp: rectangle leaves its image");
    combine<Operator>(dst, dstRect, src, srcPoint);
}

template <typename Operator>
void rasterOp(BinaryImage& dst, const BinaryImage& src) {
    requireImages(dst, src);
    if (!(dst.size() == src.size()))
        throw std::invalid_argument("rasterOp: images have different sizes");
    combine<Operator>(dst, dst.rect(), src, {});
}

void subtract(BinaryImage& dst, const BinaryImage& src) {
    rasterOp<RopSubtract>(dst, src);
}

template <typename Operator>
void TemplateRasterOp<Operator>::apply(BinaryImage& dst, const QT::QRect& dstRect,
                                       const BinaryImage& src, Point srcPoint) const {
    rasterOp<Operator>(dst, dstRect, src, srcPoint);
}

template class TemplateRasterOp<Copy>;
template class TemplateRasterOp<Unite>;
template class TemplateRasterOp<Intersect>;
template void rasterOp<Copy>(BinaryImage&, const QT::QRect&, const BinaryImage&, Point);
template void rasterOp<Unite>(BinaryImage&, const QT::QRect&, const BinaryImage&, Point);
template void rasterOp<Intersect>(BinaryImage&, const QT::QRect&, const BinaryImage&, Point);
template void rasterOp<Copy>(BinaryImage&, const BinaryImage&);
template void rasterOp<Unite>(BinaryImage&, const BinaryImage&);
template void rasterOp<Intersect>(BinaryImage&, const BinaryImage&);

}  // namespace velloran::imageproc
