#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "core/DibImage.h"
#include "core/IndexRows.h"
#include "core/Refusal.h"
#include "core/Rounding.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "imaging/Planes.h"
#include "tone/Channels.h"
#include "tone/ColorMemo.h"
#include "tone/ColorSpaces.h"
#include "tone/PixelMapRows.h"

namespace velloran {
namespace {

enum MixMode : int {
    kRedOnly = 1,
    kGreenOnly,
    kBlueOnly,
    kRedBlue,
    kRedGreen,
    kGreenBlue,
    kHue,
    kSaturation,
    kLightness,
    kContrast,
    kLuminance,
    kMean,
    kSepia,
};

/// One mix of the channels of a pixel, for the modes that whole rows do not do faster.
int MixOf(int mode, int blue, int green, int red) {
    switch (mode) {
        case kRedOnly:
            return red;
        case kGreenOnly:
            return green;
        case kBlueOnly:
            return blue;
        case kRedBlue:
            return (blue + 1 + red) >> 1;
        case kRedGreen:
            return (green + 1 + red) >> 1;
        case kGreenBlue:
            return (blue + 1 + green) >> 1;
        case kHue:
            return RgbToHls(red, green, blue).hue;
        case kSaturation:
            return RgbToHls(red, green, blue).saturation;
        case kLightness:
            return RgbToHls(red, green, blue).lightness;
        case kLuminance:
            return std::min(RoundHalf(0.2126 * red + 0.7152 * green + 0.0722 * blue), 255);
        default:
            return ((red + green + blue) * 2 + 3) / 6;
    }
}

template <int kMode>
void MixRow(const std::uint8_t* pixel, int width, std::uint8_t* gray) {
    for (int x = 0; x < width; ++x, pixel += 3)
        gray[x] = static_cast<std::uint8_t>(MixOf(kMode, pixel[0], pixel[1], pixel[2]));
}

using RowMixer = void (*)(const std::uint8_t*, int, std::uint8_t*);
constexpr std::array<RowMixer, 6> kRowMixers = {MixRow<kRedOnly>,  MixRow<kGreenOnly>,
                                                MixRow<kBlueOnly>, MixRow<kRedBlue>,
                                                MixRow<kRedGreen>, MixRow<kGreenBlue>};

/// The mixes that turn a pixel into another colour space.
void MixRemembered(ConstPlaneView pixels, int mode, PlaneView gray) {
#pragma omp parallel if (IsWorthThreads(gray))
    {
        ColorMemo memo;
#pragma omp for schedule(static)
        for (int y = 0; y < gray.height; ++y) {
            const std::uint8_t* pixel = pixels.Row(y).data();
            std::uint8_t* out = gray.Row(y).data();
            for (int x = 0; x < gray.width; ++x, pixel += 3)
                out[x] = static_cast<std::uint8_t>(memo(pixel, [&] {
                    return static_cast<std::uint32_t>(MixOf(mode, pixel[0], pixel[1], pixel[2]));
                }));
        }
    }
}

void MixPixels(ConstPlaneView pixels, int mode, PlaneView gray) {
    if (mode == kLuminance) {
        WeightedGray(pixels, {0.0722F, 0.7152F, 0.2126F}, gray);
        return;
    }
    if (mode == kMean) {
        WeightedGray(pixels, {0.33333F, 0.33334F, 0.33333F}, gray);
        return;
    }
    if (mode == kHue || mode == kSaturation || mode == kLightness) {
        MixRemembered(pixels, mode, gray);
        return;
    }
    const RowMixer mixer = kRowMixers[static_cast<std::size_t>(mode - 1)];
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(gray))
    for (int y = 0; y < gray.height; ++y) {
        if (cancel.IsCancelled())
            continue;
        mixer(pixels.Row(y).data(), gray.width, gray.Row(y).data());
    }
}

void MixPalette(const CDibImage& image, int mode, CDibImage& gray) {
    std::array<std::uint8_t, 256> table{};
    for (int i = 0; i < image.GetPaletteCount(); ++i) {
        const PaletteEntry& entry = image.GetPalette()[i];
        table[static_cast<std::size_t>(i)] =
            static_cast<std::uint8_t>(MixOf(mode, entry.blue, entry.green, entry.red));
    }
    if (image.GetBpp() == 1) {  // the bits speak for themselves, whatever their colours
        table[0] = 0;
        table[1] = 255;
    }
#pragma omp parallel for schedule(static) if (IsWorthThreads(ViewOf(gray)))
    for (int y = 0; y < image.GetHeight(); ++y) {
        std::uint8_t* out = gray.GetBits(y);
        ForEachIndex(image.GetBits(y), image.GetWidth(), image.GetBpp(),
                     [&](int x, int index) { out[x] = table[static_cast<std::size_t>(index)]; });
    }
}

}  // namespace

int CombineChannels(CDibImage& image, int mode) {
    if (!image.IsValid())
        return 0;
    if (mode < 1)
        return 1;
    if (mode > kSepia)
        return 0;
    const bool isBits = image.GetBpp() == 1;  // told as they are, in every mode
    if (mode == kSepia && !isBits)
        return Sepia(image, 1.0, /*toGray=*/true);
    if (image.IsGrayScale())
        return 1;
    if (mode == kContrast && !isBits)
        return ContrastGray(image);
    return RefuseWhenOutOfMemory([&] {
        CDibImage gray;
        if (gray.Create(image.GetWidth(), image.GetHeight(), 8) == nullptr)
            return 0;
        gray.SetGrayPalette();
        const CDibImage& source = image;
        if (source.GetBpp() == 24)
            MixPixels(ViewOf(source), mode, ViewOf(gray));
        else
            MixPalette(source, mode, gray);
        image.Fields().backgroundIndex = -1;
        return image.TakePixels(gray) ? 1 : 0;
    });
}

}  // namespace velloran
