#include "imageproc/SeedFill.h"

#include <algorithm>
#include <stdexcept>

#include "imageproc/RasterOp.h"

namespace velloran::imageproc {
namespace {

/// Spreads the seeds of a row both ways within the mask. The carry of an addition runs toward the
/// higher bits, which lie to the left.
void spreadAlongRow(std::uint32_t* seed, const std::uint32_t* mask, int words) {
    std::uint32_t carry = 0;
    for (int w = words - 1; w >= 0; --w) {
        const std::uint32_t start = seed[w] | (carry & mask[w] & 1U);
        const std::uint64_t sum = static_cast<std::uint64_t>(mask[w]) + start;
        seed[w] = start | (mask[w] & ~static_cast<std::uint32_t>(sum));
        carry = seed[w] >> 31;
    }
    carry = 0;
    for (int w = 0; w < words; ++w) {
        std::uint32_t filled = seed[w] | ((carry << 31) & mask[w]);
        std::uint32_t open = mask[w];
        for (int reach = 1; reach < 32; reach *= 2) {
            filled |= open & (filled >> reach);
            open &= open >> reach;
        }
        seed[w] = filled;
        carry = filled & 1U;
    }
}

/// Takes in the neighbouring row, within the mask.
void takeIn(std::uint32_t* seed, const std::uint32_t* neighbor, const std::uint32_t* mask,
            int words, Connectivity connectivity) {
    for (int w = 0; w < words; ++w) {
        std::uint32_t in = neighbor[w];
        if (connectivity == Connectivity::k8) {
            in |= neighbor[w] << 1 | neighbor[w] >> 1;
            if (w > 0)
                in |= neighbor[w - 1] << 31;
            if (w + 1 < words)
                in |= neighbor[w + 1] >> 31;
        }
        seed[w] |= in & mask[w];
    }
}

class BinarySweep {
 public:
    BinarySweep(BinaryImage& seed, const BinaryImage& mask, Connectivity connectivity)
        : seed_(seed.data()),
          mask_(mask.data()),
          words_(seed.wordsPerLine()),
          height_(seed.height()),
          connectivity_(connectivity) {}

    void down() {
        for (int y = 0; y < height_; ++y)
            row(y, y - 1);
    }
    void up() {
        for (int y = height_ - 1; y >= 0; --y)
            row(y, y + 1);
    }

 private:
    std::ptrdiff_t at(int y) const { return static_cast<std::ptrdiff_t>(y) * words_; }
    void row(int y, int from) {
        if (from >= 0 && from < height_)
            takeIn(seed_ + at(y), seed_ + at(from), mask_ + at(y), words_, connectivity_);
        spreadAlongRow(seed_ + at(y), mask_ + at(y), words_);
    }

    std::uint32_t* seed_;
    const std::uint32_t* mask_;
    int words_, height_;
    Connectivity connectivity_;
};

/// The same image with the bits behind the last column white, so that nothing spreads over them.
BinaryImage withWhitePadding(const BinaryImage& image) {
    BinaryImage result(image);
    if (image.width() % 32 == 0)
        return result;
    std::uint32_t* words = result.data();
    for (int y = 0; y < image.height(); ++y)
        words[static_cast<std::ptrdiff_t>(y + 1) * image.wordsPerLine() - 1] &=
            image.lastWordMask();
    return result;
}

/// The neighbours that a raster scan has passed: the row before and the sample before.
std::uint8_t highestPassed(const std::uint8_t* row, const std::uint8_t* passed, int x, int step,
                           int width, Connectivity connectivity) {
    std::uint8_t highest = row[x];
    const auto take = [&](const std::uint8_t* line, int at) {
        if (line != nullptr && at >= 0 && at < width && line[at] > highest)
            highest = line[at];
    };
    take(row, x - step);
    take(passed, x);
    if (connectivity == Connectivity::k8) {
        take(passed, x - 1);
        take(passed, x + 1);
    }
    return highest;
}

/// One scan over the plane, forward (step 1) or backward (-1). True when a sample went up.
bool scanGray(PlaneView seed, ConstPlaneView mask, int step, Connectivity connectivity) {
    bool changed = false;
    for (int i = 0; i < seed.height; ++i) {
        const int y = step > 0 ? i : seed.height - 1 - i;
        std::uint8_t* row = seed.Row(y).data();
        const std::uint8_t* limit = mask.Row(y).data();
        const std::uint8_t* passed = i == 0 ? nullptr : seed.Row(y - step).data();
        for (int j = 0; j < seed.width; ++j) {
            const int x = step > 0 ? j : seed.width - 1 - j;
            const std::uint8_t reached =
                std::min(limit[x], highestPassed(row, passed, x, step, seed.width, connectivity));
            if (reached > row[x]) {
                row[x] = reached;
                changed = true;
            }
        }
    }
    return changed;
}

}  // namespace

BinaryImage seedFill(const BinaryImage& seed, const BinaryImage& mask, Connectivity connectivity) {
    if (!(seed.size() == mask.size()))
        throw std::invalid_argument("seedFill: seed and mask have different sizes");
    if (seed.isNull())
        return {};
    const BinaryImage bounds = withWhitePadding(mask);
    BinaryImage filled(seed);
    rasterOp<Intersect>(filled, bounds);
    filled = withWhitePadding(filled);
    for (;;) {
        const BinaryImage before(filled);
        BinarySweep sweep(filled, bounds, connectivity);
        sweep.down();
        sweep.up();
        if (filled == before)
            return filled;
    }
}

void seedFillGrayInPlace(CDibImage& seed, const CDibImage& mask, Connectivity connectivity) {
    if (seed.GetWidth() != mask.GetWidth() || seed.GetHeight() != mask.GetHeight() ||
        seed.GetBpp() != 8 || mask.GetBpp() != 8)
        throw std::invalid_argument("seedFillGrayInPlace: seed and mask have different sizes");
    const PlaneView view = ViewOf(seed);
    const ConstPlaneView limit = ViewOf(mask);
    for (int y = 0; y < view.height; ++y)
        for (int x = 0; x < view.width; ++x)
            view.Row(y)[x] = std::min(view.Row(y)[x], limit.Row(y)[x]);
    bool changed = true;
    while (changed) {
        changed = scanGray(view, limit, 1, connectivity);
        changed = scanGray(view, limit, -1, connectivity) || changed;
    }
}

}  // namespace velloran::imageproc
