#include "filters/SmoothPlane.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "core/DibImage.h"
#include "core/ExactMath.h"
#include "core/GrayDepth.h"
#include "core/Refusal.h"
#include "core/Rounding.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "core/TransposePixels.h"
#include "filters/SmoothLines.h"

namespace velloran {
namespace {

constexpr int kLines = kSmoothedLines;

int AlphaOf(int reach) {
    return TruncToInt((1 - Exp(-2.3 / (reach + 1.0))) * 65536);
}

struct LinesScratch {
    explicit LinesScratch(int length)
        : samples(static_cast<std::size_t>(length) * kLines),
          kept(static_cast<std::size_t>(length) * kLines) {}
    std::vector<std::uint8_t> samples;
    std::vector<std::int16_t> kept;
};

void SmoothColumns(PlaneView plane, int first, int count, int alpha, LinesScratch& scratch) {
    const auto bytes = static_cast<std::size_t>(count);
    std::uint8_t* samples = scratch.samples.data();
    for (int y = 0; y < plane.height; ++y, samples += kLines)
        std::memcpy(samples, plane.Row(y).data() + first, bytes);
    SmoothLines(scratch.samples.data(), plane.height, alpha, scratch.kept.data());
    samples = scratch.samples.data();
    for (int y = 0; y < plane.height; ++y, samples += kLines)
        std::memcpy(plane.Row(y).data() + first, samples, bytes);
}

/// The rows of `band` become columns, and rows again.
void SmoothRows(PlaneView band, int alpha, LinesScratch& scratch) {
    const int bits = 8 * band.channels;
    TransposePixels({band.first, band.width, band.height, band.stride}, bits,
                    scratch.samples.data(), kLines);
    SmoothLines(scratch.samples.data(), band.width, alpha, scratch.kept.data());
    TransposePixels({scratch.samples.data(), band.height, band.width, kLines}, bits, band.first,
                    band.stride);
}

}  // namespace

void SmoothRowsAndColumns(PlaneView topDown, double radius) {
    const int reach = RoundHalf(2 * radius);
    if (reach < 1 || topDown.width < 1 || topDown.height < 1)
        return;
    const int alpha(AlphaOf(reach));
    const int count = topDown.width * topDown.channels, rowsAtOnce = kLines / topDown.channels;
    [[maybe_unused]] const bool inParallel = IsWorthThreads(std::int64_t{count} * topDown.height);
    std::vector<LinesScratch> perThread(static_cast<std::size_t>(MaxThreads()),
                                        LinesScratch(std::max(topDown.width, topDown.height)));
    const int bands = (topDown.height - 1) / rowsAtOnce + 1;
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (inParallel)
    for (int i = 0; i < bands; ++i) {
        if (cancel.IsCancelled())
            continue;
        const int first = i * rowsAtOnce;
        const PlaneView band = topDown.Rows(first, std::min(rowsAtOnce, topDown.height - first));
        SmoothRows(band, alpha, perThread[static_cast<std::size_t>(ThreadNumber())]);
    }
    const int strips = (count - 1) / kLines + 1;
#pragma omp parallel for schedule(static) if (inParallel)
    for (int i = 0; i < strips; ++i) {
        if (cancel.IsCancelled())
            continue;
        SmoothColumns(topDown, i * kLines, std::min(kLines, count - i * kLines), alpha,
                      perThread[static_cast<std::size_t>(ThreadNumber())]);
    }
}

int SmoothPlane(CDibImage& image, double radius) {
    if (image.GetWidth() <= 3 || image.GetHeight() <= 3 || EnsureGrayOrRgb(image) == 0)
        return 0;
    return RefuseWhenOutOfMemory([&] {
        SmoothRowsAndColumns(TopDownViewOf(image), radius);
        return 1;
    });
}

}  // namespace velloran
