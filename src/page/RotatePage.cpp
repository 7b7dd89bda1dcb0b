#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "core/DibImage.h"
#include "core/ExactMath.h"
#include "core/GrayDepth.h"
#include "core/Refusal.h"
#include "imaging/Rotate.h"
#include "page/Deskew.h"

namespace velloran {
namespace {

constexpr double kLeastTurn = 0.01;
constexpr int kNearest = 1;
constexpr double kRadian = 0.017453292519943295;

void CopyRows(ConstPlaneView from, PlaneView to) {
    for (int y = 0; y < from.height; ++y)
        std::ranges::copy(from.Row(y), to.Row(y).begin());
}

/// The pixel of column `from` over the columns first <= x < end of a row.
void RepeatAcross(std::uint8_t* row, int channels, int from, int first, int end) {
    const std::uint8_t* pixel = row + std::ptrdiff_t{from} * channels;
    std::uint8_t copy[3] = {};
    std::copy_n(pixel, channels, copy);
    for (int x = first; x < end; ++x)
        std::copy_n(copy, channels, row + std::ptrdiff_t{x} * channels);
}

/// How far a wedge is filled: at half a side, by half the angle.
int StripWidth(int halfSide, double tangent, int limit) {
    const int width = std::abs(static_cast<int>(halfSide * tangent)) + 1;
    return std::min(width, limit);
}

/// Edge pixels repeated inward over the wedges that the turn opens: beside the rows of the upper
/// half at one side and of the lower half at the other, then beneath and above likewise.
void ExtendEdges(ConstPlaneView source, double degrees, PlaneView page) {
    const double radians = degrees / 2 * kRadian;
    const double tangent = Sin(radians) / Cos(radians);
    const int halfWidth = page.width / 2, halfHeight = page.height / 2;
    const int across = StripWidth(halfHeight, tangent, page.width);
    const int deep = StripWidth(halfWidth, tangent, page.height);
    const bool clockwise = degrees > 0;
    const int lastColumn = page.width - 1, lastRow = page.height - 1;
    for (int i = 0; i <= halfHeight && i <= lastRow; ++i) {
        std::uint8_t* upper = page.Row(lastRow - i).data();
        std::uint8_t* lower = page.Row(i).data();
        RepeatAcross(clockwise ? upper : lower, page.channels, 0, 0, across);
        RepeatAcross(clockwise ? lower : upper, page.channels, lastColumn, page.width - across,
                     page.width);
    }
    // The upper edge opens over its right half in a clockwise turn, the lower over its left.
    const std::size_t bytes =
        static_cast<std::size_t>(page.width - halfWidth) * static_cast<std::size_t>(page.channels);
    const std::ptrdiff_t right = std::ptrdiff_t{halfWidth} * page.channels;
    const std::ptrdiff_t upperAt = clockwise ? right : 0, lowerAt = clockwise ? 0 : right;
    for (int i = 0; i < deep; ++i) {
        std::memcpy(page.Row(lastRow - i).data() + upperAt, source.Row(lastRow).data() + upperAt,
                    bytes);
        std::memcpy(page.Row(i).data() + lowerAt, source.Row(0).data() + lowerAt, bytes);
    }
}

void Prefill(ConstPlaneView source, double degrees, int edgeMode, PlaneView page) {
    if (edgeMode == kFillEdge)
        return;  // the turn itself fills what it opens
    CopyRows(source, page);
    if (edgeMode == kExtendEdge)
        ExtendEdges(source, degrees, page);
}

/// Alpha turns along; what a turn opens is opaque where it shows a fill or an edge.
void RotateAlpha(const CDibImage& image, const Rotation& rotation, CDibImage& turned) {
    const int width = image.GetWidth(), height = image.GetHeight();
    RotateNearest({image.GetAlpha(), width, height, 1, width}, rotation,
                  {turned.GetAlpha(), width, height, 1, width});
}

}  // namespace

int rotateKeepSize(CDibImage& image, double degrees, int interpolation, int edgeMode,
                   std::uint32_t color) {
    if (!image.IsValid() || image.IsGhost() || !std::isfinite(degrees) ||
        (degrees > -kLeastTurn && degrees < kLeastTurn))
        return 0;
    return RefuseWhenOutOfMemory([&] {
        if (EnsureGrayOrRgb(image) == 0)
            return 0;
        CDibImage turned;
        if (turned.Create(image.GetWidth(), image.GetHeight(), image.GetBpp()) == nullptr ||
            (image.GetAlpha() != nullptr && !turned.CreateAlpha()))
            return 0;
        turned.SetGrayPalette();
        const ConstPlaneView source = ViewOf(static_cast<const CDibImage&>(image));
        const PlaneView target = ViewOf(turned);
        Rotation rotation{degrees, image.GetWidth() >> 1, image.GetHeight() >> 1};
        const std::uint8_t fill[] = {static_cast<std::uint8_t>(color >> 16),
                                     static_cast<std::uint8_t>(color >> 8),
                                     static_cast<std::uint8_t>(color)};
        if (edgeMode == kFillEdge)
            rotation.outside = fill;
        Prefill(source, degrees, edgeMode, target);
        (interpolation == kNearest ? RotateNearest : RotateCubic)(source, rotation, target);
        if (image.GetAlpha() != nullptr) {
            rotation.outside = nullptr;
            RotateAlpha(image, rotation, turned);
            std::copy_n(turned.GetAlpha(), std::size_t(image.GetWidth()) * image.GetHeight(),
                        image.GetAlpha());
        }
        return image.TakePixels(turned) ? 1 : 0;
    });
}

}  // namespace velloran
