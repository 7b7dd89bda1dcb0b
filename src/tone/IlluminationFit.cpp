#include "tone/IlluminationFit.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <vector>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/Refusal.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "filters/Resample.h"
#include "imageproc/BinaryMorphology.h"
#include "imageproc/GrayMorphology.h"
#include "imaging/Planes.h"
#include "tone/PaperBlocks.h"
#include "tone/PixelMapRows.h"
#include "tone/SmoothSurface.h"

namespace velloran {
namespace {

constexpr int kSmallestSide = 2, kReducedSide = 300;
constexpr int kWidestStroke = 15;  // of the reduced page: what is narrower is ink
constexpr int kLeastInk = 8;       // levels below the paper around
constexpr int kAroundInk = 3;      // pixels that a stroke shades
constexpr std::size_t kMostSamples = 8000;
constexpr int kRounds = 5;
constexpr double kOutlierDeviations = 1.5, kLeastOutlier = 6;

/// A grey image no longer than the reduced side.
CDibImage Reduced(const CDibImage& gray) {
    const std::int64_t width = gray.GetWidth(), height = gray.GetHeight();
    const std::int64_t longer = std::max<std::int64_t>({width, height, kReducedSide});
    const auto side = [&](std::int64_t whole) {
        return static_cast<int>(std::max<std::int64_t>(whole * kReducedSide / longer, 1));
    };
    CDibImage reduced = ResizedCopy(gray, side(width), side(height));
    if (!reduced.IsValid())
        throw std::bad_alloc();
    return reduced;
}

CDibImage ReducedGray(const CDibImage& image) {
    if (image.GetBpp() == 8)
        return Reduced(image);
    CDibImage gray;
    if (gray.Create(image.GetWidth(), image.GetHeight(), 8) == nullptr)
        throw std::bad_alloc();
    gray.SetGrayPalette();
    WeightedGray(ViewOf(image), {0.114F, 0.587F, 0.299F}, ViewOf(gray));
    return Reduced(gray);
}

/// Black where something lies on the paper, and close around it.
imageproc::BinaryImage FindInk(const CDibImage& gray) {
    const CDibImage paper = imageproc::closeGray(gray, {kWidestStroke, kWidestStroke}, 0);
    imageproc::BinaryImage ink(gray.GetWidth(), gray.GetHeight());
    ink.fill(imageproc::BwColor::kWhite);
    const ConstPlaneView samples = TopDownViewOf(gray), around = TopDownViewOf(paper);
    for (int y = 0; y < samples.height; ++y) {
        std::uint32_t* row = ink.data() + static_cast<std::ptrdiff_t>(y) * ink.wordsPerLine();
        for (int x = 0; x < samples.width; ++x) {
            const auto at = static_cast<std::size_t>(x);
            if (samples.Row(y)[at] + kLeastInk < around.Row(y)[at])
                row[x / 32] |= 0x80000000U >> (x % 32);
        }
    }
    return imageproc::dilateBrick(ink, imageproc::Brick({kAroundInk, kAroundInk}));
}

double Fraction(int position, int size) {
    return size > 1 ? static_cast<double>(position) / (size - 1) : 0.0;
}

std::vector<SurfaceSample> SamplesOf(const CDibImage& gray, const imageproc::BinaryImage* ink) {
    const ConstPlaneView view = TopDownViewOf(gray);
    const std::size_t pixels =
        static_cast<std::size_t>(view.width) * static_cast<std::size_t>(view.height);
    const int step =
        static_cast<int>(std::ceil(std::sqrt(static_cast<double>(pixels) / kMostSamples)));
    std::vector<SurfaceSample> samples;
    for (int y = 0; y < view.height; y += step)
        for (int x = 0; x < view.width; x += step)
            if (ink == nullptr || !ink->isBlack(x, y))
                samples.push_back({Fraction(x, view.width), Fraction(y, view.height),
                                   static_cast<double>(view.Row(y)[static_cast<std::size_t>(x)])});
    return samples;
}

/// Pictures and black borders are no strokes but are no paper either: what lies far below the
/// surface is dropped and the rest fitted anew.
SmoothSurface FitPaper(std::vector<SurfaceSample> samples) {
    SmoothSurface surface(samples);
    const CancelToken cancel = CurrentCancel();
    for (int round = 0; round < kRounds && !samples.empty() && !cancel.IsCancelled(); ++round) {
        double squares = 0;
        for (const SurfaceSample& s : samples) {
            const double difference = s.value - surface.At(s.x, s.y);
            squares += difference * difference;
        }
        const double deviation = std::sqrt(squares / static_cast<double>(samples.size()));
        const double limit = std::max(kOutlierDeviations * deviation, kLeastOutlier);
        const std::size_t before = samples.size();
        std::erase_if(samples, [&](const SurfaceSample& s) {
            return surface.At(s.x, s.y) - s.value > limit;
        });
        if (samples.empty() || samples.size() == before)
            break;
        surface = SmoothSurface(samples);
    }
    return surface;
}

SmoothSurface PaperOf(const CDibImage& image) {
    const CDibImage gray = ReducedGray(image);
    const imageproc::BinaryImage ink = FindInk(gray);
    std::vector<SurfaceSample> samples = SamplesOf(gray, &ink);
    if (samples.empty())
        samples = SamplesOf(gray, nullptr);
    return FitPaper(std::move(samples));
}

/// By the level of the surface, then of the sample.
void MakeQuotients(PaperTable& table) {
    for (int paper = 0; paper < 256; ++paper)
        for (int sample = 0; sample < 256; ++sample)
            table[static_cast<std::size_t>(paper)][static_cast<std::size_t>(sample)] =
                static_cast<std::uint8_t>(paper > sample ? (sample * 255 + paper / 2) / paper
                                                         : 255);
}

template <int kChannels>
void DivideRow(const PaperTable& table, const std::uint8_t* paper, int width,
               std::uint8_t* sample) {
    for (int x = 0; x < width; ++x, sample += kChannels)
        for (int c = 0; c < kChannels; ++c)
            sample[c] = table[paper[x]][sample[c]];
}

}  // namespace

int IlluminationFit(CDibImage& image) {
    if (!image.IsValid() || image.GetWidth() < kSmallestSide || image.GetHeight() < kSmallestSide)
        return 0;
    if (image.GetBpp() != 24 && !image.IsGrayScale() &&
        (ConvertToRgb(image) == 0 || ConvertToGray(image) == 0))
        return 0;
    return RefuseWhenOutOfMemory([&] {
        const SmoothSurface surface = PaperOf(image);
        const auto table = std::make_unique<PaperTable>();
        MakeQuotients(*table);
        const PlaneView pixels = TopDownViewOf(image);
        std::vector<std::vector<std::uint8_t>> perThread(
            static_cast<std::size_t>(MaxThreads()),
            std::vector<std::uint8_t>(static_cast<std::size_t>(pixels.width)));
        const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(pixels))
        for (int y = 0; y < pixels.height; ++y) {
            if (cancel.IsCancelled())
                continue;
            std::uint8_t* paper = perThread[static_cast<std::size_t>(ThreadNumber())].data();
            surface.Row(Fraction(y, pixels.height), pixels.width, paper);
            if (pixels.channels == 3)
                DivideRow<3>(*table, paper, pixels.width, pixels.Row(y).data());
            else
                DivideRow<1>(*table, paper, pixels.width, pixels.Row(y).data());
        }
        return 1;
    });
}

}  // namespace velloran
