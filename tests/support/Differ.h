#pragma once

// Comparison of two images as a question; ExpectSamePixels asserts.

#include "core/DibImage.h"
#include "support/Images.h"

namespace velloran::test {

/// Whether depth, size or any pixel differs.
inline bool Differ(const CDibImage& a, const CDibImage& b) {
    if (a.GetBpp() != b.GetBpp() || a.GetWidth() != b.GetWidth() || a.GetHeight() != b.GetHeight())
        return true;
    for (int y = 0; y < a.GetHeight(); ++y)
        for (int x = 0; x < a.GetWidth(); ++x)
            if (PixelAt(a, x, y) != PixelAt(b, x, y))
                return true;
    return false;
}

}  // namespace velloran::test
