#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "core/GrayDepth.h"
#include "core/Refusal.h"
#include "core/Rounding.h"
#include "core/Threads.h"
#include "reduce/ApplyPalette.h"
#include "reduce/BilevelRows.h"
#include "reduce/Binarize.h"

namespace velloran {
namespace {

using LevelMap = std::array<std::uint8_t, 256>;
using Histogram = std::array<std::uint32_t, 256>;

// The window of the list entry "Wolf" keeps ink below the first and paper above the second.
constexpr int kWolfBlack = 50, kWolfWhite = 254;

/// 8 bits with the grey ramp; an 8-bit image counts as grey whatever its palette holds.
bool MakeGray(CDibImage& image) {
    if (!image.IsValid())
        return false;
    if (image.GetBpp() == 8)
        image.SetGrayPalette();
    return image.GetBpp() == 8 || ConvertToGray(image) != 0;
}

void MapLevels(CDibImage& image, const LevelMap& map) {
    const PlaneView plane = ViewOf(image);
#pragma omp parallel for schedule(static) if (IsWorthThreads(plane))
    for (int y = 0; y < plane.height; ++y)
        for (std::uint8_t& sample : plane.Row(y))
            sample = map[sample];
}

/// 255 above the threshold, else 0: compared and not looked up, so that it runs in whole vectors.
void SplitAt(CDibImage& image, int threshold) {
    const PlaneView plane = ViewOf(image);
    if (threshold < 0) {
        image.Clear(255);
        return;
    }
    const std::uint8_t last = ClampToByte(threshold);  // bytes, or the vectors would be wider
#pragma omp parallel for schedule(static) if (IsWorthThreads(plane))
    for (int y = 0; y < plane.height; ++y)
        for (std::uint8_t& sample : plane.Row(y))
            sample = sample > last ? 255 : 0;
}

/// Counts a rectangle of a plane. Four tables: one would wait for itself where levels repeat.
Histogram CountLevels(ConstPlaneView plane, int left, int top, int width, int height) {
    std::array<Histogram, 4> part{};
    for (int y = top; y < top + height; ++y) {
        const std::uint8_t* sample = plane.Row(y).data() + left;
        int x = 0;
        for (; x + 4 <= width; x += 4)
            for (std::size_t i = 0; i < 4; ++i)
                ++part[i][sample[static_cast<std::size_t>(x) + i]];
        for (; x < width; ++x)
            ++part[0][sample[x]];
    }
    for (std::size_t level = 0; level < 256; ++level)
        part[0][level] += part[1][level] + part[2][level] + part[3][level];
    return part[0];
}

Histogram CountLevels(ConstPlaneView plane) {
    return CountLevels(plane, 0, 0, plane.width, plane.height);
}

int OtsuOf(const Histogram& histogram) {
    double total = 0, sum = 0;
    for (std::size_t level = 0; level < 256; ++level) {
        total += histogram[level];
        sum += static_cast<double>(level) * histogram[level];
    }
    if (total == 0)
        return -1;
    double below = 0, sumBelow = 0, best = -1;
    int threshold = -1;
    for (int level = 0; level < 256; ++level) {
        const double count = histogram[static_cast<std::size_t>(level)];
        below += count;
        sumBelow += level * count;
        const double above = total - below;
        const double distance = total * sumBelow - below * sum;
        // A split that leaves one side empty is as good as none: so a blank page turns white.
        const bool split = below > 0 && above > 0;
        const double variance = split ? distance * distance / (below * above) : 0;
        if (variance > best) {
            best = variance;
            threshold = level;
        }
    }
    return threshold;
}

int PaletteMidpoint(const Palette& palette) {
    int sum = 0;
    for (std::size_t i = 0; i < 2; ++i)
        sum += palette[i].blue + palette[i].green + palette[i].red;
    const int threshold = sum / 6;
    return threshold >= 255 ? threshold : threshold + 1;
}

bool ThresholdByMethod(CDibImage& image, const DecreaseBppRequest& request) {
    switch (request.thresholdMethod) {
        case 2:
            return WolfThreshold(image, request.windowSize, request.windowSize, kWolfBlack,
                                 kWolfWhite, /*keepDepth=*/true);
        case 3:
            return BlockThreshold(image, /*keepDepth=*/true, request.windowSize, request.balance);
        default:
            SplitAt(image, OtsuThreshold(image));
            return true;
    }
}

}  // namespace

bool Threshold(CDibImage& image, const Palette* palette, const DecreaseBppRequest& request) {
    if (!image.IsValid() || (palette != nullptr && palette->empty()))
        return false;
    if (!MakeGray(image))
        return false;
    if (palette == nullptr)
        return ThresholdByMethod(image, request);
    if (palette->size() == 2) {
        SplitAt(image, PaletteMidpoint(*palette));
        return true;
    }
    LevelMap map = NearestLevels(*palette);
    for (std::uint8_t& entry : map)
        entry = (*palette)[entry].blue;
    MapLevels(image, map);
    return true;
}

int OtsuThreshold(const CDibImage& gray) {
    return OtsuOf(CountLevels(ViewOf(gray)));
}

bool BlockThreshold(CDibImage& image, bool keepDepth, int blockSize, float balance) {
    if (ConvertToGray(image) == 0)
        return false;
    return RefuseWhenOutOfMemory([&] {
               const PlaneView plane = TopDownViewOf(image);
               const int block = std::max(blockSize, 8);
               const float share = std::clamp(balance, 0.0F, 1.0F);
               const int columns = plane.width / block, rows = plane.height / block;
               const int whole = OtsuThreshold(image);
               std::vector<std::uint8_t> value(static_cast<std::size_t>(columns) *
                                               static_cast<std::size_t>(rows));
               for (int row = 0; row < rows; ++row)
                   for (int column = 0; column < columns; ++column) {
                       const int own =
                           OtsuOf(CountLevels(plane, column * block, row * block, block, block));
                       value[static_cast<std::size_t>(row) * columns + column] =
                           ClampToByte(TruncToInt((1 - share) * static_cast<float>(own) +
                                                  share * static_cast<float>(whole)));
                   }
               if (value.empty()) {
                   SplitAt(image, whole);
               } else {
#pragma omp parallel for schedule(static) if (IsWorthThreads(plane))
                   for (int y = 0; y < plane.height; ++y) {
                       const std::uint8_t* line =
                           &value[static_cast<std::size_t>(std::min(y / block, rows - 1)) *
                                  columns];
                       std::uint8_t* sample = plane.Row(y).data();
                       for (int x = 0; x < plane.width; ++x) {
                           // The value steps on at the last column of a block, not behind it.
                           const int column = std::min((x + 1) / block, columns - 1);
                           sample[x] = sample[x] > line[column] ? 255 : 0;
                       }
                   }
               }
               return keepDepth || PackBilevel(image) ? 1 : 0;
           }) != 0;
}

bool PackBilevel(CDibImage& image) {
    if (image.GetBpp() != 8)
        return false;
    CDibImage bilevel;
    if (bilevel.Create(image.GetWidth(), image.GetHeight(), 1) == nullptr)
        return false;
    bilevel.SetGrayPalette();
    const ConstPlaneView plane = ViewOf(static_cast<const CDibImage&>(image));
#pragma omp parallel for schedule(static) if (IsWorthThreads(plane))
    for (int y = 0; y < plane.height; ++y) {
        const std::uint8_t* sample = plane.Row(y).data();
        std::uint8_t* out = bilevel.GetBits(y);
        int x = 0;
        for (; x + 8 <= plane.width; x += 8)
            out[x / 8] = LightOfEight(sample + x);
        if (x == plane.width)
            continue;
        int byte = 0;
        for (int bit = 0; x + bit < plane.width; ++bit)
            byte |= (sample[x + bit] >= 128 ? 128 : 0) >> bit;
        out[x / 8] = static_cast<std::uint8_t>(byte);
    }
    return image.TakePixels(bilevel);
}

}  // namespace velloran
