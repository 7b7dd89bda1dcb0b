#include "samples/Plane.h"

#include <algorithm>

namespace velloran::samples {

Plane::Plane(int width, int height, std::uint8_t value)
    : width_(width), height_(height), values_(static_cast<std::size_t>(width) * height, value) {}

template <typename Share>
void Plane::Blend(const PixelBox& pixels, std::uint8_t level, Share share) {
    for (int y = pixels.top; y < pixels.bottom; ++y) {
        std::uint8_t* row = Row(y);
        for (int x = pixels.left; x < pixels.right; ++x) {
            const float old = row[x];
            row[x] = static_cast<std::uint8_t>(old + (level - old) * share(x, y) + 0.5F);
        }
    }
}

void Plane::Paint(const Path& path, std::uint8_t level, Coverage& scratch) {
    scratch.Fill(path, PixelsAround(path.GetBounds(), width_, height_));
    const PixelBox& pixels = scratch.Pixels();
    Blend(pixels, level, [&](int x, int y) { return scratch.Row(y)[x - pixels.left]; });
}

void Plane::PaintMasked(const Path& path, const Coverage& mask, Coverage& scratch) {
    const PixelBox& pixels = mask.Pixels();
    scratch.Fill(path, pixels);
    Blend(pixels, 255, [&](int x, int y) {
        return scratch.Row(y)[x - pixels.left] * mask.Row(y)[x - pixels.left];
    });
}

void Plane::Soften() {
    if (IsEmpty())
        return;
    std::vector<std::uint8_t> above(Row(0), Row(0) + width_), here(width_);
    for (int y = 0; y < height_; ++y) {
        std::uint8_t* row = Row(y);
        const std::uint8_t* below = Row(std::min(y + 1, height_ - 1));
        std::copy_n(row, width_, here.begin());
        for (int x = 0; x < width_; ++x)
            row[x] = static_cast<std::uint8_t>((above[x] + 2 * here[x] + below[x] + 2) / 4);
        above.swap(here);
        int left = row[0];
        for (int x = 0; x < width_; ++x) {
            const int middle = row[x], right = row[std::min(x + 1, width_ - 1)];
            row[x] = static_cast<std::uint8_t>((left + 2 * middle + right + 2) / 4);
            left = middle;
        }
    }
}

void Plane::BlurRows(int radius) {
    std::vector<std::uint8_t> source(width_);
    const int count = 2 * radius + 1;
    for (int y = 0; y < height_; ++y) {
        std::uint8_t* row = Row(y);
        std::copy_n(row, width_, source.begin());
        const auto at = [&](int x) {
            return static_cast<int>(source[std::clamp(x, 0, width_ - 1)]);
        };
        int sum = 0;
        for (int x = -radius; x <= radius; ++x)
            sum += at(x);
        for (int x = 0; x < width_; ++x) {
            row[x] = static_cast<std::uint8_t>((sum + radius) / count);
            sum += at(x + radius + 1) - at(x - radius);
        }
    }
}

void Plane::BlurColumns(int radius) {
    const Plane source = *this;
    const int count = 2 * radius + 1;
    const auto row = [&](int y) { return source.Row(std::clamp(y, 0, height_ - 1)); };
    std::vector<int> sums(width_, 0);
    for (int y = -radius; y <= radius; ++y)
        for (int x = 0; x < width_; ++x)
            sums[x] += row(y)[x];
    for (int y = 0; y < height_; ++y) {
        const std::uint8_t *enters = row(y + radius + 1), *leaves = row(y - radius);
        std::uint8_t* target = Row(y);
        for (int x = 0; x < width_; ++x) {
            target[x] = static_cast<std::uint8_t>((sums[x] + radius) / count);
            sums[x] += enters[x] - leaves[x];
        }
    }
}

void Plane::Blur(int radius) {
    if (radius < 1 || IsEmpty())
        return;
    for (int pass = 0; pass < 2; ++pass) {
        BlurRows(radius);
        BlurColumns(radius);
    }
}

}  // namespace velloran::samples
