#include "tone/WhiteBalance.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/Rounding.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "tone/AutoLevels.h"
#include "tone/AutoLevelsCount.h"
#include "tone/PixelMapRows.h"

namespace velloran {
namespace {

constexpr int kSmallestSide = 2;
constexpr int kDarkestWhite = 10;
constexpr int kFallbackLevels = 1;
constexpr double kWhiteShare = 0.1, kBlackShare = 0.001;

/// Luma and the two color differences from mid grey, bytes as 128 and more or less.
struct Tone {
    int y, cb, cr;
};

/// 20-bit fixed point.
inline Tone ToneOf(const std::uint8_t* pixel) {
    const int b = pixel[0], g = pixel[1], r = pixel[2];
    const int y = (119538 * b + 615514 * g + 313524 * r + 0x80000) >> 20;
    const int cb = (((b + 1) * 0x80000 - 347354 * g - 176932 * r) >> 20) + 128;
    const int cr = (((r + 1) * 0x80000 - 85261 * b - 439025 * g) >> 20) + 128;
    return {y, std::min(cb, 255), std::min(cr, 255)};
}

/// How often each value of both color differences occurs: all their statistics are exact sums over
/// these counts.
struct DifferenceCounts {
    Histogram blue{}, red{};
    void Add(const DifferenceCounts& other) {
        AddLevels(blue, other.blue);
        AddLevels(red, other.red);
    }
    static void AddLevels(Histogram& sums, const Histogram& counts) {
        for (std::size_t level = 0; level < sums.size(); ++level)
            sums[level] += counts[level];
    }
};

/// Calls `count(pixel, counts)` for every pixel, rows in parallel; all that is counted are whole
/// numbers.
template <typename Counts, typename Count>
Counts CountPixels(ConstPlaneView pixels, Count count) {
    Counts total{};
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel if (IsWorthThreads(pixels))
    {
        Counts own{};
#pragma omp for schedule(static) nowait
        for (int y = 0; y < pixels.height; ++y) {
            if (cancel.IsCancelled())
                continue;
            const std::uint8_t* pixel = pixels.Row(y).data();
            for (int x = 0; x < pixels.width; ++x, pixel += 3)
                count(pixel, own);
        }
#pragma omp critical(velloran_white_balance)
        total.Add(own);
    }
    return total;
}

/// Of one color difference, counted from its middle; the deviation is the mean absolute one.
struct Cast {
    double mean = 0, deviation = 0;
    Cast Negative() const { return {-mean, deviation}; }
};

Cast CastOf(const Histogram& counts, double pixels) {
    Cast cast;
    for (int level = 0; level < 256; ++level)
        cast.mean += static_cast<double>(counts[static_cast<std::size_t>(level)]) * (level - 128);
    cast.mean /= pixels;
    for (int level = 0; level < 256; ++level)
        cast.deviation += static_cast<double>(counts[static_cast<std::size_t>(level)]) *
                          std::abs(level - 128 - cast.mean);
    cast.deviation /= pixels;
    return cast;
}

/// Where the pixels without a color of their own are looked for.
class NearWhite {
 public:
    NearWhite(const Cast& blue, const Cast& red)
        : centerBlue_(blue.mean < 0 ? blue.mean - blue.deviation : blue.mean + blue.deviation),
          centerRed_(red.mean < 0 ? 1.5 * red.mean - red.deviation
                                  : 1.5 * red.mean + red.deviation),
          reachBlue_(1.5 * blue.deviation + 0.00001),
          reachRed_(1.5 * red.deviation + 0.00001) {}

    bool Holds(int cb, int cr) const {
        return std::abs(cb - 128 - centerBlue_) < reachBlue_ &&
               std::abs(cr - 128 - centerRed_) < reachRed_;
    }

 private:
    double centerBlue_, centerRed_, reachBlue_, reachRed_;
};

/// Luma of the candidates, in the page and in its negative.
struct CandidateCounts {
    Histogram white{}, black{};
    void Add(const CandidateCounts& other) {
        DifferenceCounts::AddLevels(white, other.white);
        DifferenceCounts::AddLevels(black, other.black);
    }
};

/// The luma from which on lies the lightest share of the candidates; 0 where there is none or it
/// is too dark.
int WhiteFrom(const Histogram& candidates, double share) {
    double count = 0;
    for (const std::uint32_t n : candidates)
        count += n;
    const auto target = static_cast<std::uint32_t>(share * count + 0.5);
    std::uint32_t sum = 0;
    for (int level = 255; level >= kDarkestWhite && target > 0; --level) {
        sum += candidates[static_cast<std::size_t>(level)];
        if (sum >= target)
            return level;
    }
    return 0;
}

/// Of the pixels that count as white.
struct WhiteSums {
    std::array<std::uint64_t, 3> sum{};
    std::uint64_t count = 0;
    int mostBlue = 0;
    void Add(const WhiteSums& other) {
        for (std::size_t c = 0; c < sum.size(); ++c)
            sum[c] += other.sum[c];
        count += other.count;
        mostBlue = std::max(mostBlue, other.mostBlue);
    }
    void AddPixel(int blue, int green, int red) {
        sum[0] += static_cast<std::uint64_t>(blue);
        sum[1] += static_cast<std::uint64_t>(green);
        sum[2] += static_cast<std::uint64_t>(red);
        ++count;
        mostBlue = std::max(mostBlue, blue);
    }
};

/// Brings the mean of each channel to the reference. A channel that is nowhere but 0 has an
/// endless gain, which 0 stays 0 under.
ChannelMaps GainMaps(const WhiteSums& white, double reference) {
    ChannelMaps maps{};
    for (std::size_t c = 0; c < maps.size(); ++c) {
        const double gain =
            reference / (static_cast<double>(white.sum[c]) / static_cast<double>(white.count));
        for (int level = 1; level < 256; ++level)
            maps[c][static_cast<std::size_t>(level)] = ClampToByte(RoundHalf(level * gain));
    }
    return maps;
}

ChannelMaps WhiteMaps(ConstPlaneView pixels, int whiteFrom) {
    const auto white = CountPixels<WhiteSums>(pixels, [&](const std::uint8_t* pixel, auto& sums) {
        if (ToneOf(pixel).y >= whiteFrom)
            sums.AddPixel(pixel[0], pixel[1], pixel[2]);
    });
    return GainMaps(white, 255.0);
}

/// The black point is the white point of the negative of what `maps` make of the page; which
/// pixels it is taken from, the page before them says.
void AddBlackPoint(ConstPlaneView pixels, int whiteFrom, ChannelMaps& maps) {
    const auto black = CountPixels<WhiteSums>(pixels, [&](const std::uint8_t* pixel, auto& sums) {
        if (255 - ToneOf(pixel).y >= whiteFrom)
            sums.AddPixel(255 - maps[0][pixel[0]], 255 - maps[1][pixel[1]],
                          255 - maps[2][pixel[2]]);
    });
    const ChannelMaps negative = GainMaps(black, black.mostBlue);
    for (std::size_t c = 0; c < maps.size(); ++c)
        for (std::uint8_t& level : maps[c])
            level =
                static_cast<std::uint8_t>(255 - negative[c][static_cast<std::size_t>(255 - level)]);
}

int Balance(CDibImage& image, bool blackToo) {
    const PlaneView pixels = ViewOf(image);
    const auto counts =
        CountPixels<DifferenceCounts>(pixels, [](const std::uint8_t* pixel, auto& own) {
            const Tone tone = ToneOf(pixel);
            ++own.blue[static_cast<std::size_t>(tone.cb)];
            ++own.red[static_cast<std::size_t>(tone.cr)];
        });
    const double size = static_cast<double>(pixels.width) * pixels.height;
    const Cast blue = CastOf(counts.blue, size), red = CastOf(counts.red, size);
    const NearWhite nearWhite(blue, red), nearBlack(blue.Negative(), red.Negative());
    const auto candidates =
        CountPixels<CandidateCounts>(pixels, [&](const std::uint8_t* pixel, auto& own) {
            const Tone tone = ToneOf(pixel);
            if (nearWhite.Holds(tone.cb, tone.cr))
                ++own.white[static_cast<std::size_t>(tone.y)];
            if (blackToo && nearBlack.Holds(255 - tone.cb, 255 - tone.cr))
                ++own.black[static_cast<std::size_t>(255 - tone.y)];
        });
    const int whiteFrom = WhiteFrom(candidates.white, kWhiteShare);
    if (whiteFrom == 0)
        return AutoLevels(image, kFallbackLevels);
    ChannelMaps maps = WhiteMaps(pixels, whiteFrom);
    if (const int blackFrom = WhiteFrom(candidates.black, kBlackShare); blackFrom != 0)
        AddBlackPoint(pixels, blackFrom, maps);
    MapChannelRows(maps, pixels);
    return 1;
}

}  // namespace

int WhiteBalance(CDibImage& image, int mode) {
    if (mode < 1 || !image.IsValid() || image.GetWidth() < kSmallestSide ||
        image.GetHeight() < kSmallestSide || EnsureGrayOrRgb(image) == 0 || image.GetBpp() != 24)
        return 0;
    return Balance(image, /*blackToo=*/mode >= 2);
}

}  // namespace velloran
