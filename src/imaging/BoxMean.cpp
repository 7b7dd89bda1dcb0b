#include "imaging/BoxMean.h"

#include <algorithm>
#include <vector>

#include "core/StepContext.h"
#include "core/Threads.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/BoxMean.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

void AddRow(const float* row, double times, int count, double* sums) {
    for (int i = 0; i < count; ++i)
        sums[i] += times * static_cast<double>(row[i]);
}

void ExchangeRow(const float* in, const float* out, int count, double* sums) {
    for (int i = 0; i < count; ++i)
        sums[i] += static_cast<double>(in[i]) - static_cast<double>(out[i]);
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(AddRow);
HWY_EXPORT(ExchangeRow);

/// How often a line of `size` meets the window of `radius` about `center`, where lines beyond the
/// ends count as the end lines.
double TimesInWindow(int line, std::int64_t center, std::int64_t radius, int size) {
    const std::int64_t from = center - radius, to = center + radius;
    const std::int64_t before = line == 0 ? std::max<std::int64_t>(0, -from) : 0;
    const std::int64_t behind = line == size - 1 ? std::max<std::int64_t>(0, to - (size - 1)) : 0;
    return static_cast<double>(before + behind + (line >= from && line <= to ? 1 : 0));
}

/// Rows of one band: the column sums start anew at each band, so that the result does not depend
/// on how many threads share them.
constexpr int kBandRows = 128;

/// The means of one channel of a row from its column sums, the border replicated.
void MeansOfRow(const double* sums, int width, int channels, std::int64_t radius, double share,
                float* out) {
    const auto at = [&](std::int64_t x) {
        return sums[std::clamp<std::int64_t>(x, 0, width - 1) * channels];
    };
    double sum = 0;
    for (std::int64_t x = 0; x <= std::min<std::int64_t>(radius, width - 1); ++x)
        sum += TimesInWindow(static_cast<int>(x), 0, radius, width) * at(x);
    const auto slide = [&](int from, int to, auto&& change) {
        for (int x = from; x < to; ++x) {
            out[static_cast<std::ptrdiff_t>(x) * channels] = static_cast<float>(sum * share);
            sum += change(x);
        }
    };
    const auto atEdge = [&](int x) { return at(x + radius + 1) - at(x - radius); };
    const int inner = static_cast<int>(std::min<std::int64_t>(radius, width));
    const int outer =
        std::max(inner, static_cast<int>(std::max<std::int64_t>(0, width - 1 - radius)));
    slide(0, inner, atEdge);
    slide(inner, outer,
          [&](int x) { return sums[(x + radius + 1) * channels] - sums[(x - radius) * channels]; });
    slide(outer, width, atEdge);
}

/// Rows [first, last) of the means; `sums` is scratch of a row.
void MeansOfBand(ConstFloatView source, int radius, int first, int last, double* sums,
                 FloatView target) {
    const int count = source.width * source.channels, lastRow = source.height - 1;
    const double side = 2.0 * radius + 1, share = 1 / (side * side);
    const auto row = [&](std::int64_t y) {
        return source.Row(static_cast<int>(std::clamp<std::int64_t>(y, 0, lastRow))).data();
    };
    std::fill_n(sums, count, 0.0);
    const std::int64_t top = std::int64_t{first} - radius, bottom = std::int64_t{first} + radius;
    for (std::int64_t y = std::max<std::int64_t>(top, 0);
         y <= std::min<std::int64_t>(bottom, lastRow); ++y)
        HWY_DYNAMIC_DISPATCH(AddRow)
    (row(y), TimesInWindow(static_cast<int>(y), first, radius, source.height), count, sums);
    for (int y = first; y < last; ++y) {
        for (int c = 0; c < source.channels; ++c)
            MeansOfRow(sums + c, source.width, source.channels, radius, share,
                       target.Row(y).data() + c);
        HWY_DYNAMIC_DISPATCH(ExchangeRow)
        (row(std::int64_t{y} + radius + 1), row(std::int64_t{y} - radius), count, sums);
    }
}

}  // namespace

void BoxMean(ConstFloatView source, int radius, FloatView target) {
    const int count = source.width * source.channels;
    if (count == 0 || source.height == 0)
        return;
    // The source is read around a row after that row was written, where both are one.
    FloatPlane copy;
    if (source.first == target.first) {
        copy = FloatPlane(source.width, source.height, source.channels);
        for (int y = 0; y < source.height; ++y)
            std::copy_n(source.Row(y).data(), count, copy.View().Row(y).data());
        source = copy.View();
    }
    const int bands = (source.height - 1) / kBandRows + 1;
    std::vector<std::vector<double>> perThread(
        static_cast<std::size_t>(MaxThreads()),
        std::vector<double>(static_cast<std::size_t>(count)));
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(std::int64_t{count} * source.height))
    for (int band = 0; band < bands; ++band) {
        const int first = band * kBandRows, last = std::min(first + kBandRows, source.height);
        if (cancel.IsCancelled()) {  // no value is left that a cast could trip over
            for (int y = first; y < last; ++y)
                std::ranges::fill(target.Row(y), 0.0F);
            continue;
        }
        MeansOfBand(source, radius, first, last,
                    perThread[static_cast<std::size_t>(ThreadNumber())].data(), target);
    }
}

}  // namespace velloran
#endif  // HWY_ONCE
