#include "dewarping/TraceImage.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <new>

#include "core/Rounding.h"
#include "core/Threads.h"
#include "imaging/BoxMean.h"
#include "imaging/MinMax.h"
#include "imaging/Resize.h"
#include "reduce/ComponentList.h"

namespace velloran::dewarping {
namespace {

constexpr int kSideOf[] = {1600, 1000, 700};
constexpr int kCell = 4;          // pixels a side of which the paper's level is one
constexpr int kPaperReach = 13;   // cells a side in which paper is seen between letters
constexpr int kPaperSmooth = 6;   // cells
constexpr double kEvenLight = 8;  // of sigma

/// The lightest pixel of each cell.
CDibImage lightestOfCells(ConstPlaneView page) {
    const int width = (page.width + kCell - 1) / kCell, height = (page.height + kCell - 1) / kCell;
    CDibImage cells;
    if (cells.Create(width, height, 8) == nullptr)
        throw std::bad_alloc();
    cells.Clear(0);
    const PlaneView out = TopDownViewOf(cells);
#pragma omp parallel for schedule(static) if (IsWorthThreads(page))
    for (int cell = 0; cell < height; ++cell) {
        std::uint8_t* to = out.Row(cell).data();
        for (int y = cell * kCell; y < std::min(page.height, (cell + 1) * kCell); ++y) {
            const std::uint8_t* row = page.Row(y).data();
            for (int x = 0; x < page.width; ++x)
                to[x / kCell] = std::max(to[x / kCell], row[x]);
        }
    }
    return cells;
}

/// The level of the paper around each pixel, as a plane of cells.
FloatPlane paperOf(ConstPlaneView page) {
    const CDibImage cells = lightestOfCells(page);
    CDibImage lightest, closed;
    for (CDibImage* image : {&lightest, &closed})
        if (image->Create(cells.GetWidth(), cells.GetHeight(), 8) == nullptr)
            throw std::bad_alloc();
    const Window window{kPaperReach, kPaperReach, kPaperReach / 2, kPaperReach / 2};
    MaxFilter(TopDownViewOf(cells), window, TopDownViewOf(lightest));
    // What the maximum carried beyond an edge of shade goes back.
    MinFilter(TopDownViewOf(static_cast<const CDibImage&>(lightest)), window,
              TopDownViewOf(closed));
    FloatPlane level(cells.GetWidth(), cells.GetHeight());
    const ConstPlaneView from = TopDownViewOf(static_cast<const CDibImage&>(closed));
    for (int y = 0; y < from.height; ++y)
        std::copy(from.Row(y).begin(), from.Row(y).end(), level.View().Row(y).begin());
    BoxMean(level.View(), kPaperSmooth, level.View());
    return level;
}

/// ink = paper - level, where that is more than `sigma` 255ths of the paper.
void subtractFromPaper(ConstPlaneView page, double sigma, InkPage& out) {
    const FloatPlane cells = paperOf(page);
    FloatPlane paper(page.width, page.height);
    ResizeLinear(cells.View(), paper.View());
    const float least = static_cast<float>(sigma / 255);
#pragma omp parallel for schedule(static) if (IsWorthThreads(page))
    for (int y = 0; y < page.height; ++y) {
        const auto level = page.Row(y);
        const auto around = paper.View().Row(y);
        std::uint8_t* ink = out.row(y);
        for (std::size_t x = 0; x < level.size(); ++x) {
            const float darker = around[x] - static_cast<float>(level[x]);
            ink[x] = darker > least * around[x] && darker >= 1
                         ? static_cast<std::uint8_t>(std::min(darker, 255.0F))
                         : std::uint8_t{0};
        }
    }
}

/// The level that a share of the ink stays below; 0 without ink.
int levelOfShare(const InkPage& page, double share) {
    std::array<std::int64_t, 256> counts{};
    for (const std::uint8_t ink : page.ink)
        ++counts[ink];
    counts[0] = 0;
    std::int64_t all = 0, sum = 0;
    for (const std::int64_t count : counts)
        all += count;
    for (int level = 1; level < 256; ++level) {
        sum += counts[static_cast<std::size_t>(level)];
        if (static_cast<double>(sum) >= share * static_cast<double>(all))
            return all == 0 ? 0 : level;
    }
    return 0;
}

/// Drops what is faint beside the page's ink and brings that ink to 255.
void keepStrongInk(double sigma, InkPage& page) {
    constexpr double kUsualInk = 0.8, kFaintInEvenLight = 0.3, kFaintInUnevenLight = 0.15;
    const int usual = levelOfShare(page, kUsualInk);
    if (usual == 0)
        return;
    const double faint = usual * (sigma >= kEvenLight ? kFaintInEvenLight : kFaintInUnevenLight);
    std::array<std::uint8_t, 256> table;
    for (int level = 0; level < 256; ++level)
        table[static_cast<std::size_t>(level)] =
            level < faint ? std::uint8_t{0} : ClampToByte(level * 255 / usual);
#pragma omp parallel for schedule( \
    static) if (IsWorthThreads(std::int64_t{page.width} * page.height))
    for (int y = 0; y < page.height; ++y)
        for (int x = 0; x < page.width; ++x)
            page.row(y)[x] = table[page.row(y)[x]];
}

int heightOf(const Component& c) {
    return c.maxY - c.minY + 1;
}
int widthOf(const Component& c) {
    return c.maxX - c.minX + 1;
}

/// The height of the components that hold the middle of all ink.
double letterHeightOf(const std::vector<Component>& components, int pageHeight) {
    constexpr int kLeastHeight = 3, kLeastPixels = 5;
    std::vector<std::int64_t> pixels(static_cast<std::size_t>(pageHeight) + 1);
    std::int64_t all = 0;
    for (const Component& c : components) {
        const int height = heightOf(c), width = widthOf(c);
        if (height < kLeastHeight || c.pixels < kLeastPixels || height > pageHeight / 12 ||
            width > 12 * height)
            continue;
        pixels[static_cast<std::size_t>(height)] += c.pixels;
        all += c.pixels;
    }
    std::int64_t sum = 0;
    for (std::size_t height = 0; height < pixels.size(); ++height) {
        sum += pixels[height];
        if (all > 0 && 2 * sum >= all)
            return static_cast<double>(height);
    }
    return 0;
}

bool isText(const Component& c, double letterHeight) {
    const double height = heightOf(c), width = widthOf(c);
    const bool isPicture = height > 3.2 * letterHeight || width > 30 * letterHeight;
    const bool isRule =
        width > 5 * letterHeight && height < 0.6 * letterHeight && c.pixels > 0.5 * width * height;
    const bool isStroke = height > 2.4 * letterHeight && width < 0.35 * letterHeight;
    const bool isSpeck = std::max(height, width) < 0.25 * letterHeight;
    return !isPicture && !isRule && !isStroke && !isSpeck;
}

void erase(const ComponentList& list, const Component& component, InkPage& page) {
    const Run* run = list.RunsOf(component);
    for (int i = 0; i < component.runs; ++i, ++run)
        std::fill(page.row(run->y) + run->x1, page.row(run->y) + run->x2 + 1, std::uint8_t{0});
}

}  // namespace

CEBookPage::CEBookPage(const CBaseImage& page) {
    if (!Copy(page))
        throw std::bad_alloc();
}

bool CEBookPage::cropTo(int left, int top, int right, int bottom) {
    if (left == 0 && top == 0 && right == GetWidth() && bottom == GetHeight())
        return true;
    return CropInPlace(left, top, GetWidth() - right, GetHeight() - bottom);
}

CDibImage prepareTraceImage(const CDibImage& gray, CopySize size, CopyPlace& place) {
    const int width = gray.GetWidth(), height = gray.GetHeight();
    const double factor =
        std::max(1.0, std::max(width, height) / double(kSideOf[static_cast<int>(size)]));
    CDibImage copy;
    if (copy.Create(std::max(1, RoundHalf(width / factor)), std::max(1, RoundHalf(height / factor)),
                    8) == nullptr)
        throw std::bad_alloc();
    copy.SetGrayPalette();
    ResizeArea(TopDownViewOf(gray), TopDownViewOf(copy));
    // Centres of pixels are at whole numbers in both.
    place.scale = {double(width) / copy.GetWidth(), double(height) / copy.GetHeight()};
    place.offset = {(place.scale.x - 1) / 2, (place.scale.y - 1) / 2};
    return copy;
}

InkPage findInk(ConstPlaneView page, const InkRequest& request) {
    InkPage ink;
    ink.width = page.width;
    ink.height = page.height;
    ink.ink.resize(static_cast<std::size_t>(page.width) * static_cast<std::size_t>(page.height));
    subtractFromPaper(page, request.sigma, ink);
    keepStrongInk(request.sigma, ink);
    std::vector<std::uint8_t> light(ink.ink.size());
    std::transform(ink.ink.begin(), ink.ink.end(), light.begin(), [](std::uint8_t level) {
        return level == 0 ? std::uint8_t{255} : std::uint8_t{0};
    });
    const ComponentList list({light.data(), page.width, page.height, 1, page.width});
    ink.letterHeight = letterHeightOf(list.Components(), page.height);
    if (ink.letterHeight > 0 && !request.clean)
        for (const Component& component : list.Components())
            if (!component.IsEmpty() && !isText(component, ink.letterHeight))
                erase(list, component, ink);
    return ink;
}

}  // namespace velloran::dewarping
