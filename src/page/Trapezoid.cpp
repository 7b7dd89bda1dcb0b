#include "page/Trapezoid.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/PictureLimits.h"
#include "core/Refusal.h"
#include "core/Rounding.h"
#include "imaging/Perspective.h"
#include "page/FillColor.h"
#include "page/PageLines.h"

namespace velloran {
namespace {

/// Width by height, by the row in PARA_CRT_CROP.
constexpr float kRatios[] = {1.7777778F, 1.3333334F, 1.5F,       1.6666666F, 2.0F,      3.0F, 1.0F,
                             0.7067340F, 0.7037185F, 0.7065217F, 0.6896552F, 0.7727273F};

float RatioOf(std::int32_t crop) {
    const std::size_t row = static_cast<std::uint32_t>(crop) >> 8 & 255;
    return row < std::size(kRatios) ? kRatios[row] : 1.0F;
}

struct Extent {
    int minX, minY, maxX, maxY;
    int Width() const { return maxX - minX; }
    int Height() const { return maxY - minY; }
};

Extent ExtentOf(const TrueCorners& corners) {
    Extent extent{corners[0].x, corners[0].y, corners[0].x, corners[0].y};
    for (const CornerPoint& corner : corners)
        extent = {std::min(extent.minX, corner.x), std::min(extent.minY, corner.y),
                  std::max(extent.maxX, corner.x), std::max(extent.maxY, corner.y)};
    return extent;
}

int Rounded(float value) {
    return RoundHalf(static_cast<double>(value));
}

struct Size {
    int width, height;
};

Size ChooseSize(const Extent& extent, std::int32_t crop, std::int32_t size) {
    const int w = extent.Width(), h = extent.Height();
    const auto given = [](int wish, int measured) { return wish < measured / 4 ? measured : wish; };
    const auto bits = static_cast<std::uint32_t>(size);
    const int gw = given(static_cast<std::int16_t>(bits), w);
    const int gh = given(static_cast<std::int16_t>(bits >> 16), h);
    const float aspect = static_cast<float>(w) / static_cast<float>(h);
    float ratio = RatioOf(crop);
    // The ratio lies as the page does.
    if ((ratio < 1.0F && aspect > 1.0F) || (ratio > 1.0F && aspect < 1.0F))
        ratio = 1.0F / ratio;
    const auto fw = static_cast<float>(w), fh = static_cast<float>(h);
    switch (crop & 255) {
        case kMeasuredByRatio:
            return w > h ? Size{w, Rounded(fw / ratio)} : Size{Rounded(fh * ratio), h};
        case kWidthByRatio:
            return {gw, Rounded(static_cast<float>(gw) / ratio)};
        case kHeightByRatio:
            return {Rounded(static_cast<float>(gh) * ratio), gh};
        case kWidthByAspect:
            return {gw, Rounded(static_cast<float>(gw) / aspect)};
        case kHeightByAspect:
            return {Rounded(static_cast<float>(gh) * aspect), gh};
        case kBothGiven:
            return {gw, gh};
        default:
            return {w, h};
    }
}

bool IsPossible(std::int64_t width, std::int64_t height) {
    return width >= 1 && height >= 1 && width * height <= kMaxPicturePixels;
}

/// In the order of PerspectiveMap over stored rows: left bottom, right bottom, right top, left top,
/// y counted from `bottom` upward.
std::array<MapPoint, 4> StoredQuad(const TrueCorners& corners, int left, int bottom) {
    constexpr std::size_t kOrder[] = {3, 2, 1, 0};
    std::array<MapPoint, 4> quad;
    for (std::size_t i = 0; i < quad.size(); ++i)
        quad[i] = {double(corners[kOrder[i]].x) - left, double(bottom) - corners[kOrder[i]].y};
    return quad;
}

/// An image of the new size in the colour, which then takes what the map fetches.
int Warp(CDibImage& image, const PerspectiveMap& toSource, int width, int height, int nearest,
         std::uint32_t color) {
    if (EnsureGrayOrRgb(image) == 0)
        return 0;
    CDibImage flat;
    if (flat.Create(width, height, image.GetBpp()) == nullptr ||
        (image.GetAlpha() != nullptr && !flat.CreateAlpha()))
        return 0;
    flat.SetGrayPalette();
    FillWithColor(flat, color);
    const ConstPlaneView source = ViewOf(static_cast<const CDibImage&>(image));
    (nearest != 0 ? WarpNearest : WarpCubic)(source, toSource, ViewOf(flat));
    if (image.GetAlpha() != nullptr)
        WarpNearest({image.GetAlpha(), source.width, source.height, 1, source.width}, toSource,
                    {flat.GetAlpha(), width, height, 1, width});
    return image.TakePixels(flat) ? 1 : 0;
}

/// Where the picture's corners must go so that the page lies in a rectangle of its own size.
std::optional<TrueCorners> PlacesOfPicture(const CDibImage& image, const PackedCorners& page) {
    int width = 0, height = 0;
    TrueCorners quad;
    if (correctionOutputSize(width, height, quad, image, page, 0, 0) == 0)
        return std::nullopt;
    std::array<MapPoint, 4> corners;
    for (std::size_t i = 0; i < corners.size(); ++i)
        corners[i] = {double(quad[i].x), double(quad[i].y)};
    const auto toPage = PerspectiveMap::ToQuad(width, height, corners);
    const auto inverse = toPage ? toPage->Inverse() : std::nullopt;
    if (!inverse)
        return std::nullopt;
    const double w = image.GetWidth(), h = image.GetHeight();
    const MapPoint picture[] = {{0, 0}, {w, 0}, {w, h}, {0, h}};
    TrueCorners places;
    for (std::size_t i = 0; i < places.size(); ++i) {
        const MapPoint place = (*inverse)(picture[i]);
        places[i] = {static_cast<std::int16_t>(TruncToInt(place.x)),
                     static_cast<std::int16_t>(TruncToInt(place.y))};
    }
    const Extent extent = ExtentOf(places);
    for (CornerPoint& place : places)
        place = {place.x - extent.minX, place.y - extent.minY};
    return places;
}

}  // namespace

int correctionOutputSize(int& outWidth, int& outHeight, TrueCorners& quad, const CDibImage& image,
                         const PackedCorners& corners, std::int32_t crop, std::int32_t size) {
    if (!image.IsValid() || corners == kNoCorners || corners == kUnknownCorners)
        return 0;
    quad = UnpackCorners(corners, image.GetWidth(), image.GetHeight());
    const Size chosen = ChooseSize(ExtentOf(quad), crop, size);
    outWidth = chosen.width;
    outHeight = chosen.height;
    return 1;
}

int warpToBoundingBox(CDibImage& image, const PackedCorners& corners, int nearest,
                      std::uint32_t color) {
    if (!image.IsValid() || image.IsGhost() || corners == kNoCorners || image.GetWidth() < 2 ||
        image.GetHeight() < 2)
        return 0;
    return RefuseWhenOutOfMemory([&] {
        const TrueCorners quad = UnpackCorners(corners, image.GetWidth(), image.GetHeight());
        const Extent extent = ExtentOf(quad);
        if (!IsPossible(extent.Width(), extent.Height()))
            return 0;
        const auto toTarget = PerspectiveMap::ToQuad(image.GetWidth(), image.GetHeight(),
                                                     StoredQuad(quad, extent.minX, extent.maxY));
        const auto toSource = toTarget ? toTarget->Inverse() : std::nullopt;
        return toSource ? Warp(image, *toSource, extent.Width(), extent.Height(), nearest, color)
                        : 0;
    });
}

int warpToRectangle(CDibImage& image, const PackedCorners& corners, int nearest, std::int32_t crop,
                    std::int32_t size, std::uint32_t color) {
    int width = 0, height = 0;
    TrueCorners quad;
    if (image.IsGhost() ||
        correctionOutputSize(width, height, quad, image, corners, crop, size) == 0)
        return 0;
    return RefuseWhenOutOfMemory([&] {
        if (!IsPossible(width, height))
            return 0;
        const auto toSource =
            PerspectiveMap::ToQuad(width, height, StoredQuad(quad, 0, image.GetHeight()));
        return toSource ? Warp(image, *toSource, width, height, nearest, color) : 0;
    });
}

int findCorners(int directOutput, const CDibImage& image, PackedCorners& corners,
                std::int32_t leftLine, std::int32_t rightLine) {
    PackedCorners found{};
    if (findPageLines(image, kFourCorners, found.data(), leftLine, rightLine) == 0 ||
        std::count(found.begin(), found.end(), 0) > 1)
        return 0;
    if (directOutput != 0) {
        corners = found;
        return 1;
    }
    const std::optional<TrueCorners> places = PlacesOfPicture(image, found);
    if (!places)
        return 0;
    corners = PackCorners(*places, image.GetWidth(), image.GetHeight());
    return 1;
}

}  // namespace velloran
