#include "codecs/GifPalette.h"

#include <algorithm>
#include <array>

#include "core/PaletteSearch.h"

namespace velloran {
namespace {

constexpr std::size_t kMaxColors = 256;

/// Colours of a cell of 8 levels a side.
struct Cell {
    std::int64_t count = 0;
    std::array<std::int64_t, 3> sum{};  // red, green, blue
    std::int64_t squares = 0;
};

/// A run of cells that one entry stands for.
struct Box {
    std::size_t first = 0, last = 0;  // [first, last)
    double error = 0;                 // sum of squared distances from the mean
    int axis = 0;                     // of the largest spread of cell means
    double mean = 0;                  // along the axis
};

constexpr int kCellBits = 5;

std::uint32_t ColorOf(const std::uint8_t* pixel) {
    return static_cast<std::uint32_t>(pixel[2]) << 16 | static_cast<std::uint32_t>(pixel[1]) << 8 |
           pixel[0];
}

PaletteEntry EntryOf(std::uint32_t color) {
    return {static_cast<std::uint8_t>(color), static_cast<std::uint8_t>(color >> 8),
            static_cast<std::uint8_t>(color >> 16), 0};
}

/// All colours in ascending order; empty when there are more than 256.
std::vector<std::uint32_t> FewColors(const CDibImage& image) {
    std::vector<std::uint32_t> colors;
    std::uint32_t last = 0xFFFFFFFF;
    for (int y = 0; y < image.GetHeight(); ++y) {
        const std::uint8_t* pixel = image.GetBits(y);
        for (int x = 0; x < image.GetWidth(); ++x, pixel += 3) {
            const std::uint32_t color = ColorOf(pixel);
            if (color == last)
                continue;
            last = color;
            const auto place = std::lower_bound(colors.begin(), colors.end(), color);
            if (place != colors.end() && *place == color)
                continue;
            if (colors.size() == kMaxColors)
                return {};
            colors.insert(place, color);
        }
    }
    return colors;
}

std::vector<Cell> CountCells(const CDibImage& image) {
    std::vector<Cell> cells(std::size_t{1} << (3 * kCellBits));
    constexpr int kShift = 8 - kCellBits;
    for (int y = 0; y < image.GetHeight(); ++y) {
        const std::uint8_t* pixel = image.GetBits(y);
        for (int x = 0; x < image.GetWidth(); ++x, pixel += 3) {
            const int blue = pixel[0], green = pixel[1], red = pixel[2];
            Cell& cell = cells[static_cast<std::size_t>(((red >> kShift) << (2 * kCellBits)) +
                                                        ((green >> kShift) << kCellBits) +
                                                        (blue >> kShift))];
            ++cell.count;
            cell.sum[0] += red;
            cell.sum[1] += green;
            cell.sum[2] += blue;
            cell.squares += red * red + green * green + blue * blue;
        }
    }
    std::erase_if(cells, [](const Cell& cell) { return cell.count == 0; });
    return cells;
}

double MeanOf(const Cell& cell, int axis) {
    return static_cast<double>(cell.sum[static_cast<std::size_t>(axis)]) /
           static_cast<double>(cell.count);
}

Cell TotalOf(const std::vector<Cell>& cells, std::size_t first, std::size_t last) {
    Cell total;
    for (std::size_t i = first; i < last; ++i) {
        total.count += cells[i].count;
        total.squares += cells[i].squares;
        for (std::size_t axis = 0; axis < 3; ++axis)
            total.sum[axis] += cells[i].sum[axis];
    }
    return total;
}

Box Measure(const std::vector<Cell>& cells, std::size_t first, std::size_t last) {
    Box box{first, last};
    const Cell total = TotalOf(cells, first, last);
    double widest = -1;
    box.error = static_cast<double>(total.squares);
    for (int axis = 0; axis < 3; ++axis) {
        const double mean = MeanOf(total, axis);
        box.error -= mean * mean * static_cast<double>(total.count);
        double spread = 0;
        for (std::size_t i = first; i < last; ++i) {
            const double distance = MeanOf(cells[i], axis) - mean;
            spread += distance * distance * static_cast<double>(cells[i].count);
        }
        if (spread > widest) {
            widest = spread;
            box.axis = axis;
            box.mean = mean;
        }
    }
    return box;
}

/// Cuts the box in two that both hold cells.
std::array<Box, 2> Cut(std::vector<Cell>& cells, const Box& box) {
    const auto begin = cells.begin() + static_cast<std::ptrdiff_t>(box.first);
    const auto end = cells.begin() + static_cast<std::ptrdiff_t>(box.last);
    const auto middle = std::stable_partition(
        begin, end, [&](const Cell& cell) { return MeanOf(cell, box.axis) <= box.mean; });
    auto cut = static_cast<std::size_t>(middle - cells.begin());
    if (cut == box.first || cut == box.last)  // all means alike
        cut = box.first + (box.last - box.first) / 2;
    return {Measure(cells, box.first, cut), Measure(cells, cut, box.last)};
}

PaletteEntry AverageOf(const std::vector<Cell>& cells, const Box& box) {
    const Cell total = TotalOf(cells, box.first, box.last);
    const auto rounded = [&](std::size_t axis) {
        return static_cast<std::uint8_t>((total.sum[axis] + total.count / 2) / total.count);
    };
    return {rounded(2), rounded(1), rounded(0), 0};
}

}  // namespace

std::vector<PaletteEntry> BuildGifPalette(const CDibImage& image) {
    std::vector<PaletteEntry> palette;
    for (const std::uint32_t color : FewColors(image))
        palette.push_back(EntryOf(color));
    if (!palette.empty())
        return palette;

    std::vector<Cell> cells = CountCells(image);
    std::vector<Box> boxes{Measure(cells, 0, cells.size())};
    while (boxes.size() < kMaxColors) {
        Box* worst = nullptr;  // the first one of the largest error
        for (Box& box : boxes)
            if (box.last - box.first > 1 && (worst == nullptr || box.error > worst->error))
                worst = &box;
        if (worst == nullptr)
            break;
        const std::array<Box, 2> halves = Cut(cells, *worst);
        *worst = halves[0];
        boxes.push_back(halves[1]);
    }
    for (const Box& box : boxes)
        palette.push_back(AverageOf(cells, box));
    return palette;
}

NearestEntry::NearestEntry(std::vector<PaletteEntry> palette)
    : palette_(std::move(palette)), recent_(std::size_t{1} << 16) {}

std::uint8_t NearestEntry::Of(std::uint8_t blue, std::uint8_t green, std::uint8_t red) {
    const std::uint32_t color =
        static_cast<std::uint32_t>(red) << 16 | static_cast<std::uint32_t>(green) << 8 | blue;
    constexpr std::uint32_t kSpread = 2654435769u;  // 2^32 divided by the golden ratio
    Remembered& known = recent_[color * kSpread >> 16];
    if (known.color != color)
        known = {color, static_cast<std::uint8_t>(NearestIndex(palette_, {blue, green, red, 0}))};
    return known.index;
}

}  // namespace velloran
