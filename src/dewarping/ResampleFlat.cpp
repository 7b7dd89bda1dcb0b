#include "dewarping/ResampleFlat.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <new>
#include <vector>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/PictureLimits.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "dewarping/CylindricalSurfaceDewarper.h"
#include "imaging/CubicWeights.h"
#include "imaging/PlacedPixels.h"

namespace velloran::dewarping {
namespace {

/// The columns of the grid.
class Columns {
 public:
    Columns(const CylindricalSurfaceDewarper& surface, int count, const QT::QRect& rect)
        : x0_(static_cast<std::size_t>(count)),
          x1_(x0_.size()),
          y0_(x0_.size()),
          y1_(x0_.size()),
          w0_(x0_.size()),
          w1_(x0_.size()) {
        const double step = static_cast<double>(rect.Width()) / count;
        for (std::size_t i = 0; i < x0_.size(); ++i) {
            const auto column = surface.columnAt(rect.left + static_cast<double>(i) * step);
            x0_[i] = column.x0;
            x1_[i] = column.x1;
            y0_[i] = column.y0;
            y1_[i] = column.y1;
            w0_[i] = column.w0;
            w1_[i] = column.w1;
        }
    }

    ColumnTerms terms() const {
        return {x0_.data(), x1_.data(), y0_.data(), y1_.data(), w0_.data(), w1_.data()};
    }

 private:
    std::vector<double> x0_, x1_, y0_, y1_, w0_, w1_;
};

/// A colour as the bytes of a pixel.
using PixelBytes = std::array<std::uint8_t, 3>;

template <int kChannels>
void nearestPixel(ConstPlaneView source, std::int32_t x, std::int32_t y, std::uint8_t* out) {
    const int column = std::clamp((x + kCubicSteps / 2) >> 8, 0, source.width - 1);
    const int row = std::clamp((y + kCubicSteps / 2) >> 8, 0, source.height - 1);
    const std::uint8_t* from =
        source.first + row * source.stride + static_cast<std::ptrdiff_t>(column) * kChannels;
    for (int c = 0; c < kChannels; ++c)
        out[c] = from[c];
}

template <int kChannels>
void linearPixel(ConstPlaneView source, std::int32_t x, std::int32_t y, std::uint8_t* out) {
    const int left = x >> 8, top = y >> 8, across = x & 255, down = y & 255;
    const auto row = [&](int at) {
        return source.first + std::clamp(at, 0, source.height - 1) * source.stride;
    };
    const auto column = [&](int at) {
        return static_cast<std::ptrdiff_t>(std::clamp(at, 0, source.width - 1)) * kChannels;
    };
    const std::uint8_t *upper = row(top), *lower = row(top + 1);
    const std::ptrdiff_t a = column(left), b = column(left + 1);
    for (int c = 0; c < kChannels; ++c) {
        const int above = upper[a + c] * (256 - across) + upper[b + c] * across;
        const int below = lower[a + c] * (256 - across) + lower[b + c] * across;
        out[c] = static_cast<std::uint8_t>((above * (256 - down) + below * down + 32768) >> 16);
    }
}

using PixelKernel = void (*)(ConstPlaneView, std::int32_t, std::int32_t, std::uint8_t*);
using RowKernel = void (*)(ConstPlaneView, PixelPlaces, int, std::uint8_t*);

/// A template, so that the pixel's own code stands in the loop.
template <int kChannels, PixelKernel kPixel>
void sampleRow(ConstPlaneView source, PixelPlaces places, int count, std::uint8_t* out) {
    for (int x = 0; x < count; ++x, out += kChannels)
        if (places.x[x] != kOutsideSource)
            kPixel(source, places.x[x], places.y[x], out);
}

RowKernel kernelOf(int mode, int channels) {
    if (mode == kNearestPixel)
        return channels == 3 ? sampleRow<3, nearestPixel<3>> : sampleRow<1, nearestPixel<1>>;
    if (mode == kLinear)
        return channels == 3 ? sampleRow<3, linearPixel<3>> : sampleRow<1, linearPixel<1>>;
    return CubicPixels;
}

void fillOutside(PixelPlaces places, int count, int channels, const PixelBytes& color,
                 std::uint8_t* out) {
    for (int x = 0; x < count; ++x, out += channels)
        if (places.x[x] == kOutsideSource)
            std::copy_n(color.begin(), channels, out);
}

void resampleRows(RowKernel kernel, ConstPlaneView source, const Columns& columns, double firstV,
                  double stepV, const PixelBytes& background, PlaneView target) {
    const CancelToken cancel = CurrentCancel();
    const std::size_t width = static_cast<std::size_t>(target.width);
    std::vector<std::int32_t> scratch(2 * width * static_cast<std::size_t>(MaxThreads()));
    const ColumnTerms terms = columns.terms();
#pragma omp parallel for schedule(static) if (IsWorthThreads(target))
    for (int y = 0; y < target.height; ++y) {
        if (cancel.IsCancelled())
            continue;
        std::int32_t* x = scratch.data() + 2 * width * static_cast<std::size_t>(ThreadNumber());
        const PixelPlaces places{x, x + width};
        PlaceRow(terms, target.width, firstV + y * stepV, source.width, source.height, places);
        std::uint8_t* out = target.Row(y).data();
        fillOutside(places, target.width, target.channels, background, out);
        kernel(source, places, target.width, out);
    }
}

PixelBytes bytesOf(std::uint32_t color, int channels) {
    const auto red = static_cast<std::uint8_t>(color),
               green = static_cast<std::uint8_t>(color >> 8),
               blue = static_cast<std::uint8_t>(color >> 16);
    if (channels == 3)
        return {blue, green, red};
    return {static_cast<std::uint8_t>((red + green + blue + 1) / 3)};
}

}  // namespace

int resample(int mode, CDibImage& image, QT::QSize outSize,
             const CylindricalSurfaceDewarper& surface, const QT::QRect& rect,
             std::uint32_t background) {
    if (outSize.width < 1 || outSize.height < 1 || rect.IsEmpty() ||
        std::int64_t{outSize.width} * outSize.height > kMaxPicturePixels)
        return 0;
    if (image.GetBpp() == 8 && image.IsGrayScale() ? false : EnsureGrayOrRgb(image) == 0)
        return 0;
    CDibImage flat;
    if (flat.Create(outSize.width, outSize.height, image.GetBpp()) == nullptr ||
        (image.GetAlpha() != nullptr && !flat.CreateAlpha()))
        throw std::bad_alloc();
    flat.SetGrayPalette();
    const Columns columns(surface, outSize.width, rect);
    const double stepV = static_cast<double>(rect.Height()) / outSize.height / surface.flatHeight();
    const double firstV = rect.top / surface.flatHeight();
    const ConstPlaneView source = TopDownViewOf(static_cast<const CDibImage&>(image));
    const PlaneView target = TopDownViewOf(flat);
    resampleRows(kernelOf(mode, source.channels), source, columns, firstV, stepV,
                 bytesOf(background, source.channels), target);
    if (image.GetAlpha() != nullptr) {
        const ConstPlaneView alpha{image.GetAlpha(), source.width, source.height, 1, source.width};
        const PlaneView flatAlpha{flat.GetAlpha(), outSize.width, outSize.height, 1, outSize.width};
        constexpr PixelBytes kOpaque{255};
        resampleRows(kernelOf(kNearestPixel, 1), alpha.UpsideDown(), columns, firstV, stepV,
                     kOpaque, flatAlpha.UpsideDown());
    }
    return image.TakePixels(flat) ? 1 : 0;
}

}  // namespace velloran::dewarping
