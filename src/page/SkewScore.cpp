#include "page/SkewScore.h"

#include <cstdint>
#include <cstdlib>
#include <new>
#include <vector>

#include "core/ExactMath.h"

namespace velloran {
namespace {

constexpr double kRadian = 0.017453293005625408;

/// round(i * tan(angle)), half away from zero.
std::vector<int> Offsets(int count, double angle) {
    const double tangent = Sin(angle * kRadian) / Cos(angle * kRadian);
    std::vector<int> offsets(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        const double shift = i * tangent;
        offsets[static_cast<std::size_t>(i)] =
            static_cast<int>(shift < 0 ? shift - 0.5 : shift + 0.5);
    }
    return offsets;
}

/// Counts of black for each of the lines; what lies beyond the page does not count.
std::vector<std::int64_t> Counts(int lines, int offset) {
    return std::vector<std::int64_t>(static_cast<std::size_t>(lines + std::abs(offset)));
}

double SumOfSquaredSteps(const std::vector<std::int64_t>& counts, bool fromTheEnd) {
    const std::size_t lines = counts.size();
    double score = 0;
    std::int64_t previous = 0;
    for (std::size_t i = 0; i < lines; ++i) {
        const std::size_t line = fromTheEnd ? lines - 1 - i : i;
        const double step = static_cast<double>(counts[line] - previous);
        previous = counts[line];
        if (line != 0)  // the last line of a walk down, the first of a walk up
            score += step * step;
    }
    return score;
}

}  // namespace

double scoreRows(const CDibImage& gray, double angle) {
    const int width = gray.GetWidth(), height = gray.GetHeight();
    const std::vector<int> offsets = Offsets(width, angle);
    std::vector<std::int64_t> counts = Counts(height, offsets.back());
    const int lines = static_cast<int>(counts.size());
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* row = gray.GetBits(y);
        for (int x = 0; x < width; ++x) {
            const int line = y - offsets[static_cast<std::size_t>(x)];
            if (row[x] == 0 && line >= 0 && line < lines)
                ++counts[static_cast<std::size_t>(line)];
        }
    }
    return SumOfSquaredSteps(counts, /*fromTheEnd=*/true);
}

double scoreColumns(const CDibImage& gray, double angle) {
    const int width = gray.GetWidth(), height = gray.GetHeight();
    const std::vector<int> offsets = Offsets(height, angle);
    std::vector<std::int64_t> counts = Counts(width, offsets.back());
    const int lines = static_cast<int>(counts.size());
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* row = gray.GetBits(y);
        const int offset = offsets[static_cast<std::size_t>(y)];
        for (int x = 0; x < width; ++x) {
            const int line = x - offset;
            if (row[x] == 0 && line >= 0 && line < lines)
                ++counts[static_cast<std::size_t>(line)];
        }
    }
    return SumOfSquaredSteps(counts, /*fromTheEnd=*/false);
}

void halve(CDibImage& gray, int rule) {
    const int width = gray.GetWidth() / 2, height = gray.GetHeight() / 2;
    if (width < 1 || height < 1)
        return;
    CDibImage half;
    if (half.Create(width, height, 8) == nullptr)
        throw std::bad_alloc();
    half.SetGrayPalette();
    const int white = (4 - rule) * 255;
    for (int y = 0; y < height; ++y) {
        const std::uint8_t *lower = gray.GetBits(2 * y), *upper = gray.GetBits(2 * y + 1);
        std::uint8_t* out = half.GetBits(y);
        for (int x = 0; x < width; ++x) {
            const int sum = lower[2 * x] + lower[2 * x + 1] + upper[2 * x] + upper[2 * x + 1];
            out[x] = sum > white ? 255 : 0;
        }
    }
    gray.TakePixels(half);
    gray.SetXDpi(gray.GetXDpi() / 2);
    gray.SetYDpi(gray.GetYDpi() / 2);
}

}  // namespace velloran
