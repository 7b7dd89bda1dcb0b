#include "dewarping/ResampleFlat.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <vector>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "dewarping/CylindricalSurfaceDewarper.h"
#include "imaging/CubicSample.h"

namespace velloran::dewarping {
namespace {

constexpr std::int64_t kMaxPixels = std::int64_t{1} << 30;

/// Where the pixels of a row come from, in 1/kCubicSteps of a pixel. Where that is outside the
/// picture, x is kOutside.
struct Places {
    std::vector<std::int32_t> x, y;
};
constexpr std::int32_t kOutside = -1 << 30;

/// The columns of the grid, an array for each coefficient, so that loops over them become vectors.
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

    int size() const { return static_cast<int>(x0_.size()); }

    /// At the share v of the height, in a picture of that size. Limits come first, so that what
    /// goes to integers fits them; what is no number is outside.
    void placesAt(double v, int width, int height, Places& places) const {
        const double right = width - 0.5, below = height - 0.5;
        for (std::size_t i = 0; i < x0_.size(); ++i) {
            const double inverse = 1.0 / (w0_[i] + w1_[i] * v);
            const double x = (x0_[i] + x1_[i] * v) * inverse;
            const double y = (y0_[i] + y1_[i] * v) * inverse;
            const bool isInside = (x >= -0.5) & (y >= -0.5) & (x < right) & (y < below);
            // A pixel is added so that the conversion, which goes toward zero, rounds.
            const double safeX = isInside ? x + 1 : 0.0, safeY = isInside ? y + 1 : 0.0;
            places.x[i] = isInside
                              ? static_cast<std::int32_t>(safeX * kCubicSteps + 0.5) - kCubicSteps
                              : kOutside;
            places.y[i] = static_cast<std::int32_t>(safeY * kCubicSteps + 0.5) - kCubicSteps;
        }
    }

 private:
    std::vector<double> x0_, x1_, y0_, y1_, w0_, w1_;
};

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

template <int kChannels>
void cubicPixel(ConstPlaneView source, std::int32_t x, std::int32_t y, std::uint8_t* out) {
    CubicSample<kChannels>(source, x, y, out);
}

using PixelKernel = void (*)(ConstPlaneView, std::int32_t, std::int32_t, std::uint8_t*);

/// A template, so that the pixel's own code stands in the loop.
template <int kChannels, PixelKernel kPixel>
void resampleRows(ConstPlaneView source, const Columns& columns, double firstV, double stepV,
                  PlaneView target) {
    const CancelToken cancel = CurrentCancel();
    const auto width = static_cast<std::size_t>(target.width);
    std::vector<Places> scratch(static_cast<std::size_t>(MaxThreads()));
    for (Places& places : scratch) {
        places.x.resize(width);
        places.y.resize(width);
    }
#pragma omp parallel for schedule(static) if (IsWorthThreads(target))
    for (int y = 0; y < target.height; ++y) {
        if (cancel.IsCancelled())
            continue;
        Places& places = scratch[static_cast<std::size_t>(ThreadNumber())];
        columns.placesAt(firstV + y * stepV, source.width, source.height, places);
        std::uint8_t* out = target.Row(y).data();
        for (std::size_t x = 0; x < width; ++x, out += kChannels)
            if (places.x[x] != kOutside)
                kPixel(source, places.x[x], places.y[x], out);
    }
}

template <int kChannels>
void resampleView(int mode, ConstPlaneView source, const Columns& columns, double firstV,
                  double stepV, PlaneView target) {
    const auto rows = mode == kNearestPixel
                          ? resampleRows<kChannels, nearestPixel<kChannels>>
                          : (mode == kLinear ? resampleRows<kChannels, linearPixel<kChannels>>
                                             : resampleRows<kChannels, cubicPixel<kChannels>>);
    rows(source, columns, firstV, stepV, target);
}

void fill(CDibImage& image, std::uint32_t color) {
    const auto red = static_cast<std::uint8_t>(color),
               green = static_cast<std::uint8_t>(color >> 8),
               blue = static_cast<std::uint8_t>(color >> 16);
    if (image.GetBpp() == 8) {
        image.Clear(static_cast<std::uint8_t>((red + green + blue + 1) / 3));
        return;
    }
    for (int y = 0; y < image.GetHeight(); ++y) {
        std::uint8_t* pixel = image.GetBits(y);
        for (int x = 0; x < image.GetWidth(); ++x, pixel += 3) {
            pixel[0] = blue;
            pixel[1] = green;
            pixel[2] = red;
        }
    }
}

}  // namespace

int resample(int mode, CDibImage& image, QT::QSize outSize,
             const CylindricalSurfaceDewarper& surface, const QT::QRect& rect,
             std::uint32_t background) {
    if (outSize.width < 1 || outSize.height < 1 || rect.IsEmpty() ||
        std::int64_t{outSize.width} * outSize.height > kMaxPixels)
        return 0;
    if (image.GetBpp() == 8 && image.IsGrayScale() ? false : EnsureGrayOrRgb(image) == 0)
        return 0;
    CDibImage flat;
    if (flat.Create(outSize.width, outSize.height, image.GetBpp()) == nullptr ||
        (image.GetAlpha() != nullptr && !flat.CreateAlpha()))
        throw std::bad_alloc();
    flat.SetGrayPalette();
    fill(flat, background);
    const Columns columns(surface, outSize.width, rect);
    const double stepV = static_cast<double>(rect.Height()) / outSize.height / surface.flatHeight();
    const double firstV = rect.top / surface.flatHeight();
    const ConstPlaneView source = TopDownViewOf(static_cast<const CDibImage&>(image));
    const PlaneView target = TopDownViewOf(flat);
    if (source.channels == 3)
        resampleView<3>(mode, source, columns, firstV, stepV, target);
    else
        resampleView<1>(mode, source, columns, firstV, stepV, target);
    if (image.GetAlpha() != nullptr) {
        const ConstPlaneView alpha{image.GetAlpha(), source.width, source.height, 1, source.width};
        const PlaneView flatAlpha{flat.GetAlpha(), outSize.width, outSize.height, 1, outSize.width};
        resampleView<1>(kNearestPixel, alpha.UpsideDown(), columns, firstV, stepV,
                        flatAlpha.UpsideDown());
    }
    return image.TakePixels(flat) ? 1 : 0;
}

}  // namespace velloran::dewarping
