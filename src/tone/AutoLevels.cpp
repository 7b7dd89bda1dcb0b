#include "tone/AutoLevels.h"

#include <algorithm>
#include <cstdint>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "tone/AutoLevelsCount.h"
#include "tone/PixelMapRows.h"

namespace velloran {
namespace {

enum class Family { kLevels, kContrast, kBrightness, kBleach };

struct Mode {
    Family family;
    double low, high;  // fractions of the two ends
};

/// Modes 1 to 12.
constexpr Mode kModes[kAutoLevelsModes] = {
    {Family::kLevels, 0.006, 0.006},       {Family::kLevels, 0.001, 0.001},
    {Family::kContrast, 0.006, 0.006},     {Family::kContrast, 0.0001, 0.0001},
    {Family::kContrast, 0.00001, 0.00001}, {Family::kBrightness, 0.005, 0.005},
    {Family::kBrightness, 0.0001, 0.0001}, {Family::kBrightness, 0.00001, 0.00001},
    {Family::kBleach, 0.9, 0.96},          {Family::kBleach, 0.7, 0.9},
    {Family::kBleach, 0.6, 0.8},           {Family::kBleach, 0.5, 0.75},
};

// Where the dark share's levels begin. The two depths differ on purpose.
constexpr int kFirstSummedGray = 5;
constexpr int kFirstSummedColor = 0;

PixelMap ClippedStretch(const Histogram& histogram, const Mode& mode) {
    int low = 0, high = 255;
    ClipPoints(histogram, mode.low, mode.high, low, high);
    PixelMap table{};
    StretchTable(table, low, high);
    return table;
}

/// Each channel by itself, which takes colour casts away.
void StretchChannels(PlaneView pixels, const Mode& mode) {
    const std::array<Histogram, 3> histograms = CountChannels(pixels);
    ChannelMaps maps{};
    for (std::size_t c = 0; c < maps.size(); ++c)
        maps[c] = ClippedStretch(histograms[c], mode);
    MapChannelRows(maps, pixels);
}

void StretchBrightness(PlaneView pixels, const Mode& mode) {
    if (pixels.channels == 1) {
        const PixelMap table = BrightnessTable(CountBytes(pixels), mode.low);
        MapRows(Compose(table, table), pixels);  // twice, on purpose
        return;
    }
    const std::array<Histogram, 4> histograms = CountChannelsAndLuma(pixels);
    const PixelMap luma = BrightnessTable(histograms[3], mode.low);
    ChannelMaps maps{};
    for (std::size_t c = 0; c < maps.size(); ++c)
        maps[c] = Compose(BrightnessTable(histograms[c], mode.low), luma);
    MapChannelRows(maps, pixels);
}

void BleachGray(CDibImage& image, const Mode& mode) {
    const PlaneView pixels = ViewOf(image);
    const BleachPoints points =
        FindBleachPoints(CountBytes(pixels), {mode.low, mode.high}, kFirstSummedGray);
    PixelMap table{};
    StretchTable(table, points.low, points.high);
    PlaneView wholeRows = pixels;  // the padding goes through the table too
    wholeRows.width = static_cast<int>(image.GetEffWidth());
    MapRows(table, wholeRows);
}

/// One table from the middle between the outermost points of the channels: the colour balance
/// stays.
void BleachColor(PlaneView pixels, const Mode& mode) {
    const auto middle = [](int a, int b, int c) {
        return (std::max({a, b, c}) + std::min({a, b, c}) + 1) >> 1;
    };
    BleachPoints points[3];
    const std::array<Histogram, 3> histograms = CountChannels(pixels);
    for (std::size_t c = 0; c < 3; ++c)
        points[c] = FindBleachPoints(histograms[c], {mode.low, mode.high}, kFirstSummedColor);
    PixelMap table{};
    StretchTable(table, middle(points[0].low, points[1].low, points[2].low),
                 middle(points[0].high, points[1].high, points[2].high));
    MapRows(table, pixels);
}

int Bleach(CDibImage& image, const Mode& mode) {
    const std::int64_t width = image.GetWidth(), height = image.GetHeight();
    if (width < 3 || height < 3 || width * height < 10)
        return 0;
    if (image.GetBpp() == 8)
        BleachGray(image, mode);
    else
        BleachColor(ViewOf(image), mode);
    return 1;
}

}  // namespace

int AutoLevels(CDibImage& image, int mode) {
    if (!image.IsValid() || image.GetHeight() < 2 || image.GetWidth() < 2)
        return 0;
    if (EnsureGrayOrRgb(image) == 0 || mode < 1 || mode > kAutoLevelsModes)
        return 0;
    const Mode& row = kModes[mode - 1];
    const PlaneView pixels = ViewOf(image);
    switch (row.family) {
        case Family::kLevels:
            if (pixels.channels == 3) {
                StretchChannels(pixels, row);
                break;
            }
            [[fallthrough]];  // one channel: both families are the same
        case Family::kContrast:
            MapRows(
                ClippedStretch(pixels.channels == 3 ? CountLuma(pixels) : CountBytes(pixels), row),
                pixels);
            break;
        case Family::kBrightness:
            StretchBrightness(pixels, row);
            break;
        case Family::kBleach:
            return Bleach(image, row);
    }
    return 1;
}

}  // namespace velloran
