#include "page/PageSplit.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/Refusal.h"
#include "core/Rounding.h"
#include "core/Threads.h"
#include "page/FillColor.h"
#include "page/PackedLine.h"

namespace velloran {
namespace {

constexpr int kSmallestSide = 10;

bool IsLargeEnough(const CDibImage& image) {
    return image.IsValid() && image.GetWidth() >= kSmallestSide &&
           image.GetHeight() >= kSmallestSide;
}

/// The columns first <= x <= last of each stored row.
struct RowBounds {
    std::vector<int> first, last;
};

RowBounds BoundsOf(const PageLine& a, const PageLine& b, const CDibImage& image) {
    RowBounds bounds;
    lineTable(bounds.first, a.top, a.bottom, image.GetWidth(), image.GetHeight());
    lineTable(bounds.last, b.top, b.bottom, image.GetWidth(), image.GetHeight());
    return bounds;
}

/// Copies what lies between the bounds to columns that begin `left` earlier; `bytes` a pixel.
void CopyBetween(const std::uint8_t* from, std::uint8_t* to, int first, int last, int left,
                 int toWidth, int bytes) {
    const int skipped = std::max(0, left - first);
    first += skipped;
    const int count = std::min(last - first + 1, toWidth - (first - left));
    if (count > 0)
        std::memcpy(to + std::ptrdiff_t{first - left} * bytes, from + std::ptrdiff_t{first} * bytes,
                    static_cast<std::size_t>(count) * static_cast<std::size_t>(bytes));
}

}  // namespace

int keepBetweenLines(CDibImage& image, std::int32_t lineA, std::int32_t lineB, std::uint32_t fill) {
    if (!IsLargeEnough(image) || image.IsGhost() || lineA == lineB)
        return 0;
    return RefuseWhenOutOfMemory([&] {
        if (EnsureGrayOrRgb(image) == 0)
            return 0;
        const PageLine a = UnpackLine(lineA), b = UnpackLine(lineB);
        const auto [left, right] = std::minmax({a.top, a.bottom, b.top, b.bottom});
        const RowBounds bounds = BoundsOf(a, b, image);
        CDibImage page;
        if (page.Create(right - left + 1, image.GetHeight(), image.GetBpp()) == nullptr ||
            (image.GetAlpha() != nullptr && !page.CreateAlpha()))
            return 0;
        page.SetGrayPalette();
        FillWithColor(page, fill);
        const int width = page.GetWidth(), bytes = page.GetBpp() / 8;
#pragma omp parallel for schedule( \
    static) if (IsWorthThreads(std::int64_t{width} * page.GetHeight()))
        for (int y = 0; y < page.GetHeight(); ++y) {
            const int first = bounds.first[static_cast<std::size_t>(y)];
            const int last = bounds.last[static_cast<std::size_t>(y)];
            CopyBetween(image.GetBits(y), page.GetBits(y), first, last, left, width, bytes);
            if (page.GetAlpha() != nullptr)
                CopyBetween(image.GetAlpha() + std::int64_t{y} * image.GetWidth(),
                            page.GetAlpha() + std::int64_t{y} * width, first, last, left, width, 1);
        }
        return image.TakePixels(page) ? 1 : 0;
    });
}

int maskBetweenLines(const CDibImage& image, CDibImage& mask, std::int32_t lineA,
                     std::int32_t lineB) {
    if (!IsLargeEnough(image))
        return 0;
    return RefuseWhenOutOfMemory([&] {
        if (!mask.IsValid()) {
            if (mask.Create(image.GetWidth(), image.GetHeight(), 8) == nullptr)
                return 0;
            mask.SetGrayPalette();
            mask.Clear(255);
        }
        const PageLine a = UnpackLine(lineA), b = UnpackLine(lineB);
        const int left = std::min(a.top, a.bottom);
        const RowBounds bounds =
            BoundsOf({a.top - left, a.bottom - left}, {b.top - left, b.bottom - left}, mask);
#pragma omp parallel for schedule(static) if (IsWorthThreads(ViewOf(mask)))
        for (int y = 0; y < mask.GetHeight(); ++y) {
            std::uint8_t* row = mask.GetBits(y);
            const int first = bounds.first[static_cast<std::size_t>(y)];
            const int last = bounds.last[static_cast<std::size_t>(y)];
            std::fill_n(row, first, std::uint8_t{0});
            std::fill(row + last + 1, row + mask.GetWidth(), std::uint8_t{0});
        }
        return 1;
    });
}

int shadeOutsideLines(CDibImage& image, std::int32_t lineA, std::int32_t lineB) {
    if (!IsLargeEnough(image))
        return 0;
    return RefuseWhenOutOfMemory([&] {
        if (EnsureGrayOrRgb(image) == 0)
            return 0;
        std::array<std::uint8_t, 256> shade{};
        float level = 0.0F;
        for (std::uint8_t& entry : shade) {
            entry = static_cast<std::uint8_t>(level + 0.5F);
            level += 0.55F;
        }
        const RowBounds bounds = BoundsOf(UnpackLine(lineA), UnpackLine(lineB), image);
        const std::ptrdiff_t bytes = image.GetBpp() / 8, width = image.GetWidth();
#pragma omp parallel for schedule(static) if (IsWorthThreads(ViewOf(image)))
        for (int y = 0; y < image.GetHeight(); ++y) {
            std::uint8_t* row = image.GetBits(y);
            const std::ptrdiff_t first = bounds.first[static_cast<std::size_t>(y)] * bytes;
            const std::ptrdiff_t behind = (bounds.last[static_cast<std::size_t>(y)] + 1) * bytes;
            for (std::ptrdiff_t i = 0; i < width * bytes; ++i)
                if (i < first || i >= behind)
                    row[i] = shade[row[i]];
        }
        return 1;
    });
}

}  // namespace velloran
