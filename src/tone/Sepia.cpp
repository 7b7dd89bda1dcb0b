#include <algorithm>
#include <array>
#include <cstdint>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/Refusal.h"
#include "core/Rounding.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "tone/Channels.h"
#include "tone/PixelMapRows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tone/Sepia.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

/// Weights of a row add up to less than 1.4, and 255 times as much leaves 32 bits room.
inline std::uint8_t Mixed(const std::int32_t* weights, int red, int green, int blue) {
    const int level = (red * weights[0] + green * weights[1] + blue * weights[2]) >> 20;
    return static_cast<std::uint8_t>(level < 255 ? level : 255);
}

/// `matrix` holds the weights of red, of green, of blue.
void SepiaRow(const std::int32_t* matrix, std::uint8_t* pixel, int width) {
    for (int x = 0; x < width; ++x) {
        const int blue = pixel[3 * x], green = pixel[3 * x + 1], red = pixel[3 * x + 2];
        pixel[3 * x] = Mixed(matrix + 6, red, green, blue);
        pixel[3 * x + 1] = Mixed(matrix + 3, red, green, blue);
        pixel[3 * x + 2] = Mixed(matrix, red, green, blue);
    }
}

void SepiaGrayRow(const std::int32_t* weights, const std::uint8_t* pixel, int width,
                  std::uint8_t* out) {
    for (int x = 0; x < width; ++x)
        out[x] = Mixed(weights, pixel[3 * x + 2], pixel[3 * x + 1], pixel[3 * x]);
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(SepiaRow);
HWY_EXPORT(SepiaGrayRow);

constexpr double kOne = 1048576.0;

/// Rows make red, green and blue; columns take red, green and blue.
using Weights = std::array<std::int32_t, 3>;
using Matrix = std::array<Weights, 3>;

Matrix Coefficients(double strength, bool toGray) {
    const double s = 1.0 - strength;
    const std::array<std::array<double, 3>, 3> rows = {{
        {0.607 * s + 0.393, 0.769 - 0.769 * s, 0.189 - 0.189 * s},
        {0.349 - 0.349 * s, 0.314 * s + 0.686, 0.168 - 0.168 * s},
        {0.272 - 0.272 * s, 0.534 - 0.534 * s, 0.869 * s + 0.131},
    }};
    constexpr std::array<double, 3> kLuminance = {0.2126, 0.7152, 0.0722};
    Matrix matrix{};
    for (std::size_t r = 0; r < 3; ++r)
        for (std::size_t c = 0; c < 3; ++c)
            matrix[r][c] = RoundHalf(rows[r][c] * (toGray ? kLuminance[r] : 1.0) * kOne);
    return matrix;
}

PixelMap SepiaGrayMap(const Weights& weights) {
    PixelMap map;
    for (int level = 0; level < 256; ++level)
        map[static_cast<std::size_t>(level)] =
            HWY_NAMESPACE::Mixed(weights.data(), level, level, level);
    return map;
}

int ToSepiaGray(CDibImage& image, const Matrix& matrix) {
    Weights weights{};
    for (const auto& row : matrix)
        for (std::size_t c = 0; c < 3; ++c)
            weights[c] += row[c];
    const ConstPlaneView source = ViewOf(static_cast<const CDibImage&>(image));
    if (source.channels == 1) {
        image.SetGrayPalette();
        MapRows(SepiaGrayMap(weights), ViewOf(image));
        return 1;
    }
    CDibImage gray;
    if (gray.Create(image.GetWidth(), image.GetHeight(), 8) == nullptr)
        return 0;
    gray.SetGrayPalette();
    const PlaneView target = ViewOf(gray);
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(target))
    for (int y = 0; y < target.height; ++y) {
        if (cancel.IsCancelled())
            continue;
        HWY_DYNAMIC_DISPATCH(SepiaGrayRow)
        (weights.data(), source.Row(y).data(), target.width, target.Row(y).data());
    }
    return image.TakePixels(gray) ? 1 : 0;
}

int ToSepiaColor(CDibImage& image, const Matrix& matrix) {
    if (ConvertToRgb(image) == 0)
        return 0;
    const PlaneView pixels = ViewOf(image);
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(pixels))
    for (int y = 0; y < pixels.height; ++y) {
        if (cancel.IsCancelled())
            continue;
        HWY_DYNAMIC_DISPATCH(SepiaRow)(matrix[0].data(), pixels.Row(y).data(), pixels.width);
    }
    return 1;
}

}  // namespace

int Sepia(CDibImage& image, double strength, bool toGray) {
    if (!image.IsValid())
        return 0;
    return RefuseWhenOutOfMemory([&] {
        // Little depths hold indices and not samples; they are brought to samples first.
        if (image.GetBpp() < 8 && EnsureGrayOrRgb(image) == 0)
            return 0;
        const Matrix matrix = Coefficients(std::clamp(strength, 0.0, 1.0), toGray);
        return toGray ? ToSepiaGray(image, matrix) : ToSepiaColor(image, matrix);
    });
}

}  // namespace velloran
#endif  // HWY_ONCE
