#include "imageproc/Upscale.h"

#include <stdexcept>

#include "imageproc/RasterOp.h"

namespace velloran::imageproc {
namespace {

/// Row y of `src`, each pixel factorX wide, into row `to` of `dst`, which is white there.
void stretchRow(const BinaryImage& src, int y, int factorX, BinaryImage& dst, int to) {
    int x = 0;
    while (x < src.width()) {
        if (!src.isBlack(x, y)) {
            ++x;
            continue;
        }
        int end = x + 1;
        while (end < src.width() && src.isBlack(end, y))
            ++end;
        dst.fill({x * factorX, to, end * factorX - 1, to}, BwColor::kBlack);
        x = end;
    }
}

}  // namespace

BinaryImage upscaleIntegerTimes(const BinaryImage& src, QT::QSize dstSize, BwColor color) {
    if (dstSize.width < 0 || dstSize.height < 0)
        throw std::invalid_argument("upscaleIntegerTimes: scaling factors can't be negative");
    if (src.isNull())
        throw std::invalid_argument("upscaleIntegerTimes: bad dst_size");
    const int factorX = dstSize.width / src.width(), factorY = dstSize.height / src.height();
    if (factorX < 1 || factorY < 1)
        return {dstSize, color};
    return upscaleIntegerTimes(src, factorX, factorY, dstSize, color);
}

BinaryImage upscaleIntegerTimes(const BinaryImage& src, int factorX, int factorY, QT::QSize dstSize,
                                BwColor color) {
    if (factorX < 0 || factorY < 0)
        throw std::invalid_argument("upscaleIntegerTimes: scaling factors can't be negative");
    const std::int64_t width = static_cast<std::int64_t>(src.width()) * factorX;
    const std::int64_t height = static_cast<std::int64_t>(src.height()) * factorY;
    if (src.isNull() || width > dstSize.width || height > dstSize.height)
        throw std::invalid_argument("upscaleIntegerTimes: bad dst_size");
    BinaryImage result(dstSize, color);
    if (width == 0 || height == 0)
        return result;
    const int right = static_cast<int>(width) - 1;
    for (int y = 0; y < src.height(); ++y) {
        const int top = y * factorY;
        result.fill({0, top, right, top + factorY - 1}, BwColor::kWhite);
        stretchRow(src, y, factorX, result, top);
        for (int copy = 1; copy < factorY; ++copy)
            rasterOp<Copy>(result, {0, top + copy, right, top + copy}, result, {0, top});
    }
    return result;
}

}  // namespace velloran::imageproc
