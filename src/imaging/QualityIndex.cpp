#include "imaging/QualityIndex.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/StepContext.h"
#include "core/Threads.h"
#include "imaging/Planes.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/QualityIndex.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

// What the samples of a window add up to stands in four rows, one behind the other: of the one
// picture, of the other, the squares of both, and the products of one with the other.

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

/// Column sums of a window: a row joins with `sign` 1, or leaves with -1.
void MoveColumns(const std::uint8_t* rowX, const std::uint8_t* rowY, std::int32_t sign,
                 std::size_t width, std::int32_t* sums) {
    std::int32_t* sumX = sums;
    std::int32_t* sumY = sums + width;
    std::int32_t* squares = sums + 2 * width;
    std::int32_t* products = sums + 3 * width;
    for (std::size_t i = 0; i < width; ++i) {
        const std::int32_t x = rowX[i], y = rowY[i];
        sumX[i] += sign * x;
        sumY[i] += sign * y;
        squares[i] += sign * (x * x + y * y);
        products[i] += sign * (x * y);
    }
}

/// Sums of `window` columns from each place on. By halves where the window is eight wide.
void AddAcross(const std::int32_t* columns, std::size_t places, std::size_t window,
               std::int32_t* scratch, std::int32_t* sums) {
    if (window != 8) {
        for (std::size_t i = 0; i < places; ++i) {
            std::int32_t sum = 0;
            for (std::size_t k = 0; k < window; ++k)
                sum += columns[i + k];
            sums[i] = sum;
        }
        return;
    }
    for (std::size_t i = 0; i < places + 6; ++i)
        scratch[i] = columns[i] + columns[i + 1];
    for (std::size_t i = 0; i < places + 4; ++i)
        scratch[i] += scratch[i + 2];
    for (std::size_t i = 0; i < places; ++i)
        sums[i] = scratch[i] + scratch[i + 4];
}

/// Adds up the index of each window in units of 2^-24: whole numbers, so that the order of the
/// windows does not matter. All sums stay below 2^31.
std::int64_t AddIndexes(const std::int32_t* sums, std::size_t places, std::int32_t samples,
                        std::int32_t* scratch) {
    constexpr float kUnits = 16777216.0F;
    const std::int32_t* sumX = sums;
    const std::int32_t* sumY = sums + places;
    const std::int32_t* squares = sums + 2 * places;
    const std::int32_t* products = sums + 3 * places;
    for (std::size_t i = 0; i < places; ++i) {
        const std::int32_t means = sumX[i] * sumY[i];
        const std::int32_t meanSquares = sumX[i] * sumX[i] + sumY[i] * sumY[i];
        const std::int32_t variances = samples * squares[i] - meanSquares;
        const std::int32_t covariance = samples * products[i] - means;
        const bool isBlack = meanSquares == 0, isFlat = variances == 0;
        const float above = (isBlack ? 1.0F : 2.0F * static_cast<float>(means)) *
                            (isFlat ? 1.0F : 2.0F * static_cast<float>(covariance));
        const float below = (isBlack ? 1.0F : static_cast<float>(meanSquares)) *
                            (isFlat ? 1.0F : static_cast<float>(variances));
        scratch[i] = static_cast<std::int32_t>(above / below * kUnits);
    }
    std::int64_t sum = 0;
    for (std::size_t i = 0; i < places; ++i)
        sum += scratch[i];
    return sum;
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(MoveColumns);
HWY_EXPORT(AddAcross);
HWY_EXPORT(AddIndexes);

constexpr int kWindow = 8;
constexpr int kBandRows = 128;  // of windows; a band is the work of one thread

/// The sums of one band, with the samples of the rows that the window covers.
class BandSums {
 public:
    BandSums(ConstPlaneView a, ConstPlaneView b, int channel)
        : a_(a),
          b_(b),
          channel_(channel),
          across_(static_cast<std::size_t>(std::min(kWindow, a.width))),
          down_(std::min(kWindow, a.height)),
          width_(static_cast<std::size_t>(a.width)),
          places_(width_ - across_ + 1),
          rows_(2 * static_cast<std::size_t>(kWindow) * width_),
          columns_(4 * width_),
          sums_(4 * places_),
          scratch_(width_) {}

    /// Of the windows whose first rows are `first` to `end` - 1.
    std::int64_t Add(int first, int end, const CancelToken& cancel) {
        std::fill(columns_.begin(), columns_.end(), 0);
        for (int y = first; y < first + down_; ++y)
            Join(y, /*leaves=*/false);
        std::int64_t sum = AddRow();
        for (int y = first + 1; y < end && !cancel.IsCancelled(); ++y) {
            Join(y + down_ - 1, /*leaves=*/true);
            sum += AddRow();
        }
        return sum;
    }

 private:
    std::uint8_t* RowOf(int y, std::size_t picture) {
        const auto slot = static_cast<std::size_t>(y % kWindow);
        return rows_.data() + (picture * kWindow + slot) * width_;
    }
    void Fetch(ConstPlaneView picture, int y, std::uint8_t* out) const {
        const std::uint8_t* first = picture.Row(y).data() + channel_;
        if (picture.channels == 1)
            std::copy_n(first, width_, out);
        else
            ExtractChannelRow(first, picture.width, out);
    }

    /// With a window of eight rows the row that leaves lies where the one that joins will.
    void Join(int y, bool leaves) {
        std::uint8_t* x = RowOf(y, 0);
        std::uint8_t* other = RowOf(y, 1);
        if (leaves)
            HWY_DYNAMIC_DISPATCH(MoveColumns)(x, other, -1, width_, columns_.data());
        Fetch(a_, y, x);
        Fetch(b_, y, other);
        HWY_DYNAMIC_DISPATCH(MoveColumns)(x, other, 1, width_, columns_.data());
    }

    std::int64_t AddRow() {
        for (std::size_t i = 0; i < 4; ++i)
            HWY_DYNAMIC_DISPATCH(AddAcross)
        (columns_.data() + i * width_, places_, across_, scratch_.data(),
         sums_.data() + i * places_);
        const auto samples = static_cast<std::int32_t>(across_) * down_;
        return HWY_DYNAMIC_DISPATCH(AddIndexes)(sums_.data(), places_, samples, scratch_.data());
    }

    ConstPlaneView a_, b_;
    int channel_ = 0;
    std::size_t across_ = 0;
    int down_ = 0;
    std::size_t width_ = 0, places_ = 0;
    std::vector<std::uint8_t> rows_;
    std::vector<std::int32_t> columns_, sums_, scratch_;
};

}  // namespace

double QualityIndex(ConstPlaneView a, ConstPlaneView b, int channel) {
    if (a.width < 1 || a.height < 1)
        return 0;
    const int windowRows = a.height - std::min(kWindow, a.height) + 1;
    const int bands = (windowRows + kBandRows - 1) / kBandRows;
    std::vector<BandSums> sums(static_cast<std::size_t>(MaxThreads()), BandSums(a, b, channel));
    const CancelToken cancel = CurrentCancel();
    std::int64_t sum = 0;
#pragma omp parallel for schedule(static) reduction(+ : sum) if (IsWorthThreads(a))
    for (int band = 0; band < bands; ++band) {
        const int first = band * kBandRows;
        sum += sums[static_cast<std::size_t>(ThreadNumber())].Add(
            first, std::min(first + kBandRows, windowRows), cancel);
    }
    if (cancel.IsCancelled())
        return 0;
    const int windowColumns = a.width - std::min(kWindow, a.width) + 1;
    constexpr double kUnits = 16777216.0;
    return static_cast<double>(sum) / kUnits / (static_cast<double>(windowRows) * windowColumns);
}
}  // namespace velloran
#endif  // HWY_ONCE
