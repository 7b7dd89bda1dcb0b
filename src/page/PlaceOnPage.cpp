#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>

#include "core/DibImage.h"
#include "core/IndexRows.h"
#include "core/PaletteSearch.h"
#include "core/PictureLimits.h"
#include "core/Refusal.h"
#include "core/Rounding.h"
#include "core/Threads.h"
#include "page/LayoutSides.h"
#include "page/PageLayout.h"
#include "page/PageSizes.h"

namespace velloran {
namespace {

constexpr std::int32_t kCutRule = 2;  // of the rules for content larger than the type area
enum Alignment : std::int32_t { kAsItWas = 0, kAtStart = 1, kAtEnd = 2, kCentred = 3 };

/// One direction of a placement, counted from the left, or from the bottom row.
struct Extent {
    std::int64_t page = 0;    // size of the page
    std::int64_t at = 0;      // where the content begins
    std::int64_t from = 0;    // first column or row of the content that is taken
    std::int64_t length = 0;  // how much of the content is taken
};

struct Placement {
    Extent across, upward;
};

std::int64_t ShareOf(std::int32_t cut, std::int32_t whole, std::int64_t page) {
    return whole < 1 ? 0 : RoundHalf(static_cast<double>(cut) / whole * static_cast<double>(page));
}

/// The page keeps its size: the content goes back to where it was cut from, or to an edge.
Placement OnSamePage(const LayoutRequest& request, int width, int height) {
    const auto percent = [&](std::int64_t size) { return size * request.resizePercent / 100; };
    Placement place{{percent(request.imageWidth), 0, 0, width},
                    {percent(request.imageHeight), 0, 0, height}};
    switch (request.alignH) {
        case kAsItWas:
            place.across.at = percent(request.cutLeft);
            break;
        case kAtEnd:
            place.across.at = place.across.page - width;
            break;
        case kCentred:
            place.across.at = (place.across.page - width) / 2;
            break;
        default:
            break;
    }
    switch (request.alignV) {
        case kAsItWas:
            place.upward.at = percent(request.cutBottom);
            break;
        case kAtStart:
            place.upward.at = place.upward.page - height;
            break;
        case kCentred:
            place.upward.at = (place.upward.page - height) / 2;
            break;
        default:
            break;
    }
    return place;
}

Placement InMargins(const LayoutRequest& request, int width, int height) {
    return {{std::int64_t{width} + request.marginLeft + request.marginRight, request.marginLeft, 0,
             width},
            {std::int64_t{height} + request.marginTop + request.marginBottom, request.marginBottom,
             0, height}};
}

/// Columns from the left.
void PlaceAcross(const LayoutRequest& request, Extent& across) {
    const std::int64_t left = request.marginLeft, right = request.marginRight;
    const std::int64_t inner = across.page - right - left;
    if (across.length > inner && request.bigRule == kCutRule) {
        const std::int64_t over = across.length - inner;
        across.from = request.alignH == kAtEnd ? over : request.alignH == kCentred ? over / 2 : 0;
        across.length = inner;
    }
    switch (request.alignH) {
        case kAtStart:
            across.at = left;
            break;
        case kAtEnd:
            across.at = std::max(left, across.page - right - across.length);
            break;
        case kCentred:
            across.at = std::max(left, left + (inner - across.length) / 2);
            break;
        default:
            across.at = std::max(left, ShareOf(request.cutLeft, request.imageWidth, across.page));
            break;
    }
}

/// Stored rows, from the bottom.
void PlaceUpward(const LayoutRequest& request, Extent& upward) {
    const std::int64_t top = request.marginTop, bottom = request.marginBottom;
    const std::int64_t inner = upward.page - bottom - top;
    if (upward.length > inner && request.bigRule == kCutRule) {
        const std::int64_t over = upward.length - inner;
        upward.from = request.alignV == kAtEnd ? 0 : request.alignV == kCentred ? over / 2 : over;
        upward.length = inner;
    }
    std::int64_t above = top;
    switch (request.alignV) {
        case kAtEnd:
            upward.at = bottom;
            return;
        case kCentred:
            upward.at = std::max(bottom, bottom + (inner - upward.length) / 2);
            return;
        case kAtStart:
            break;
        default:
            above = std::max(top, ShareOf(request.cutTop, request.imageHeight, upward.page));
            break;
    }
    upward.at = std::max(bottom, upward.page - above - upward.length);
}

/// The free side of a page whose other side is given: content in proportion, and the margins.
std::int64_t FreeSide(std::int64_t given, std::int64_t before, std::int64_t behind,
                      std::int64_t size, std::int64_t ofSize, std::int64_t margins) {
    const double content = static_cast<double>(given - before - behind) *
                           static_cast<double>(size) / static_cast<double>(ofSize);
    return TruncToInt(content + static_cast<double>(margins) + 0.5);
}

Placement OnGivenPage(const LayoutRequest& request, int width, int height) {
    const PageSides sides = SidesOfPage(request);
    Placement place{{sides.width, 0, 0, width}, {sides.height, 0, 0, height}};
    const std::int64_t margins[] = {std::int64_t{request.marginLeft} + request.marginRight,
                                    std::int64_t{request.marginTop} + request.marginBottom};
    if (request.pageSize == kGivenWidth)
        place.upward.page = FreeSide(sides.width, request.marginLeft, request.marginRight, height,
                                     width, margins[1]);
    else if (request.pageSize == kGivenHeight)
        place.across.page = FreeSide(sides.height, request.marginTop, request.marginBottom, width,
                                     height, margins[0]);
    PlaceAcross(request, place.across);
    PlaceUpward(request, place.upward);
    return place;
}

bool IsCut(const LayoutRequest& request) {
    return request.cutLeft != 0 || request.cutTop != 0 || request.cutRight != 0 ||
           request.cutBottom != 0;
}

bool HasMargins(const LayoutRequest& request) {
    return request.marginLeft != 0 || request.marginTop != 0 || request.marginRight != 0 ||
           request.marginBottom != 0;
}

/// Nothing where the image is the page already, and for a size that the list does not have.
std::optional<Placement> FindPlace(const LayoutRequest& request, int width, int height) {
    switch (request.pageSize) {
        case kKeepPage:
            return IsCut(request) ? std::optional(OnSamePage(request, width, height))
                                  : std::nullopt;
        case kContentMargins:
            return HasMargins(request) ? std::optional(InMargins(request, width, height))
                                       : std::nullopt;
        default:
            break;
    }
    if (request.pageSize < kGivenWidth || request.pageSize >= kPageSizeCount)
        return std::nullopt;
    return OnGivenPage(request, width, height);
}

/// Within the page, and no more of the content than it has room for.
void Clip(Extent& extent) {
    extent.at = std::max<std::int64_t>(extent.at, 0);
    extent.length = std::clamp<std::int64_t>(extent.page - extent.at, 0,
                                             std::max<std::int64_t>(extent.length, 0));
    if (extent.length == 0)
        extent.from = 0;  // margins that leave nothing would begin beyond the content
}

PaletteEntry EntryOf(std::uint32_t color) {
    return {static_cast<std::uint8_t>(color >> 16), static_cast<std::uint8_t>(color >> 8),
            static_cast<std::uint8_t>(color), 0};
}

/// A whole stored row of the fill colour.
void FillRow(std::uint8_t* row, const CDibImage& page, std::uint32_t color, int index) {
    switch (page.GetBpp()) {
        case 24:
            for (int x = 0; x < page.GetWidth(); ++x) {
                row[3 * x] = static_cast<std::uint8_t>(color >> 16);
                row[3 * x + 1] = static_cast<std::uint8_t>(color >> 8);
                row[3 * x + 2] = static_cast<std::uint8_t>(color);
            }
            break;
        case 8:
            std::memset(row, index, static_cast<std::size_t>(page.GetWidth()));
            break;
        default: {
            const int bits = page.GetBpp(), byte = bits == 1 ? index * 255 : index * 17;
            const std::int64_t bytes = (std::int64_t{page.GetWidth()} * bits + 7) / 8;
            std::memset(row, byte, static_cast<std::size_t>(bytes));
            row[bytes - 1] &= LastByteMask(page.GetWidth(), bits);
            break;
        }
    }
}

/// The content's columns into a row of the page.
void CopyColumns(const std::uint8_t* from, std::uint8_t* to, const Extent& across, int bits) {
    if (bits >= 8) {
        const std::int64_t bytes = bits / 8;
        std::memcpy(to + across.at * bytes, from + across.from * bytes,
                    static_cast<std::size_t>(across.length * bytes));
        return;
    }
    ForEachIndex(from, static_cast<int>(across.from + across.length), bits, [&](int x, int index) {
        if (x >= across.from)
            PutIndex(to, static_cast<int>(x - across.from + across.at), bits, index);
    });
}

void Compose(const CDibImage& image, const Placement& place, std::uint32_t color, CDibImage& page) {
    const int bits = page.GetBpp(), index = NearestIndex(PaletteOf(page), EntryOf(color));
    const Extent &across = place.across, &upward = place.upward;
    std::uint8_t* alpha = page.GetAlpha();
#pragma omp parallel for schedule( \
    static) if (IsWorthThreads(std::int64_t{page.GetWidth()} * page.GetHeight()))
    for (int y = 0; y < page.GetHeight(); ++y) {
        std::uint8_t* row = page.GetBits(y);
        const std::int64_t contentRow = y - upward.at;
        const bool holdsContent = contentRow >= 0 && contentRow < upward.length;
        if (!holdsContent || across.length < page.GetWidth())
            FillRow(row, page, color, index);
        if (!holdsContent)
            continue;
        const int from = static_cast<int>(contentRow + upward.from);
        CopyColumns(image.GetBits(from), row, across, bits);
        if (alpha != nullptr)
            std::memcpy(alpha + std::int64_t{y} * page.GetWidth() + across.at,
                        image.GetAlpha() + std::int64_t{from} * image.GetWidth() + across.from,
                        static_cast<std::size_t>(across.length));
    }
}

bool IsPossible(const Placement& place) {
    const std::int64_t width = place.across.page, height = place.upward.page;
    return width >= 1 && height >= 1 && width <= kMaxPicturePixels && height <= kMaxPicturePixels &&
           width * height <= kMaxPicturePixels;
}

void MarginsToPixels(LayoutRequest& request) {
    for (std::int32_t* margin :
         {&request.marginLeft, &request.marginRight, &request.marginTop, &request.marginBottom})
        *margin = LayoutPixels(request, *margin);
}

}  // namespace

int placeOnPage(CDibImage& image, LayoutRequest& request) {
    if (!image.IsValid() || image.IsGhost())
        return 0;
    MarginsToPixels(request);
    std::optional<Placement> place = FindPlace(request, image.GetWidth(), image.GetHeight());
    if (!place)
        return 1;
    if (!IsPossible(*place))
        return 0;
    Clip(place->across);
    Clip(place->upward);
    return RefuseWhenOutOfMemory([&] {
        CDibImage page;
        if (page.Create(static_cast<int>(place->across.page), static_cast<int>(place->upward.page),
                        image.GetBpp()) == nullptr ||
            (image.GetAlpha() != nullptr && !page.CreateAlpha()))
            return 0;
        std::copy_n(image.GetPalette(), image.GetPaletteCount(), page.GetPalette());
        Compose(image, *place, request.fillColor, page);
        return image.TakePixels(page) ? 1 : 0;
    });
}

}  // namespace velloran
