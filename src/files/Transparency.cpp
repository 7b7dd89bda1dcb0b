#include "files/Transparency.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "core/DibImage.h"
#include "core/GrayDepth.h"

namespace velloran {

namespace {

std::size_t PixelCount(const CDibImage& image) {
    return static_cast<std::size_t>(image.GetWidth()) * static_cast<std::size_t>(image.GetHeight());
}

int IndexAt(const std::uint8_t* row, int x, int bpp) {
    if (bpp == 8)
        return row[x];
    if (bpp == 4)
        return (x & 1) != 0 ? row[x >> 1] & 15 : row[x >> 1] >> 4;
    return row[x >> 3] >> (7 - (x & 7)) & 1;
}

/// The alpha of each palette entry; nothing where all are opaque.
std::optional<std::array<std::uint8_t, 256>> PaletteAlpha(const CDibImage& image) {
    if (image.GetBpp() > 8)
        return std::nullopt;
    std::array<std::uint8_t, 256> alpha;
    alpha.fill(255);
    const int count = std::min(image.GetPaletteCount(), 256);
    if (image.Fields().alphaPaletteEnabled != 0)
        for (int i = 0; i < count; ++i)
            alpha[static_cast<std::size_t>(i)] = image.GetPalette()[i].reserved;
    const int background = image.Fields().backgroundIndex;
    if (background >= 0 && background < count)
        alpha[static_cast<std::size_t>(background)] = 0;
    if (std::all_of(alpha.begin(), alpha.end(), [](std::uint8_t a) { return a == 255; }))
        return std::nullopt;
    return alpha;
}

bool AnyPixelIsTransparent(const CDibImage& image, const std::array<std::uint8_t, 256>& alpha) {
    for (int y = 0; y < image.GetHeight(); ++y)
        for (int x = 0; x < image.GetWidth(); ++x)
            if (alpha[static_cast<std::size_t>(IndexAt(image.GetBits(y), x, image.GetBpp()))] !=
                255)
                return true;
    return false;
}

bool PlaneIsTransparent(const CDibImage& image) {
    const std::uint8_t* plane = image.GetAlpha();
    return plane != nullptr &&
           std::any_of(plane, plane + PixelCount(image), [](std::uint8_t a) { return a != 255; });
}

std::uint8_t Blend(std::uint8_t over, std::uint8_t under, std::uint8_t alpha) {
    return static_cast<std::uint8_t>((over * alpha + under * (255 - alpha) + 127) / 255);
}

}  // namespace

bool HasTransparency(const CDibImage& image) {
    if (!image.IsValid())
        return false;
    if (PlaneIsTransparent(image))
        return true;
    const auto alpha = PaletteAlpha(image);
    return alpha && AnyPixelIsTransparent(image, *alpha);
}

int MoveTransparencyToPlane(CDibImage& image) {
    const auto alpha = PaletteAlpha(image);
    if (!alpha)
        return 1;
    const bool hadPlane = image.GetAlpha() != nullptr;
    if (!hadPlane && !image.CreateAlpha())
        return 0;
    for (int y = 0; y < image.GetHeight(); ++y) {
        std::uint8_t* plane = image.GetAlpha() + static_cast<std::ptrdiff_t>(y) * image.GetWidth();
        for (int x = 0; x < image.GetWidth(); ++x)
            plane[x] = std::min(
                plane[x],
                (*alpha)[static_cast<std::size_t>(IndexAt(image.GetBits(y), x, image.GetBpp()))]);
    }
    image.Fields().backgroundIndex = -1;
    image.Fields().alphaPaletteEnabled = 0;
    return 1;
}

int LayOnColor(CDibImage& image, PaletteEntry color) {
    if (!MoveTransparencyToPlane(image))
        return 0;
    if (image.GetAlpha() == nullptr)
        return 1;
    const bool isGrayColor = color.red == color.green && color.green == color.blue;
    if (image.GetBpp() < 24 && !(image.GetBpp() == 8 && image.IsGrayScale() && isGrayColor) &&
        !ConvertToRgb(image))
        return 0;
    const int channels = image.GetBpp() / 8;
    const std::array<std::uint8_t, 3> under = {color.blue, color.green, color.red};
    for (int y = 0; y < image.GetHeight(); ++y) {
        std::uint8_t* sample = image.GetBits(y);
        const std::uint8_t* plane =
            image.GetAlpha() + static_cast<std::ptrdiff_t>(y) * image.GetWidth();
        for (int x = 0; x < image.GetWidth(); ++x)
            for (int c = 0; c < channels; ++c, ++sample)
                *sample = Blend(*sample, under[static_cast<std::size_t>(c)], plane[x]);
    }
    image.DeleteAlpha();
    return 1;
}

}  // namespace velloran
