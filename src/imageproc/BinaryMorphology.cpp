#include "imageproc/BinaryMorphology.h"

#include <algorithm>
#include <stdexcept>

#include "imageproc/RasterOp.h"

namespace velloran::imageproc {
namespace {

QT::QRect grownBy(const QT::QRect& area, const Brick& brick) {
    return {area.left + std::min(brick.minX(), 0), area.top + std::min(brick.minY(), 0),
            area.right + std::max(brick.maxX(), 0), area.bottom + std::max(brick.maxY(), 0)};
}

/// The pixels of `area` (in src's coordinates) as an image of its own.
BinaryImage cutOut(const BinaryImage& src, const QT::QRect& area, BwColor outside) {
    BinaryImage result({area.Width(), area.Height()}, outside);
    const int left = std::max(area.left, 0), top = std::max(area.top, 0);
    const int right = std::min(area.right, src.width() - 1);
    const int bottom = std::min(area.bottom, src.height() - 1);
    if (left <= right && top <= bottom)
        rasterOp<Copy>(result,
                       {left - area.left, top - area.top, right - area.left, bottom - area.top},
                       src, {left, top});
    return result;
}

/// Combines the image with itself, moved by (dx, dy); what would come from beyond stays out.
template <typename Operator>
void combineMoved(BinaryImage& image, int dx, int dy) {
    const BinaryImage before(image);
    const QT::QRect to{std::max(dx, 0), std::max(dy, 0), image.width() - 1 + std::min(dx, 0),
                       image.height() - 1 + std::min(dy, 0)};
    rasterOp<Operator>(image, to, before, {to.left - dx, to.top - dy});
}

/// After this each pixel combines the `count` pixels at 0, -step, ... behind it: the reach doubles
/// with each pass.
template <typename Operator>
void combineRun(BinaryImage& image, int count, int stepX, int stepY) {
    int reach = 1;
    while (reach < count) {
        const int move = std::min(reach, count - reach);
        combineMoved<Operator>(image, stepX * move, stepY * move);
        reach += move;
    }
}

template <typename Operator>
BinaryImage overBrick(const BinaryImage& src, const Brick& brick, const QT::QRect& dstArea,
                      BwColor outside) {
    if (src.isNull() || brick.isEmpty() || dstArea.IsEmpty())
        throw std::invalid_argument("brick morphology: empty operand");
    // The canvas reaches so far that nothing that dstArea needs is lost on the way; pixel x then
    // wants src at x - maxX .. x - minX.
    const Brick reach = brick.reflected();
    const QT::QRect canvasArea = grownBy(dstArea, reach);
    BinaryImage canvas = cutOut(src, canvasArea, outside);
    combineRun<Operator>(canvas, brick.width(), 1, 0);
    combineRun<Operator>(canvas, brick.height(), 0, 1);
    BinaryImage result(dstArea.Width(), dstArea.Height());
    rasterOp<Copy>(result, result.rect(), canvas,
                   {dstArea.left - brick.minX() - canvasArea.left,
                    dstArea.top - brick.minY() - canvasArea.top});
    return result;
}

}  // namespace

BinaryImage dilateBrick(const BinaryImage& src, const Brick& brick, const QT::QRect& dstArea,
                        BwColor outside) {
    return overBrick<Unite>(src, brick, dstArea, outside);
}

BinaryImage dilateBrick(const BinaryImage& src, const Brick& brick, BwColor outside) {
    return dilateBrick(src, brick, src.rect(), outside);
}

BinaryImage erodeBrick(const BinaryImage& src, const Brick& brick, const QT::QRect& dstArea,
                       BwColor outside) {
    return overBrick<Intersect>(src, brick, dstArea, outside);
}

BinaryImage erodeBrick(const BinaryImage& src, const Brick& brick, BwColor outside) {
    return erodeBrick(src, brick, src.rect(), outside);
}

BinaryImage openBrick(const BinaryImage& src, QT::QSize size, BwColor outside) {
    const Brick brick(size);
    if (src.isNull() || brick.isEmpty())
        throw std::invalid_argument("brick morphology: empty operand");
    if (outside == BwColor::kWhite && (size.width > src.width() || size.height > src.height()))
        return {src.size(), BwColor::kWhite};
    // The area grows to both sides, for an even brick reaches further to one of them.
    QT::QRect area = grownBy(grownBy(src.rect(), brick), brick.reflected());
    const BinaryImage eroded = erodeBrick(src, brick, area, outside);
    const QT::QRect back{-area.left, -area.top, -area.left + src.width() - 1,
                         -area.top + src.height() - 1};
    return dilateBrick(eroded, brick.reflected(), back, outside);
}

}  // namespace velloran::imageproc
