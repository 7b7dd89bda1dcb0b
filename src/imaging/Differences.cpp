#include "imaging/Differences.h"

#include <cstddef>
#include <cstring>
#include <vector>

#include "core/StepContext.h"
#include "core/Threads.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/Differences.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

void DifferenceRow(const std::uint8_t* a, const std::uint8_t* b, std::size_t count,
                   std::uint8_t* out) {
    for (std::size_t i = 0; i < count; ++i)
        out[i] = static_cast<std::uint8_t>(a[i] > b[i] ? a[i] - b[i] : b[i] - a[i]);
}

/// The three channels apart, each `width` bytes behind the last; returns how many pixels differ.
std::uint64_t PlanarRow(const std::uint8_t* a, const std::uint8_t* b, std::size_t width,
                        std::uint8_t* out) {
    const hn::ScalableTag<std::uint8_t> bytes;
    const std::size_t lanes = hn::Lanes(bytes);
    std::uint64_t different = 0;
    std::size_t x = 0;
    for (; x + lanes <= width; x += lanes) {
        hn::Vec<decltype(bytes)> a0, a1, a2, b0, b1, b2;
        hn::LoadInterleaved3(bytes, a + 3 * x, a0, a1, a2);
        hn::LoadInterleaved3(bytes, b + 3 * x, b0, b1, b2);
        const auto d0 = hn::Or(hn::SaturatedSub(a0, b0), hn::SaturatedSub(b0, a0));
        const auto d1 = hn::Or(hn::SaturatedSub(a1, b1), hn::SaturatedSub(b1, a1));
        const auto d2 = hn::Or(hn::SaturatedSub(a2, b2), hn::SaturatedSub(b2, a2));
        hn::StoreU(d0, bytes, out + x);
        hn::StoreU(d1, bytes, out + width + x);
        hn::StoreU(d2, bytes, out + 2 * width + x);
        const auto any = hn::Or(d0, hn::Or(d1, d2));
        different += hn::CountTrue(bytes, hn::Ne(any, hn::Zero(bytes)));
    }
    for (; x < width; ++x) {
        std::uint8_t any = 0;
        for (std::size_t c = 0; c < 3; ++c) {
            const int d = a[3 * x + c] - b[3 * x + c];
            const auto level = static_cast<std::uint8_t>(d < 0 ? -d : d);
            out[c * width + x] = level;
            any |= level;
        }
        different += any != 0 ? 1 : 0;
    }
    return different;
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(DifferenceRow);
HWY_EXPORT(PlanarRow);

/// Four counters a level, so that a run of one level does not wait for itself.
struct LevelCounter {
    std::uint64_t counts[4][256] = {};
    std::uint64_t equal = 0;  // of eight at a time

    void Add(const std::uint8_t* levels, std::size_t count) {
        std::size_t x = 0;
        for (; x + 8 <= count; x += 8) {
            std::uint64_t eight = 0;
            std::memcpy(&eight, levels + x, sizeof eight);
            if (eight == 0) {
                equal += 8;
                continue;
            }
            for (int i = 0; i < 8; ++i)
                ++counts[i & 3][eight >> 8 * i & 0xFF];
        }
        for (; x < count; ++x)
            ++counts[0][levels[x]];
    }
    void AddTo(std::array<std::uint64_t, 256>& levels) const {
        levels[0] += equal;
        for (std::size_t i = 0; i < levels.size(); ++i)
            levels[i] += counts[0][i] + counts[1][i] + counts[2][i] + counts[3][i];
    }
};

struct ThreadCounts {
    std::array<LevelCounter, 3> channels;
    std::vector<std::uint8_t> levels;  // of a row, the channels apart
    std::uint64_t different = 0;
};

std::uint64_t NonZero(const std::array<std::uint64_t, 256>& levels) {
    std::uint64_t sum = 0;
    for (std::size_t i = 1; i < levels.size(); ++i)
        sum += levels[i];
    return sum;
}

}  // namespace

DifferenceCounts CountDifferences(ConstPlaneView a, ConstPlaneView b) {
    const auto width = static_cast<std::size_t>(a.width);
    const auto channels = static_cast<std::size_t>(a.channels);
    std::vector<ThreadCounts> counts(static_cast<std::size_t>(MaxThreads()));
    for (ThreadCounts& each : counts)
        each.levels.resize(width * channels);
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(a))
    for (int y = 0; y < a.height; ++y) {
        if (cancel.IsCancelled())
            continue;
        ThreadCounts& own = counts[static_cast<std::size_t>(ThreadNumber())];
        if (channels == 3)
            own.different += HWY_DYNAMIC_DISPATCH(PlanarRow)(a.Row(y).data(), b.Row(y).data(),
                                                             width, own.levels.data());
        else
            HWY_DYNAMIC_DISPATCH(DifferenceRow)
        (a.Row(y).data(), b.Row(y).data(), width, own.levels.data());
        for (std::size_t c = 0; c < channels; ++c)
            own.channels[c].Add(own.levels.data() + c * width, width);
    }
    DifferenceCounts result;
    for (const ThreadCounts& each : counts) {
        result.differentPixels += each.different;
        for (std::size_t c = 0; c < channels; ++c)
            each.channels[c].AddTo(result.levels[c]);
    }
    if (channels == 1)
        result.differentPixels = NonZero(result.levels[0]);
    return result;
}

void WriteDifferences(ConstPlaneView a, ConstPlaneView b, PlaneView out) {
#pragma omp parallel for schedule(static) if (IsWorthThreads(a))
    for (int y = 0; y < a.height; ++y)
        HWY_DYNAMIC_DISPATCH(DifferenceRow)
    (a.Row(y).data(), b.Row(y).data(), a.Row(y).size(), out.Row(y).data());
}

}  // namespace velloran
#endif  // HWY_ONCE
