#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <new>

#include "core/StepContext.h"
#include "reduce/PaletteMakers.h"

namespace velloran {
namespace {

constexpr int kSide = 33;  // 5 bits a channel and a border of zeros

enum Axis { kRed = 0, kGreen = 1, kBlue = 2 };

/// Moments of the colours in a cell; after Accumulate, of all cells up to it.
struct Moments {
    std::int64_t weight = 0, red = 0, green = 0, blue = 0;
    double squares = 0;

    Moments& operator+=(const Moments& other) {
        weight += other.weight;
        red += other.red;
        green += other.green;
        blue += other.blue;
        squares += other.squares;
        return *this;
    }
    Moments& operator-=(const Moments& other) {
        weight -= other.weight;
        red -= other.red;
        green -= other.green;
        blue -= other.blue;
        squares -= other.squares;
        return *this;
    }
    /// Square of the sums over the weight, which is not 0.
    double Score() const {
        const auto r = static_cast<double>(red), g = static_cast<double>(green),
                   b = static_cast<double>(blue);
        return (r * r + g * g + b * b) / static_cast<double>(weight);
    }
};

/// Cells low < c <= high on each axis.
struct Box {
    std::array<int, 3> low{0, 0, 0}, high{kSide - 1, kSide - 1, kSide - 1};

    int Volume() const { return (high[0] - low[0]) * (high[1] - low[1]) * (high[2] - low[2]); }
};

class MomentTable {
 public:
    MomentTable() : cells_(std::make_unique<Moments[]>(kSide * kSide * kSide)) {}

    void Fill(const CDibImage& image);
    void Accumulate();
    Moments Of(const Box& box) const;

 private:
    Moments& At(int r, int g, int b) {
        return cells_[static_cast<std::size_t>((r * kSide + g) * kSide + b)];
    }
    const Moments& At(int r, int g, int b) const {
        return cells_[static_cast<std::size_t>((r * kSide + g) * kSide + b)];
    }

    std::unique_ptr<Moments[]> cells_;
};

void MomentTable::Fill(const CDibImage& image) {
    const bool color = image.GetBpp() == 24;
    const CancelToken cancel = CurrentCancel();
    for (int y = 0; y < image.GetHeight() && !cancel.IsCancelled(); ++y) {
        const std::uint8_t* row = image.GetBits(y);
        for (int x = 0; x < image.GetWidth(); ++x) {
            const int blue = color ? row[3 * x] : row[x];
            const int green = color ? row[3 * x + 1] : row[x];
            const int red = color ? row[3 * x + 2] : row[x];
            Moments& cell = At((red >> 3) + 1, (green >> 3) + 1, (blue >> 3) + 1);
            ++cell.weight;
            cell.red += red;
            cell.green += green;
            cell.blue += blue;
            cell.squares += red * red + green * green + blue * blue;
        }
    }
}

void MomentTable::Accumulate() {
    for (int r = 1; r < kSide; ++r) {
        std::array<Moments, kSide> area{};
        for (int g = 1; g < kSide; ++g) {
            Moments line;
            for (int b = 1; b < kSide; ++b) {
                line += At(r, g, b);
                area[static_cast<std::size_t>(b)] += line;
                At(r, g, b) = At(r - 1, g, b);
                At(r, g, b) += area[static_cast<std::size_t>(b)];
            }
        }
    }
}

Moments MomentTable::Of(const Box& box) const {
    Moments sum;
    for (int corner = 0; corner < 8; ++corner) {
        const auto side = [&](std::size_t axis) {
            return (corner >> axis & 1) != 0 ? box.low[axis] : box.high[axis];
        };
        const Moments& part = At(side(kRed), side(kGreen), side(kBlue));
        if (__builtin_popcount(static_cast<unsigned>(corner)) % 2 == 0)
            sum += part;
        else
            sum -= part;
    }
    return sum;
}

double VarianceOf(const MomentTable& table, const Box& box) {
    if (box.Volume() <= 1)
        return 0;
    const Moments moments = table.Of(box);
    return std::fabs(moments.squares - moments.Score());
}

struct Cut {
    double score = 0;
    int position = -1;
};

/// The first position of the highest score along an axis.
Cut BestCut(const MomentTable& table, const Box& box, Axis axis, const Moments& whole) {
    Cut best;
    for (int position = box.low[axis] + 1; position < box.high[axis]; ++position) {
        Box lower = box;
        lower.high[axis] = position;
        const Moments below = table.Of(lower);
        Moments above = whole;
        above -= below;
        if (below.weight == 0 || above.weight == 0)
            continue;
        const double score = below.Score() + above.Score();
        if (score > best.score)
            best = {score, position};
    }
    return best;
}

/// Cuts `box`; what lies above the cut becomes `upper`. False when it cannot be cut.
bool CutBox(const MomentTable& table, Box& box, Box& upper) {
    const Moments whole = table.Of(box);
    const Cut red = BestCut(table, box, kRed, whole);
    const Cut green = BestCut(table, box, kGreen, whole);
    const Cut blue = BestCut(table, box, kBlue, whole);
    Axis axis = kBlue;
    Cut cut = blue;
    if (red.score >= green.score && red.score >= blue.score) {
        axis = kRed;
        cut = red;
    } else if (green.score >= red.score && green.score >= blue.score) {
        axis = kGreen;
        cut = green;
    }
    if (cut.position < 0)
        return false;
    upper = box;
    upper.low[axis] = cut.position;
    box.high[axis] = cut.position;
    return true;
}

/// Boxes by repeated cuts of the one with the highest variance; how many there are.
int CutBoxes(const MomentTable& table, std::array<Box, 256>& boxes, int colors) {
    std::array<double, 256> variance{};
    std::size_t next = 0;
    for (int i = 1; i < colors; ++i) {
        const auto made = static_cast<std::size_t>(i);
        if (CutBox(table, boxes[next], boxes[made])) {
            variance[next] = VarianceOf(table, boxes[next]);
            variance[made] = VarianceOf(table, boxes[made]);
        } else {
            variance[next] = 0;
            --i;
        }
        next = 0;
        for (std::size_t k = 1; k <= static_cast<std::size_t>(i); ++k)
            if (variance[k] > variance[next])
                next = k;
        if (variance[next] <= 0)
            return i + 1;
    }
    return colors;
}

}  // namespace

Palette WuPalette(const CDibImage& image, int colors) {
    if (!image.IsValid() || (image.GetBpp() != 8 && image.GetBpp() != 24) || colors < 1 ||
        colors > 256)
        return {};
    try {
        MomentTable table;
        table.Fill(image);
        if (CurrentCancel().IsCancelled())
            return {};
        table.Accumulate();
        std::array<Box, 256> boxes;
        const int count = CutBoxes(table, boxes, colors);
        Palette palette;
        palette.reserve(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i) {
            const Moments moments = table.Of(boxes[static_cast<std::size_t>(i)]);
            const auto mean = [&](std::int64_t sum) {
                return static_cast<std::uint8_t>(moments.weight == 0 ? 0 : sum / moments.weight);
            };
            palette.push_back({mean(moments.blue), mean(moments.green), mean(moments.red), 0});
        }
        return palette;
    } catch (const std::bad_alloc&) {
        NoteOutOfMemory();
        return {};
    }
}

}  // namespace velloran
