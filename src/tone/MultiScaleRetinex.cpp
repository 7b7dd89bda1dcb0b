#include "tone/MultiScaleRetinex.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/DibImage.h"
#include "core/ExactMath.h"
#include "core/GrayDepth.h"
#include "core/Refusal.h"
#include "core/Rounding.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "filters/FitIntoBox.h"
#include "imaging/FloatView.h"
#include "imaging/Resize.h"
#include "tone/AutoLevelsCount.h"
#include "tone/EnlargedRows.h"
#include "tone/FloatGaussian.h"
#include "tone/PixelMapRows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tone/MultiScaleRetinex.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

/// A blur of samples from 1 up is no less than 1, save for what the floats lose.
void AddLogsOfRow(const float* blurred, int count, float* sums) {
    for (int i = 0; i < count; ++i)
        sums[i] += LogOfPositive(blurred[i] > 1.0F ? blurred[i] : 1.0F);
}

void ScaleRow(const float* row, float low, float factor, std::size_t count, std::uint8_t* out) {
    for (std::size_t i = 0; i < count; ++i) {
        const float value = (row[i] - low) * factor + 0.5F;
        const float limited = value < 0.0F ? 0.0F : (value > 255.0F ? 255.0F : value);
        out[i] = static_cast<std::uint8_t>(static_cast<int>(limited));
    }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(AddLogsOfRow);
HWY_EXPORT(ScaleRow);

constexpr int kLargestWorkSide = 1500;
constexpr int kMostScales = 16;
constexpr float kSmallestSigma = 2.0F;
constexpr double kBrightShare = 0.003;
constexpr int kBrightEnough = 250;

float SigmaOf(int scale, int scaleCount, int index) {
    if (scaleCount == 1)
        return static_cast<float>(scale) / 2;
    return kSmallestSigma +
           static_cast<float>(index) * (static_cast<float>(scale) / static_cast<float>(scaleCount));
}

bool IsFlat(ConstPlaneView pixels) {
    const std::uint8_t* first = pixels.Row(0).data();
    for (int y = 0; y < pixels.height; ++y) {
        const std::span<const std::uint8_t> row = pixels.Row(y);
        for (std::size_t i = 0; i < row.size(); ++i)
            if (row[i] != first[i % static_cast<std::size_t>(pixels.channels)])
                return false;
    }
    return true;
}

BoxSize WorkSize(ConstPlaneView pixels) {
    const BoxSize size =
        FitIntoBox({pixels.width, pixels.height}, {kLargestWorkSide, kLargestWorkSide});
    return {std::max(size.width, 1), std::max(size.height, 1)};
}

/// The samples and 1, at the working size.
FloatPlane ReducedSamples(ConstPlaneView pixels, BoxSize size) {
    FloatPlane plane(size.width, size.height, pixels.channels);
    ResizeArea(pixels, plane.View());
#pragma omp parallel for schedule( \
    static) if (IsWorthThreads(std::int64_t{size.width} * size.height))
    for (int y = 0; y < size.height; ++y)
        for (float& sample : plane.View().Row(y))
            sample += 1.0F;
    return plane;
}

void AddLogs(ConstFloatView blurred, FloatView sums) {
#pragma omp parallel for schedule( \
    static) if (IsWorthThreads(std::int64_t{sums.width} * sums.height))
    for (int y = 0; y < sums.height; ++y) {
        const std::span<float> row = sums.Row(y);
        HWY_DYNAMIC_DISPATCH(AddLogsOfRow)
        (blurred.Row(y).data(), static_cast<int>(row.size()), row.data());
    }
}

/// Sum of the logarithms of all blurs, at the working size.
FloatPlane Surroundings(ConstPlaneView pixels, int scale, int scaleCount) {
    const BoxSize size = WorkSize(pixels);
    const FloatPlane samples = ReducedSamples(pixels, size);
    FloatPlane blurred(size.width, size.height, pixels.channels);
    FloatPlane sums(size.width, size.height, pixels.channels);
    for (int y = 0; y < size.height; ++y)
        std::ranges::fill(sums.View().Row(y), 0.0F);
    const float reduction = static_cast<float>(size.width) / static_cast<float>(pixels.width);
    const CancelToken cancel = CurrentCancel();
    for (int i = 0; i < scaleCount; ++i) {
        FloatGaussian(samples.View(), SigmaOf(scale, scaleCount, i) * reduction, blurred.View());
        if (cancel.IsCancelled())
            break;
        AddLogs(blurred.View(), sums.View());
    }
    return sums;
}

using LogTable = std::array<float, 256>;

LogTable ScaledLogs(int scaleCount) {
    LogTable table;
    for (std::size_t level = 0; level < table.size(); ++level)
        table[level] =
            static_cast<float>(scaleCount) * LogOfPositive(static_cast<float>(level) + 1.0F);
    return table;
}

/// The differences of the samples from their surroundings, worked out a row at a time as often as
/// they are asked for, which costs less than memory for all of them.
class Differences {
 public:
    Differences(ConstPlaneView pixels, ConstFloatView surroundings, int scaleCount)
        : pixels_(pixels),
          surroundings_(surroundings, pixels.width, pixels.height),
          logs_(ScaledLogs(scaleCount)),
          perThread_(static_cast<std::size_t>(MaxThreads()),
                     Scratch{std::vector<float>(surroundings_.ScratchSize()),
                             std::vector<float>(RowSize())}) {}

    std::size_t RowSize() const {
        return static_cast<std::size_t>(pixels_.width) * static_cast<std::size_t>(pixels_.channels);
    }

    /// Valid until the same thread asks for the next row.
    const float* Row(int y) {
        Scratch& scratch = perThread_[static_cast<std::size_t>(ThreadNumber())];
        surroundings_.Row(y, scratch.blended.data(), scratch.row.data());
        const std::uint8_t* sample = pixels_.Row(y).data();
        for (float& value : scratch.row)
            value = logs_[*sample++] - value;
        return scratch.row.data();
    }

 private:
    struct Scratch {
        std::vector<float> blended, row;
    };

    ConstPlaneView pixels_;
    EnlargedRows surroundings_;
    LogTable logs_;
    std::vector<Scratch> perThread_;
};

struct Spread {
    double mean = 0, deviation = 0;
};

/// Rows are summed up each by itself and then in their order, whatever thread had them.
Spread MeasureSpread(Differences& differences, int height) {
    struct RowSums {
        double sum = 0, squares = 0;
    };
    std::vector<RowSums> perRow(static_cast<std::size_t>(height));
    const auto samples = static_cast<std::int64_t>(differences.RowSize()) * height;
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(samples))
    for (int y = 0; y < height; ++y) {
        if (cancel.IsCancelled())
            continue;
        const float* row = differences.Row(y);
        std::array<double, 4> sums{}, squares{};
        for (std::size_t i = 0; i < differences.RowSize(); ++i) {
            const double value = static_cast<double>(row[i]);
            sums[i % 4] += value;
            squares[i % 4] += value * value;
        }
        perRow[static_cast<std::size_t>(y)] = {
            (sums[0] + sums[1]) + (sums[2] + sums[3]),
            (squares[0] + squares[1]) + (squares[2] + squares[3])};
    }
    RowSums total;
    for (const RowSums& row : perRow) {
        total.sum += row.sum;
        total.squares += row.squares;
    }
    const auto count = static_cast<double>(samples);
    const double mean = total.sum / count;
    return {mean, std::sqrt(std::max(total.squares / count - mean * mean, 0.0))};
}

void Brighten(PlaneView pixels) {
    const Histogram histogram = CountBytes(pixels);
    const double samples = static_cast<double>(pixels.width) * pixels.height * pixels.channels;
    const std::int64_t limit =
        std::max<std::int64_t>(static_cast<std::int64_t>(kBrightShare * samples), 1);
    int level = 255;
    for (std::int64_t count = histogram[255]; count < limit && level > 0;)
        count += histogram[static_cast<std::size_t>(--level)];
    if (level >= kBrightEnough)
        return;
    PixelMap map;
    for (int i = 0; i < 256; ++i)
        map[static_cast<std::size_t>(i)] = ClampToByte(i + 255 - level);
    MapRows(map, pixels);
}

void Whiten(PlaneView pixels) {
    for (int y = 0; y < pixels.height; ++y)
        std::ranges::fill(pixels.Row(y), std::uint8_t{255});
}

}  // namespace

int MultiScaleRetinex(CDibImage& image, bool brighten, int scale, int scaleCount,
                      float dynamicRange) {
    if (scale < 0 || scaleCount < 1 || scaleCount > kMostScales || EnsureGrayOrRgb(image) == 0)
        return 0;
    return RefuseWhenOutOfMemory([&] {
        const PlaneView pixels = TopDownViewOf(image);
        if (IsFlat(pixels)) {
            Whiten(pixels);
            return 1;
        }
        const CancelToken cancel = CurrentCancel();
        const FloatPlane surroundings = Surroundings(pixels, scale, scaleCount);
        if (cancel.IsCancelled())
            return 0;
        Differences differences(pixels, surroundings.View(), scaleCount);
        const Spread spread = MeasureSpread(differences, pixels.height);
        const double reach = static_cast<double>(dynamicRange) * spread.deviation;
        if (!(reach > 0)) {
            Whiten(pixels);
            return 1;
        }
        const auto low = static_cast<float>(spread.mean - reach);
        const auto factor = static_cast<float>(255.0 / (2 * reach));
#pragma omp parallel for schedule(static) if (IsWorthThreads(pixels))
        for (int y = 0; y < pixels.height; ++y) {
            if (cancel.IsCancelled())
                continue;
            HWY_DYNAMIC_DISPATCH(ScaleRow)
            (differences.Row(y), low, factor, differences.RowSize(), pixels.Row(y).data());
        }
        if (brighten)
            Brighten(pixels);
        return 1;
    });
}

}  // namespace velloran
#endif  // HWY_ONCE
