#include "tone/BlackWhiteText.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "core/DibImage.h"
#include "core/Rounding.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "tone/AutoLevelsTables.h"
#include "tone/PagePlanes.h"
#include "tone/PaperBackground.h"
#include "tone/PaperBlocks.h"
#include "tone/PixelMapRows.h"

namespace velloran {
namespace {

constexpr double kBlackShare = 0.001, kInkShare = 0.8, kPaperShare = 0.85;
constexpr double kSmoothRadius = 4.0;
constexpr double kLeastContrast = 0.0001;
constexpr double kContrastWeight = 0.25;  // of a block's contrast; more eats thin strokes
constexpr int kFewestPixels = 5;
constexpr int kFirstInk = 10, kEndOfInk = 111, kLastDark = 126;
constexpr int kWhiteFrom = 231;

struct BlockTone {
    int mean;
    double contrast;  // standard deviation about the rounded mean
};

BlockTone ToneOf(const BlockSums& block, double pixels) {
    const int mean = std::min(RoundHalf(block.sum / pixels), 255);
    const double square = static_cast<double>(mean) * mean;
    return {mean, std::sqrt(std::abs(block.squares / pixels - square))};
}

/// Means, lowered where a block holds text: the more, the less its contrast is beside the
/// strongest one, whose own mean the ink has lowered already.
std::vector<std::uint8_t> PaperSamples(const PaperBlocks& blocks) {
    const double pixels = blocks.PixelsPerBlock();
    double strongest = 0;
    for (const BlockSums& block : blocks.sums)
        strongest = std::max(strongest, ToneOf(block, pixels).contrast);
    std::vector<std::uint8_t> samples;
    samples.reserve(blocks.sums.size());
    for (const BlockSums& block : blocks.sums) {
        const BlockTone tone = ToneOf(block, pixels);
        const double share = strongest >= kLeastContrast ? 1 - tone.contrast / strongest : 1;
        samples.push_back(
            ClampToByte(RoundHalf(tone.mean - kContrastWeight * share * tone.contrast)));
    }
    return samples;
}

struct TextCounts {
    Histogram background{}, result{};
};

/// How often each level of the background meets each sample.
using PaperCounts = std::array<std::array<std::uint32_t, 256>, 256>;

/// What the stretch to the paper would give; the plane itself is left as it is.
TextCounts CountStretched(PaperBackground& background, const PaperTable& table,
                          ConstPlaneView plane) {
    std::vector<PaperCounts> perThread(static_cast<std::size_t>(MaxThreads()));
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(plane))
    for (int y = 0; y < plane.height; ++y) {
        if (cancel.IsCancelled())
            continue;
        PaperCounts& counts = perThread[static_cast<std::size_t>(ThreadNumber())];
        const std::uint8_t* paper = background.Row(y);
        const std::uint8_t* sample = plane.Row(y).data();
        for (int x = 0; x < plane.width; ++x)
            ++counts[paper[x]][sample[x]];
    }
    TextCounts total;
    for (const PaperCounts& counts : perThread)
        for (std::size_t level = 0; level < 256; ++level)
            for (std::size_t sample = 0; sample < 256; ++sample) {
                total.background[level] += counts[level][sample];
                total.result[table[level][sample]] += counts[level][sample];
            }
    return total;
}

std::int64_t LimitOf(double count, double share) {
    return std::max(TruncToInt(count * share), kFewestPixels);
}

/// The level that four fifths of the dark background lie at or below; the first level where there
/// is no dark background at all, the end where the share is not met before it.
int InkLevel(const Histogram& background) {
    std::int64_t dark = 0;
    for (int level = kFirstInk; level <= kLastDark; ++level)
        dark += background[static_cast<std::size_t>(level)];
    if (dark == 0)
        return kFirstInk;
    const std::int64_t limit = LimitOf(static_cast<double>(dark), kInkShare);
    std::int64_t sum = 0;
    for (int level = kFirstInk; level < kEndOfInk; ++level) {
        sum += background[static_cast<std::size_t>(level)];
        if (sum >= limit)
            return level;
    }
    return kEndOfInk;
}

int PaperLevel(const Histogram& result, double pixels) {
    const std::int64_t limit = LimitOf(pixels, kPaperShare);
    std::int64_t sum = 0;
    for (int level = 255; level > 0; --level) {
        sum += result[static_cast<std::size_t>(level)];
        if (sum >= limit)
            return level;
    }
    return 0;
}

/// A background level as it looks when the paper is white.
int WhitenedBackground(int background, int paper) {
    return background < paper ? RoundHalf(background * 255.0 / paper) : 255;
}

std::uint8_t FinalTone(int sample, int background, int ink) {
    if (sample >= kWhiteFrom || sample >= background)
        return 255;
    const int range = background - ink;
    const int tone = range == 0 ? 0 : (sample - ink) * 256 / range;
    return tone < kWhiteFrom ? ClampToByte(tone) : 255;
}

void FinishTable(int ink, int paper, PaperTable& table) {
    for (int background = 0; background < 256; ++background) {
        const int whitened = WhitenedBackground(background, paper);
        for (std::uint8_t& sample : table[static_cast<std::size_t>(background)])
            sample = FinalTone(sample, whitened, ink);
    }
}

}  // namespace

int BlackWhitePlane(PlaneView plane) {
    const PaperBlocks blocks = SumPaperBlocks(plane);
    if (blocks.sums.empty())
        return 0;
    const auto table = std::make_unique<PaperTable>();
    MakePaperTable(PaperBlackLevel(plane, blocks, kBlackShare), /*magnitude=*/0, *table);
    PaperBackground background(PaperSamples(blocks), blocks.columns, blocks.rows, kSmoothRadius,
                               plane.width, plane.height);
    const TextCounts counts = CountStretched(background, *table, plane);
    const double pixels = static_cast<double>(plane.width) * plane.height;
    FinishTable(InkLevel(counts.background), PaperLevel(counts.result, pixels), *table);
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(plane))
    for (int y = 0; y < plane.height; ++y) {
        if (cancel.IsCancelled())
            continue;
        MapPaperRow(*table, background.Row(y), plane.width, plane.Row(y).data());
    }
    return 1;
}

int BlackWhiteText(CDibImage& image, bool keepColor) {
    if (PreparePagePlanes(image, keepColor) == 0)
        return 0;
    return WorkOnPagePlanes(image, BlackWhitePlane);
}

}  // namespace velloran
