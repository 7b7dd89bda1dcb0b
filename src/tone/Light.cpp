#include "tone/Light.h"

#include <cmath>
#include <cstdint>
#include <memory>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/Refusal.h"
#include "core/Rounding.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "filters/SmoothPlane.h"
#include "tone/PixelMapRows.h"

namespace velloran {
namespace {

constexpr float kStep = 0.003921569F;  // 1 / 255
constexpr int kBand = 75;
constexpr double kMaskRadius = 3.0;
constexpr int kLargestUnsmoothed = 3;  // a side that SmoothPlane leaves alone

using MaskTable = std::array<PixelMap, 256>;  // by mask level, then sample

float Overlay(float x, float g) {
    return x < 0.5F ? 2 * g * x : 1 - 2 * (1 - x) * (1 - g);
}

std::uint8_t Blend(float x, float g, float share) {
    const float blended = (1 - share) * x + share * Overlay(x, g);
    return ClampToByte(RoundHalf(static_cast<double>(blended * 255.0F)));
}

void MakeShadowTable(const LightCurve& shadow, float strength, MaskTable& table) {
    for (std::size_t m = 0; m < 256; ++m) {
        const float t = static_cast<float>(m) * kStep;
        const float g = strength > 0 ? 1 - t : t;
        const float share = shadow[m] * std::abs(strength);
        for (std::size_t j = 0; j < 256; ++j)
            table[m][j] = shadow[m] > 0 ? Blend(static_cast<float>(j) * kStep, g, share)
                                        : static_cast<std::uint8_t>(j);
    }
}

PixelMap HighlightTable(const LightCurve& highlight, float strength) {
    PixelMap table;
    for (std::size_t j = 0; j < 256; ++j) {
        const float x = static_cast<float>(j) * kStep;
        table[j] = highlight[j] > 0
                       ? Blend(x, strength > 0 ? 1 - x : x, highlight[j] * std::abs(strength))
                       : static_cast<std::uint8_t>(j);
    }
    return table;
}

void MapByMask(const MaskTable& table, ConstPlaneView mask, PlaneView pixels) {
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(pixels))
    for (int y = 0; y < pixels.height; ++y) {
        if (cancel.IsCancelled())
            continue;
        const std::uint8_t* level = mask.Row(y).data();
        std::uint8_t* sample = pixels.Row(y).data();
        const int count = pixels.width * pixels.channels;
        for (int x = 0; x < count; ++x)
            sample[x] = table[level[x]][sample[x]];
    }
}

bool LightenShadows(CDibImage& image, const LightCurve& shadow, float strength) {
    CDibImage mask(image);
    if (!mask.IsValid())
        return false;
    // A page too small to be smoothed is its own mask.
    const bool isSmoothed =
        image.GetWidth() > kLargestUnsmoothed && image.GetHeight() > kLargestUnsmoothed;
    if (isSmoothed && SmoothPlane(mask, kMaskRadius) == 0)
        return false;
    const auto table = std::make_unique<MaskTable>();
    MakeShadowTable(shadow, strength, *table);
    MapByMask(*table, ViewOf(static_cast<const CDibImage&>(mask)), ViewOf(image));
    return true;
}

}  // namespace

void LightWeights(int limit, LightCurve& shadow, LightCurve& middle, LightCurve& highlight) {
    shadow.fill(0);
    middle.fill(0);
    highlight.fill(0);
    const float t = static_cast<float>(limit);
    for (int i = 0; i < 256; ++i) {
        const auto at = static_cast<std::size_t>(i);
        const float fromBlack = static_cast<float>(i) / t;
        const float fromWhite = static_cast<float>(255 - i) / t;
        if (i < limit)
            shadow[at] = 1 - fromBlack * fromBlack;
        if (i > 255 - limit)
            highlight[at] = 1 - fromWhite * fromWhite;
    }
}

int AdjustLight(CDibImage& image, int low, int high) {
    if ((low == 0 && high == 0) || EnsureGrayOrRgb(image) == 0)
        return 0;
    return RefuseWhenOutOfMemory([&] {
        LightCurve shadow, middle, highlight;
        LightWeights(kBand, shadow, middle, highlight);
        const float lowStrength = 2 * static_cast<float>(low) / 100;
        const float highStrength = -2 * static_cast<float>(high) / 100;
        if (low != 0 && !LightenShadows(image, shadow, lowStrength))
            return 0;
        if (high != 0)
            MapRows(HighlightTable(highlight, highStrength), ViewOf(image));
        return 1;
    });
}

}  // namespace velloran
