#pragma once

// Word-wise combinations of a rectangle of one binary image with an equal one of another, which
// may be the same image and may overlap.

#include <cstdint>

#include "core/QtTypes.h"
#include "imageproc/BinaryImage.h"

namespace velloran::imageproc {

struct Point {
    int x = 0, y = 0;
};

// Operators on words: src is what is drawn, dst what it is drawn on.
struct RopSrc {
    static std::uint32_t transform(std::uint32_t src, std::uint32_t) { return src; }
};
struct RopDst {
    static std::uint32_t transform(std::uint32_t, std::uint32_t dst) { return dst; }
};
template <typename A, typename B>
struct RopOr {
    static std::uint32_t transform(std::uint32_t src, std::uint32_t dst) {
        return A::transform(src, dst) | B::transform(src, dst);
    }
};
template <typename A, typename B>
struct RopAnd {
    static std::uint32_t transform(std::uint32_t src, std::uint32_t dst) {
        return A::transform(src, dst) & B::transform(src, dst);
    }
};

class AbstractRasterOp {
 public:
    virtual ~AbstractRasterOp() = default;
    /// dst's rectangle takes the combination with src's of the same size at `srcPoint`.
    virtual void apply(BinaryImage& dst, const QT::QRect& dstRect, const BinaryImage& src,
                       Point srcPoint) const = 0;
};

template <typename Operator>
class TemplateRasterOp : public AbstractRasterOp {
 public:
    void apply(BinaryImage& dst, const QT::QRect& dstRect, const BinaryImage& src,
               Point srcPoint) const override;
};

/// Null operands, and rectangles that leave their image, throw std::invalid_argument. An empty
/// rectangle does nothing.
template <typename Operator>
void rasterOp(BinaryImage& dst, const QT::QRect& dstRect, const BinaryImage& src, Point srcPoint);

/// The whole images, which must have equal sizes.
template <typename Operator>
void rasterOp(BinaryImage& dst, const BinaryImage& src);

/// dst AND NOT src over whole images of equal sizes.
void subtract(BinaryImage& dst, const BinaryImage& src);

// The operators that exist.
using Copy = RopSrc;
using Unite = RopOr<RopSrc, RopDst>;
using Intersect = RopAnd<RopSrc, RopDst>;

}  // namespace velloran::imageproc
