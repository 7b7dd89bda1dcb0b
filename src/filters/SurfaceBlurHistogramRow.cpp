#include <algorithm>
#include <bit>

#include "filters/SurfaceBlurHistogram.h"

// With vectors, the histogram of the window is brought up to date by groups of sixteen levels, and
// only those that a sample asks for: groups within reach of its level that are not empty. On a page
// these are two or three. A group that was not asked for lately catches up column by column, or is
// summed anew where that is less.

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "filters/SurfaceBlurHistogramRow.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

#if HWY_TARGET == HWY_SCALAR
void BlurRow(const HistogramRow& row) {
    const ColumnCounts& counts = *row.counts;
    const LevelWeights& weights = *row.weights;
    std::uint16_t window[kLevelGroups * kGroupLevels] = {};
    const auto change = [&](int column, int by) {
        for (int group = 0; group < kLevelGroups; ++group) {
            const std::uint8_t* levels = counts.Levels(group, column);
            std::uint16_t* out = window + group * kGroupLevels;
            for (int i = 0; i < kGroupLevels; ++i)
                out[i] = static_cast<std::uint16_t>(out[i] + by * levels[i]);
        }
    };
    for (int column = 0; column < 2 * row.radius; ++column)
        change(column, 1);
    for (int x = 0; x < row.count; ++x) {
        change(x + 2 * row.radius, 1);
        if (x > 0)
            change(x - 1, -1);
        const int center = row.source[static_cast<std::ptrdiff_t>(x) * row.step];
        const int low = std::max(center - weights.reach, 0);
        const int high = std::min(center + weights.reach, 255);
        std::uint32_t den = 0, num = 0;
        for (int level = low; level <= high; ++level) {
            const auto share =
                static_cast<std::uint32_t>(window[level] * weights.Of(level - center));
            den += share;
            num += share * static_cast<std::uint32_t>(level);
        }
        row.target[static_cast<std::ptrdiff_t>(x) * row.step] =
            static_cast<std::uint8_t>((num + den / 2) / den);
    }
}
#else
namespace hn = hwy::HWY_NAMESPACE;
using Counts = hn::CappedTag<std::int16_t, kGroupLevels>;
using CountBytes = hn::Rebind<std::uint8_t, Counts>;
using Sum = hn::Vec<hn::RepartitionToWide<Counts> >;

constexpr int kLanes = std::min<int>(kGroupLevels, HWY_LANES(std::int16_t));
constexpr int kParts = kGroupLevels / kLanes;

/// The counts of sixteen levels, or of sixteen groups.
struct Sixteen {
    hn::Vec<Counts> part[kParts];
};

HWY_INLINE Sixteen None() {
    Sixteen none;
    for (auto& part : none.part)
        part = hn::Zero(Counts());
    return none;
}

HWY_INLINE void Add(const std::uint8_t* counts, Sixteen& sum) {
    for (int i = 0; i < kParts; ++i)
        sum.part[i] = hn::Add(
            sum.part[i], hn::PromoteTo(Counts(), hn::LoadU(CountBytes(), counts + i * kLanes)));
}

HWY_INLINE void Remove(const std::uint8_t* counts, Sixteen& sum) {
    for (int i = 0; i < kParts; ++i)
        sum.part[i] = hn::Sub(
            sum.part[i], hn::PromoteTo(Counts(), hn::LoadU(CountBytes(), counts + i * kLanes)));
}

class SlidingWindow {
 public:
    SlidingWindow(const ColumnCounts& counts, int radius)
        : counts_(counts), side_(2 * radius + 1), groups_(None()) {
        std::fill(std::begin(upTo_), std::end(upTo_), -2 * side_);
        for (int column = 0; column < side_ - 1; ++column)
            Add(counts.Groups(column), groups_);
    }

    /// From x - 1 to x.
    HWY_INLINE void MoveTo(int x) {
        Add(counts_.Groups(x + side_ - 1), groups_);
        if (x > 0)
            Remove(counts_.Groups(x - 1), groups_);
    }

    /// Bit g is set where group g holds samples.
    HWY_INLINE unsigned Occupied() const {
        unsigned occupied = 0;
        for (int i = 0; i < kParts; ++i) {
            std::uint8_t bits[8] = {};
            hn::StoreMaskBits(Counts(), hn::Gt(groups_.part[i], hn::Zero(Counts())), bits);
            occupied |= (bits[0] | static_cast<unsigned>(bits[1]) << 8) << (i * kLanes);
        }
        return occupied;
    }

    /// The counts of a group in the window of x.
    HWY_INLINE Sixteen Group(int group, int x) {
        std::int16_t* kept = levels_[group];
        const int behind = x - upTo_[group];
        Sixteen sum;
        for (int i = 0; i < kParts; ++i)
            sum.part[i] = hn::Load(Counts(), kept + i * kLanes);
        if (behind == 0)
            return sum;
        upTo_[group] = x;
        const std::uint8_t* column = counts_.Levels(group, x);
        if (2 * behind <= side_) {
            for (const std::uint8_t* out = column - behind * kGroupLevels; out < column;
                 out += kGroupLevels) {
                Add(out + side_ * kGroupLevels, sum);
                Remove(out, sum);
            }
        } else {
            sum = None();
            for (int i = 0; i < side_; ++i)
                Add(column + i * kGroupLevels, sum);
        }
        for (int i = 0; i < kParts; ++i)
            hn::Store(sum.part[i], Counts(), kept + i * kLanes);
        return sum;
    }

 private:
    const ColumnCounts& counts_;
    const int side_;
    Sixteen groups_;
    alignas(64) std::int16_t levels_[kLevelGroups][kGroupLevels]{};
    int upTo_[kLevelGroups];  // the x that the counts of a group stand for
};

alignas(32) constexpr std::int16_t kLowHalves[kGroupLevels] = {0, 1, 2,  3,  4,  5,  6,  7,
                                                               8, 9, 10, 11, 12, 13, 14, 15};

/// Sums over the groups of a window, spread over lanes. A count times the low half of its level
/// fits 16 bits, and the high half is the number of the group.
struct Sums {
    Sum den, low, high;

    HWY_INLINE Sums() { den = low = high = hn::Zero(hn::RepartitionToWide<Counts>()); }

    HWY_INLINE void Add(const Sixteen& counts, const std::int16_t* weights, int group) {
        const hn::RepartitionToWide<Counts> wide;
        const auto zero = hn::Zero(wide);
        for (int i = 0; i < kParts; ++i) {
            const auto weight = hn::LoadU(Counts(), weights + i * kLanes);
            const auto lowHalves = hn::Load(Counts(), kLowHalves + i * kLanes);
            auto rest = zero;
            auto shares = hn::ReorderWidenMulAccumulate(wide, counts.part[i], weight, zero, rest);
            shares = hn::Add(shares, rest);
            den = hn::Add(den, shares);
            high = hn::Add(high, hn::Mul(shares, hn::Set(wide, group)));
            rest = zero;
            low = hn::ReorderWidenMulAccumulate(wide, hn::Mul(counts.part[i], lowHalves), weight,
                                                low, rest);
            low = hn::Add(low, rest);
        }
    }

    /// (num + den / 2) / den.
    HWY_INLINE std::uint8_t Mean() const {
        const hn::RepartitionToWide<Counts> wide;
        const auto num = hn::Add(low, hn::ShiftLeft<4>(high));
        const auto divisor = static_cast<std::uint32_t>(hn::GetLane(hn::SumOfLanes(wide, den)));
        const auto sum = static_cast<std::uint32_t>(hn::GetLane(hn::SumOfLanes(wide, num)));
        return static_cast<std::uint8_t>((sum + divisor / 2) / divisor);
    }
};

void BlurRow(const HistogramRow& row) {
    SlidingWindow window(*row.counts, row.radius);
    const LevelWeights& weights = *row.weights;
    for (int x = 0; x < row.count; ++x) {
        window.MoveTo(x);
        const int center = row.source[static_cast<std::ptrdiff_t>(x) * row.step];
        const int first = std::max(center - weights.reach, 0) / kGroupLevels;
        const int last = std::min(center + weights.reach, 255) / kGroupLevels;
        unsigned wanted = window.Occupied() & ((2U << last) - (1U << first));
        Sums sums;
        for (; wanted != 0; wanted &= wanted - 1) {
            const int group = std::countr_zero(wanted);
            sums.Add(window.Group(group, x), weights.OfGroup(group, center), group);
        }
        row.target[static_cast<std::ptrdiff_t>(x) * row.step] = sums.Mean();
    }
}
#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(BlurRow);

}  // namespace

void BlurHistogramRow(const HistogramRow& row) {
    HWY_DYNAMIC_DISPATCH(BlurRow)(row);
}

}  // namespace velloran
#endif  // HWY_ONCE
