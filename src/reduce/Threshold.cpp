#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "core/GrayDepth.h"
#include "core/Refusal.h"
#include "core/Rounding.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "imaging/CountLevels.h"
#include "reduce/ApplyPalette.h"
#include "reduce/BilevelRows.h"
#include "reduce/Binarize.h"

namespace velloran {
namespace {

using LevelMap = std::array<std::uint8_t, 256>;

// The window of the list entry "Wolf" keeps ink below the first and paper above the second.
constexpr int kWolfBlack = 50, kWolfWhite = 254;

/// 8 bits with the grey ramp; an 8-bit image counts as grey whatever its palette holds.
int MakeGray(CDibImage& image) {
    if (!image.IsValid())
        return 0;
    if (image.GetBpp() != 8)
        return ConvertToGray(image);
    image.SetGrayPalette();
    return 1;
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

int OtsuOf(const LevelCounts& histogram) {
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

/// Thresholds of the whole blocks of a page, each mixed with that of the page.
class BlockGrid {
 public:
    /// Throws std::bad_alloc.
    BlockGrid(ConstPlaneView plane, int block, float share)
        : block_(block),
          columns_(plane.width / block),
          rows_(plane.height / block),
          ofPage_(OtsuOf(CountLevels(plane))),
          value_(static_cast<std::size_t>(columns_) * static_cast<std::size_t>(rows_)) {
        const CancelToken cancel = CurrentCancel();
        for (int row = 0; row < rows_ && !cancel.IsCancelled(); ++row)
            for (int column = 0; column < columns_; ++column) {
                const int own =
                    OtsuOf(CountLevels(plane.Crop(column * block, row * block, block, block)));
                value_[At(column, row)] = ClampToByte(TruncToInt(
                    (1 - share) * static_cast<float>(own) + share * static_cast<float>(ofPage_)));
            }
    }

    bool IsEmpty() const { return value_.empty(); }
    int OfPage() const { return ofPage_; }

    /// 255 above the threshold of a sample's block, else 0; what lies behind the last whole block
    /// counts to it.
    void Split(PlaneView plane) const {
        const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(plane))
        for (int y = 0; y < plane.height; ++y) {
            if (cancel.IsCancelled())
                continue;
            const std::uint8_t* line = &value_[At(0, std::min(y / block_, rows_ - 1))];
            std::uint8_t* sample = plane.Row(y).data();
            for (int x = 0; x < plane.width; ++x) {
                // The value steps on at the last column of a block, not behind it.
                const int column = std::min((x + 1) / block_, columns_ - 1);
                sample[x] = sample[x] > line[column] ? 255 : 0;
            }
        }
    }

 private:
    std::size_t At(int column, int row) const {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_) +
               static_cast<std::size_t>(column);
    }

    int block_, columns_, rows_, ofPage_;
    std::vector<std::uint8_t> value_;
};

int PaletteMidpoint(const Palette& palette) {
    int sum = 0;
    for (std::size_t i = 0; i < 2; ++i)
        sum += palette[i].blue + palette[i].green + palette[i].red;
    const int threshold = sum / 6;
    return threshold >= 255 ? threshold : threshold + 1;
}

int ThresholdByMethod(CDibImage& image, const DecreaseBppRequest& request) {
    switch (request.thresholdMethod) {
        case 2:
            return WolfThreshold(image, request.windowSize, request.windowSize, kWolfBlack,
                                 kWolfWhite, /*keepDepth=*/true);
        case 3:
            return BlockThreshold(image, /*keepDepth=*/true, request.windowSize, request.balance);
        default:
            SplitAt(image, OtsuThreshold(image));
            return 1;
    }
}

}  // namespace

int Threshold(CDibImage& image, const Palette* palette, const DecreaseBppRequest& request) {
    if (!image.IsValid() || (palette != nullptr && palette->empty()))
        return 0;
    if (MakeGray(image) == 0)
        return 0;
    if (palette == nullptr)
        return ThresholdByMethod(image, request);
    if (palette->size() == 2) {
        SplitAt(image, PaletteMidpoint(*palette));
        return 1;
    }
    LevelMap map = NearestLevels(*palette);
    for (std::uint8_t& entry : map)
        entry = (*palette)[entry].blue;
    MapLevels(image, map);
    return 1;
}

int OtsuThreshold(const CDibImage& gray) {
    return OtsuOf(CountLevels(ViewOf(gray)));
}

int BlockThreshold(CDibImage& image, bool keepDepth, int blockSize, float balance) {
    if (ConvertToGray(image) == 0)
        return 0;
    return RefuseWhenOutOfMemory([&] {
        const PlaneView plane = TopDownViewOf(image);
        const BlockGrid grid(plane, std::max(blockSize, 8), std::clamp(balance, 0.0F, 1.0F));
        if (grid.IsEmpty())
            SplitAt(image, grid.OfPage());
        else
            grid.Split(plane);
        return keepDepth ? 1 : PackBilevel(image);
    });
}

int PackBilevel(CDibImage& image) {
    if (image.GetBpp() != 8)
        return 0;
    CDibImage bilevel;
    if (bilevel.Create(image.GetWidth(), image.GetHeight(), 1) == nullptr)
        return 0;
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
    return image.TakePixels(bilevel) ? 1 : 0;
}

}  // namespace velloran
