#include "imageproc/GrayMorphology.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>
#include <vector>

#include "core/StepContext.h"

namespace velloran::imageproc {
namespace {

struct Minimum {
    static std::uint8_t of(std::uint8_t a, std::uint8_t b) { return std::min(a, b); }
};
struct Maximum {
    static std::uint8_t of(std::uint8_t a, std::uint8_t b) { return std::max(a, b); }
};

/// A tight plane with the top row of the picture first.
struct Plane {
    int width, height;
    std::vector<std::uint8_t> samples;

    Plane(int w, int h, std::uint8_t value)
        : width(w), height(h), samples(static_cast<std::size_t>(w) * h, value) {}
    std::uint8_t* row(int y) { return samples.data() + static_cast<std::size_t>(y) * width; }
};

/// Each sample combines the `count` samples from itself on, along rows or columns; the reach
/// doubles with each pass, and a pass may run in place because it only reads ahead.
template <typename Choice>
void runAlongRows(Plane& plane, int count) {
    const CancelToken cancel = CurrentCancel();
    for (int reach = 1; reach < count;) {
        const int move = std::min(reach, count - reach);
        for (int y = 0; y < plane.height && !cancel.IsCancelled(); ++y) {
            std::uint8_t* row = plane.row(y);
            for (int x = 0; x + move < plane.width; ++x)
                row[x] = Choice::of(row[x], row[x + move]);
        }
        reach += move;
    }
}

template <typename Choice>
void runAlongColumns(Plane& plane, int count) {
    const CancelToken cancel = CurrentCancel();
    for (int reach = 1; reach < count;) {
        const int move = std::min(reach, count - reach);
        for (int y = 0; y + move < plane.height && !cancel.IsCancelled(); ++y) {
            std::uint8_t* row = plane.row(y);
            const std::uint8_t* ahead = plane.row(y + move);
            for (int x = 0; x < plane.width; ++x)
                row[x] = Choice::of(row[x], ahead[x]);
        }
        reach += move;
    }
}

/// The image with margins of `value`: `left` and `top` before it, so many in all.
Plane withMargins(const CDibImage& image, int left, int top, int width, int height,
                  std::uint8_t value) {
    Plane plane(width, height, value);
    const ConstPlaneView view = TopDownViewOf(image);
    for (int y = 0; y < view.height; ++y)
        std::memcpy(plane.row(y + top) + left, view.Row(y).data(),
                    static_cast<std::size_t>(view.width));
    return plane;
}

CDibImage likeWithPlane(const CDibImage& image, Plane& plane) {
    CDibImage result;
    if (!result.Copy(image, /*copyPixels=*/false))
        throw std::bad_alloc();
    const PlaneView view = TopDownViewOf(result);
    for (int y = 0; y < view.height; ++y)
        std::memcpy(view.Row(y).data(), plane.row(y), static_cast<std::size_t>(view.width));
    return result;
}

void requireGray(const CDibImage& image, const Brick& brick) {
    if (image.GetBpp() != 8 || !image.IsValid() || brick.isEmpty())
        throw std::invalid_argument("grey morphology: empty operand");
}

}  // namespace

CDibImage erodeGray(const CDibImage& image, const Brick& brick, std::uint8_t outsideValue) {
    requireGray(image, brick);
    const int left = std::max(-brick.minX(), 0), right = std::max(brick.maxX(), 0);
    const int top = std::max(-brick.minY(), 0), bottom = std::max(brick.maxY(), 0);
    Plane plane = withMargins(image, left, top, image.GetWidth() + left + right,
                              image.GetHeight() + top + bottom, outsideValue);
    runAlongRows<Minimum>(plane, brick.width());
    runAlongColumns<Minimum>(plane, brick.height());
    Plane result(image.GetWidth(), image.GetHeight(), 0);
    for (int y = 0; y < result.height; ++y)
        std::memcpy(result.row(y), plane.row(y + top + brick.minY()) + left + brick.minX(),
                    static_cast<std::size_t>(result.width));
    return likeWithPlane(image, result);
}

CDibImage closeGray(const CDibImage& image, QT::QSize size, std::uint8_t outsideValue) {
    const Brick brick(size);
    requireGray(image, brick);
    // Dilation looks ahead by the brick and erosion back by the same, so that a sample ends at
    // its own place; the margins hold all that either reads.
    const int marginX = 2 * brick.width(), marginY = 2 * brick.height();
    Plane plane = withMargins(image, marginX, marginY, image.GetWidth() + 2 * marginX,
                              image.GetHeight() + 2 * marginY, outsideValue);
    runAlongRows<Maximum>(plane, brick.width());
    runAlongColumns<Maximum>(plane, brick.height());
    runAlongRows<Minimum>(plane, brick.width());
    runAlongColumns<Minimum>(plane, brick.height());
    Plane result(image.GetWidth(), image.GetHeight(), 0);
    for (int y = 0; y < result.height; ++y)
        std::memcpy(result.row(y),
                    plane.row(y + marginY - (brick.height() - 1)) + marginX - (brick.width() - 1),
                    static_cast<std::size_t>(result.width));
    return likeWithPlane(image, result);
}

}  // namespace velloran::imageproc
