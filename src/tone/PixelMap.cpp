#include "tone/PixelMap.h"

#include "core/DibImage.h"
#include "core/ExactMath.h"
#include "core/Rounding.h"
#include "tone/PixelMapRows.h"

namespace velloran {
namespace {

using LevelTable = std::array<std::int32_t, 256>;

/// A level whose truncated value is read as an unsigned 32-bit number and then limited to 255: a
/// negative number is a very large one and saturates. What 32 bits cannot hold, infinities and NaN
/// (the gamma curve divides by zero at extreme exponents) saturates as well.
std::uint8_t SaturateUnsigned(double value) {
    return value > -1.0 && value < 256.0 ? static_cast<std::uint8_t>(static_cast<int>(value)) : 255;
}

void Compose(const PixelMap& stage, PixelMap& map) {
    for (std::uint8_t& sample : map)
        sample = stage[sample];
}

/// Entries between two known ones (-1 is unknown) on the line that joins them. The last entry must
/// be known. A filled entry never becomes the start of a line.
void FillHoles(LevelTable& table) {
    int before = 0;
    for (int i = 0; i < 256; ++i) {
        if (table[i] != -1) {
            before = i;
            continue;
        }
        int after = i + 1;
        while (table[after] == -1)
            ++after;
        table[i] = (table[after] - table[before]) * (i - before) / (after - before) + table[before];
    }
}

bool IsNeutralCurve(int x1, int y1, int x2, int y2) {
    return x1 == 0 && y1 == 0 && ((x2 == 0 && y2 == 0) || (x2 == 255 && y2 == 255));
}

bool IsPaletteOfBlackAndWhite(const CDibImage& image) {
    return image.GetBpp() == 1 && image.IsBW();
}

void MapPalette(const PixelMap& map, CDibImage& image) {
    PaletteEntry* entries = image.GetPalette();
    for (int i = 0; i < image.GetPaletteCount(); ++i) {
        entries[i].blue = map[entries[i].blue];
        entries[i].green = map[entries[i].green];
        entries[i].red = map[entries[i].red];
    }
}

}  // namespace

PixelMap IdentityPixelMap() {
    PixelMap map{};
    for (int i = 0; i < 256; ++i)
        map[i] = static_cast<std::uint8_t>(i);
    return map;
}

PixelMap Compose(const PixelMap& first, const PixelMap& second) {
    PixelMap both{};
    for (std::size_t i = 0; i < both.size(); ++i)
        both[i] = second[first[i]];
    return both;
}

int MapHighlight(int highlight, int threshold, PixelMap& map) {
    if (highlight == 100)
        return 0;
    const double gain = highlight / 100.0;  // first the quotient, then the product
    PixelMap stage{};
    for (int i = 0; i < 256; ++i)
        stage[i] = i < threshold ? static_cast<std::uint8_t>(i) : SaturateUnsigned(i * gain + 0.5);
    Compose(stage, map);
    return 1;
}

int MapBrightness(int brightness, PixelMap& map) {
    if (brightness == 100)
        return 0;
    // Repeated addition and no product: the rounding of the sum decides some entries.
    const double gain = brightness / 100.0;
    double level = 0.0;
    PixelMap stage{};
    for (std::uint8_t& entry : stage) {
        entry = SaturateUnsigned(level + 0.5);
        level += gain;
    }
    Compose(stage, map);
    return 1;
}

int MapParabola(int div, int offset, PixelMap& map) {
    if (div == 0 || div == 255)
        return 0;
    const std::int64_t divisor = std::int64_t{255} - div;
    PixelMap stage{};
    for (int i = 0; i < 256; ++i)
        stage[i] = ClampToByte(i * i / divisor - offset);
    Compose(stage, map);
    return 1;
}

int MapContrast(int contrast, PixelMap& map) {
    if (contrast == 100)
        return 0;
    PixelMap stage{};
    for (int i = 0; i < 256; ++i)
        stage[i] = ClampToByte(128 + (i - 128) * std::int64_t{contrast} / 100);
    Compose(stage, map);
    return 1;
}

int MapBezierCurve(int x1, int y1, int x2, int y2, PixelMap& map) {
    if (IsNeutralCurve(x1, y1, x2, y2))
        return 0;
    const std::array<std::int32_t, 4> controlX{0, x1, x2, 255}, controlY{0, y1, y2, 255};
    LevelTable x{}, y{}, table{};
    BezierSample(3, controlX.data(), 256, x.data());
    BezierSample(3, controlY.data(), 256, y.data());
    table.fill(-1);
    for (int k = 0; k < 256; ++k)  // in this order: of samples on one x the last one stays
        table[ClampToByte(x[k])] = ClampToByte(y[k]);
    table[0] = 0;
    table[255] = 255;
    FillHoles(table);
    PixelMap stage{};
    for (int i = 0; i < 256; ++i)
        stage[i] = ClampToByte(table[i]);
    Compose(stage, map);
    return 1;
}

int MapGamma(int gamma, PixelMap& map) {
    if (gamma == 100)
        return 0;
    const double exponent = gamma / 100.0;
    const double scale = Pow(255.0, exponent) / 255.0;
    PixelMap stage{};
    for (int i = 0; i < 256; ++i)
        stage[i] = SaturateUnsigned(Pow(i, exponent) / scale + 0.5);
    Compose(stage, map);
    return 1;
}

void BezierSample(int degree, const std::int32_t* controlValues, int sampleCount,
                  std::int32_t* out) {
    if (degree < 0 || degree > kMaxBezierDegree)
        return;
    std::array<double, kMaxBezierDegree + 1> b{};
    double t = 0.0;
    for (int k = 0; k < sampleCount; ++k) {
        for (int j = 0; j <= degree; ++j)
            b[j] = controlValues[j];
        for (int last = degree; last > 0; --last)
            for (int j = 0; j < last; ++j)
                b[j] = (1 - t) * b[j] + t * b[j + 1];
        out[k] = RoundHalf(b[0]);
        t += 1.0 / sampleCount;
    }
}

int ApplyPixelMap(const PixelMap& map, CDibImage& image) {
    if (!image.IsValid())
        return 0;
    if (IsPaletteOfBlackAndWhite(image))
        return 1;
    if (image.GetPaletteCount() > 0 && !image.IsGrayScale())
        MapPalette(map, image);
    else
        MapRows(map, ViewOf(image));
    return 1;
}

}  // namespace velloran
