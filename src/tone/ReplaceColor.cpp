#include "tone/ReplaceColor.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "core/DibImage.h"
#include "core/Rounding.h"
#include "tone/ColorMemo.h"
#include "tone/ColorSpaces.h"
#include "tone/PixelMapRows.h"

namespace velloran {
namespace {

struct Color {
    std::uint8_t blue, green, red;
    explicit Color(std::uint32_t color)
        : blue(static_cast<std::uint8_t>(color >> 16)),
          green(static_cast<std::uint8_t>(color >> 8)),
          red(static_cast<std::uint8_t>(color)) {}
};

struct Replacement {
    Color from, to;
    int threshold;
    int fromHue;
    Lab fromLab;

    Replacement(std::uint32_t fromColor, std::uint32_t toColor, int limit)
        : from(fromColor),
          to(toColor),
          threshold(limit),
          fromHue(RgbToHls(from.red, from.green, from.blue).hue),
          fromLab(RgbToLab(from.red, from.green, from.blue)) {}
};

/// Types 2 to 8.
bool Matches(int type, const Replacement& r, int blue, int green, int red) {
    const int limit = r.threshold;
    switch (type) {
        case 2:
            return std::abs(RgbToHls(red, green, blue).hue - r.fromHue) <= limit;
        case 3:
            return std::abs(green - red) > limit;
        case 4:
            return std::abs(blue - red) > limit;
        case 5:
            return std::abs(blue - green) > limit;
        case 6:
            return red * 100 > (red + green + blue) * limit;
        case 7:
            return green * 100 > (red + green + blue) * limit;
        default:
            return blue * 100 > (red + green + blue) * limit;
    }
}

void PutTarget(const Replacement& r, std::uint8_t* pixel) {
    pixel[0] = r.to.blue;
    pixel[1] = r.to.green;
    pixel[2] = r.to.red;
}

/// A channel at the soft edge: what is not the sample's share stays, and the target takes it.
std::uint8_t SoftChannel(int value, int sample, int target, float t) {
    const float rest = (static_cast<float>(value) - static_cast<float>(sample) * t) / (1 - t);
    const int unmixed = ClampToByte(TruncToInt(static_cast<double>(rest)));
    const int kept = TruncToInt(static_cast<double>(static_cast<float>(unmixed) * (1 - t) + 0.5F));
    const int taken = TruncToInt(static_cast<double>(static_cast<float>(target) * t));
    return ClampToByte(kept + taken);
}

struct FloatLab {
    float l, a, b;
};

FloatLab LabOf(const std::uint8_t* pixel) {
    const Lab lab = RgbToLab(pixel[2], pixel[1], pixel[0]);
    return {static_cast<float>(lab.l), static_cast<float>(lab.a), static_cast<float>(lab.b)};
}

void ReplaceNear(const Replacement& r, const FloatLab& lab, std::uint8_t* pixel) {
    const double dl = static_cast<double>(lab.l) - r.fromLab.l;
    const double da = static_cast<double>(lab.a) - r.fromLab.a;
    const double db = static_cast<double>(lab.b) - r.fromLab.b;
    const double distance = std::sqrt(dl * dl + da * da + db * db);
    const double limit = r.threshold;
    if (distance < limit) {
        PutTarget(r, pixel);
    } else if (distance < limit + 1) {
        auto share = static_cast<float>((limit + 1 - distance) / (limit + 1 - limit));
        if (share == 1)  // the sample could not be taken out of the whole
            share = 0.999999F;
        pixel[0] = SoftChannel(pixel[0], r.from.blue, r.to.blue, share);
        pixel[1] = SoftChannel(pixel[1], r.from.green, r.to.green, share);
        pixel[2] = SoftChannel(pixel[2], r.from.red, r.to.red, share);
    }
}

void ReplaceIn(int type, const Replacement& r, std::uint8_t* pixel) {
    if (type == 1)
        ReplaceNear(r, LabOf(pixel), pixel);
    else if (Matches(type, r, pixel[0], pixel[1], pixel[2]))
        PutTarget(r, pixel);
}

void ReplaceInPixels(int type, const Replacement& r, PlaneView pixels) {
    MapColors(pixels, [&](const std::uint8_t* pixel) {
        std::uint8_t changed[3] = {pixel[0], pixel[1], pixel[2]};
        ReplaceIn(type, r, changed);
        return changed[0] | std::uint32_t{changed[1]} << 8 | std::uint32_t{changed[2]} << 16;
    });
}

void ReplaceInPalette(int type, const Replacement& r, CDibImage& image) {
    for (int i = 0; i < image.GetPaletteCount(); ++i) {
        PaletteEntry& entry = image.GetPalette()[i];
        std::uint8_t pixel[3] = {entry.blue, entry.green, entry.red};
        ReplaceIn(type, r, pixel);
        entry = {pixel[0], pixel[1], pixel[2], entry.reserved};
    }
}

PixelMap GrayMap(const Replacement& r) {
    PixelMap map;
    for (int v = 0; v < 256; ++v)
        map[static_cast<std::size_t>(v)] =
            std::abs(v - r.from.red) > r.threshold ? static_cast<std::uint8_t>(v) : r.to.red;
    return map;
}

}  // namespace

int ReplaceColor(int type, CDibImage& image, std::uint32_t from, std::uint32_t to, int threshold) {
    if (!image.IsValid() || type < 1 || type > 8)
        return 0;
    threshold = std::clamp(threshold, 0, 255);
    if (threshold == 0 && type >= 3)
        return 0;
    const Replacement replacement(from, to, threshold);
    if (image.IsGrayScale()) {
        if (type == 1)
            MapRows(GrayMap(replacement), ViewOf(image));
    } else if (image.GetPalette() != nullptr) {
        ReplaceInPalette(type, replacement, image);
    } else {
        ReplaceInPixels(type, replacement, ViewOf(image));
    }
    return 1;
}

}  // namespace velloran
