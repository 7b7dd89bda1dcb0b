#pragma once

// The rectangle of offsets that morphology runs over.

#include "core/QtTypes.h"

namespace velloran::imageproc {

/// Offsets from -(w / 2) to w - w / 2 - 1 and from -(h / 2) to h - h / 2 - 1, y downward.
class Brick {
 public:
    explicit Brick(QT::QSize size)
        : minX_(-(size.width / 2)),
          maxX_(size.width - size.width / 2 - 1),
          minY_(-(size.height / 2)),
          maxY_(size.height - size.height / 2 - 1) {}
    Brick(int minX, int minY, int maxX, int maxY)
        : minX_(minX), maxX_(maxX), minY_(minY), maxY_(maxY) {}

    int minX() const { return minX_; }
    int maxX() const { return maxX_; }
    int minY() const { return minY_; }
    int maxY() const { return maxY_; }
    int width() const { return maxX_ - minX_ + 1; }
    int height() const { return maxY_ - minY_ + 1; }
    bool isEmpty() const { return minX_ > maxX_ || minY_ > maxY_; }
    /// Turned about the origin.
    Brick reflected() const { return {-maxX_, -maxY_, -minX_, -minY_}; }

 private:
    int minX_, maxX_, minY_, maxY_;
};

}  // namespace velloran::imageproc
