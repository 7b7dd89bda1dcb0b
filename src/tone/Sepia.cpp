#include <algorithm>
#include <array>
#include <cstdint>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/Refusal.h"
#include "core/Rounding.h"
#include "tone/Channels.h"
#include "tone/PixelMapRows.h"

namespace velloran {
namespace {

constexpr double kOne = 1048576.0;
constexpr int kShift = 20;

/// Rows make red, green and blue; columns take red, green and blue.
using Matrix = std::array<std::array<std::int32_t, 3>, 3>;

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

std::uint8_t Mixed(const std::array<std::int32_t, 3>& weights, const std::uint8_t* pixel) {
    const std::int64_t sum = std::int64_t{pixel[2]} * weights[0] +
                             std::int64_t{pixel[1]} * weights[1] +
                             std::int64_t{pixel[0]} * weights[2];
    return static_cast<std::uint8_t>(std::min<std::int64_t>(sum >> kShift, 255));
}

int ToSepiaGray(CDibImage& image, const Matrix& matrix) {
    std::array<std::int32_t, 3> weights{};
    for (const auto& row : matrix)
        for (std::size_t c = 0; c < 3; ++c)
            weights[c] += row[c];
    CDibImage gray;
    if (gray.Create(image.GetWidth(), image.GetHeight(), 8) == nullptr)
        return 0;
    gray.SetGrayPalette();
    const ConstPlaneView source = ViewOf(static_cast<const CDibImage&>(image));
    const PlaneView target = ViewOf(gray);
#pragma omp parallel for schedule(static) if (IsWorthThreads(target))
    for (int y = 0; y < target.height; ++y) {
        const std::uint8_t* pixel = source.Row(y).data();
        std::uint8_t* out = target.Row(y).data();
        for (int x = 0; x < target.width; ++x, pixel += source.channels) {
            const std::uint8_t same[3] = {pixel[0], pixel[0], pixel[0]};
            out[x] = Mixed(weights, source.channels == 3 ? pixel : same);
        }
    }
    return image.TakePixels(gray) ? 1 : 0;
}

int ToSepiaColor(CDibImage& image, const Matrix& matrix) {
    if (ConvertToRgb(image) == 0)
        return 0;
    const PlaneView pixels = ViewOf(image);
#pragma omp parallel for schedule(static) if (IsWorthThreads(pixels))
    for (int y = 0; y < pixels.height; ++y) {
        std::uint8_t* pixel = pixels.Row(y).data();
        for (int x = 0; x < pixels.width; ++x, pixel += 3) {
            const std::uint8_t from[3] = {pixel[0], pixel[1], pixel[2]};
            for (std::size_t c = 0; c < 3; ++c)
                pixel[2 - c] = Mixed(matrix[c], from);
        }
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
        const Matrix matrix = Coefficients(strength, toGray);
        return toGray ? ToSepiaGray(image, matrix) : ToSepiaColor(image, matrix);
    });
}

}  // namespace velloran
