#include "tone/Unshadow.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include "core/DibImage.h"
#include "core/Rounding.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "tone/PagePlanes.h"
#include "tone/PaperBackground.h"
#include "tone/PaperBlocks.h"
#include "tone/PixelMapRows.h"

namespace velloran {
namespace {

constexpr float kFullContrast = 128.0F;  // the largest deviation that samples can have
constexpr double kBlackShare = 0.002;
constexpr int kStrongest = 256;  // from here on no sample is below the paper: all is white

/// The threshold of a block by its mean and its contrast.
std::uint8_t ThresholdOf(const BlockSums& block, float pixels, float weight) {
    const float mean = static_cast<float>(block.sum) / pixels;
    const float meanSquare = static_cast<float>(block.squares) / pixels;
    const float deviation = std::sqrt(std::abs(meanSquare - mean * mean));
    const float level = ((deviation / kFullContrast - 1.0F) * weight + 1.0F) * mean + 0.5F;
    return ClampToByte(TruncToInt(static_cast<double>(level)));
}

void MapByBackground(PaperBackground& background, const PaperTable& table, PlaneView plane) {
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(plane))
    for (int y = 0; y < plane.height; ++y) {
        if (cancel.IsCancelled())
            continue;
        MapPaperRow(table, background.Row(y), plane.width, plane.Row(y).data());
    }
}

}  // namespace

int UnshadowPlane(PlaneView plane, int magnitude) {
    const PaperBlocks blocks = SumPaperBlocks(plane);
    if (blocks.sums.empty())
        return 0;
    magnitude = std::clamp(magnitude, 0, kStrongest);
    const auto pixels = static_cast<float>(blocks.PixelsPerBlock());
    const float weight = static_cast<float>(magnitude) * 0.001F;
    std::vector<std::uint8_t> thresholds;
    thresholds.reserve(blocks.sums.size());
    for (const BlockSums& block : blocks.sums)
        thresholds.push_back(ThresholdOf(block, pixels, weight));
    const auto table = std::make_unique<PaperTable>();
    MakePaperTable(PaperBlackLevel(plane, blocks, kBlackShare), magnitude, *table);
    PaperBackground background(std::move(thresholds), blocks.columns, blocks.rows,
                               std::clamp(blocks.side - 4, 4, 6), plane.width, plane.height);
    MapByBackground(background, *table, plane);
    return 1;
}

int Unshadow(CDibImage& image, int strength) {
    if (strength == 0 || PreparePagePlanes(image, /*keepColor=*/strength < 0) == 0)
        return 0;
    // Limited before the sign goes: the lowest int has no positive twin.
    const int magnitude = std::abs(std::clamp(strength, -kStrongest, kStrongest));
    return WorkOnPagePlanes(image,
                            [&](PlaneView plane) { return UnshadowPlane(plane, magnitude); });
}

}  // namespace velloran
