#include "imaging/TapGroups.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>

namespace velloran {
namespace {

/// Sums and half the divisor stay below this: floats then hold them with two binary places, and the
/// error of the product by the step (2^-23 of it) is less than the quarter of the step that the
/// offset keeps clear.
constexpr std::int64_t kExactQuotients = 1 << 21;

/// Taps of one weight.
template <int kCount>
struct TapRun {
    std::int32_t offsets[kCount];
    std::int16_t weight;
};

/// Takes runs of `kCount` taps of one weight out of `sorted`.
template <int kCount>
std::vector<TapRun<kCount>> TakeRuns(std::vector<Tap>& sorted) {
    std::vector<Tap> left;
    std::vector<TapRun<kCount>> runs;
    for (std::size_t i = 0; i < sorted.size();) {
        const std::size_t last = i + kCount - 1;
        if (last >= sorted.size() || sorted[last].weight != sorted[i].weight) {
            left.push_back(sorted[i++]);
            continue;
        }
        TapRun<kCount>& run = runs.emplace_back();
        run.weight = static_cast<std::int16_t>(sorted[i].weight);
        for (std::int32_t& offset : run.offsets)
            offset = sorted[i++].offset;
    }
    sorted = std::move(left);
    return runs;
}

template <int kFirst, int kSecond>
TapStep<kFirst, kSecond> StepOf(const TapRun<kFirst>& first, const TapRun<kSecond>& second,
                                std::int16_t secondWeight) {
    TapStep<kFirst, kSecond> step;
    std::copy_n(first.offsets, kFirst, step.first);
    std::copy_n(second.offsets, kSecond, step.second);
    step.firstWeight = first.weight;
    step.secondWeight = secondWeight;
    return step;
}

/// Two runs a step; the last of an odd number stands beside itself with weight 0.
template <int kCount>
std::vector<TapStep<kCount, kCount>> StepsOf(const std::vector<TapRun<kCount>>& runs) {
    std::vector<TapStep<kCount, kCount>> steps;
    for (std::size_t i = 0; i < runs.size(); i += 2) {
        const bool isLast = i + 1 == runs.size();
        const TapRun<kCount>& second = runs[isLast ? i : i + 1];
        steps.push_back(StepOf(runs[i], second, isLast ? std::int16_t{0} : second.weight));
    }
    return steps;
}

}  // namespace

bool TapGroups::CanHold(std::span<const Tap> taps, std::int32_t divisor) {
    std::int64_t most = divisor;
    for (const Tap& tap : taps) {
        if (tap.weight != static_cast<std::int16_t>(tap.weight))
            return false;
        most += std::abs(std::int64_t{tap.weight}) * std::numeric_limits<std::uint8_t>::max();
    }
    return divisor > 0 && most < kExactQuotients;
}

TapGroups::TapGroups(std::span<const Tap> taps, std::int32_t divisor)
    : step_(1.0F / static_cast<float>(divisor)),
      offset_(static_cast<float>(divisor) * 0.5F + 0.25F) {
    std::vector<Tap> sorted;
    for (const Tap& tap : taps)
        if (tap.weight != 0)
            sorted.push_back(tap);
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const Tap& a, const Tap& b) { return a.weight < b.weight; });
    fours_ = StepsOf(TakeRuns<4>(sorted));
    std::vector<TapRun<2>> twos = TakeRuns<2>(sorted);
    std::vector<TapRun<1>> ones = TakeRuns<1>(sorted);
    if (twos.size() % 2 != 0 && ones.size() % 2 != 0) {
        twoAndOne_.push_back(StepOf(twos.back(), ones.back(), ones.back().weight));
        twos.pop_back();
        ones.pop_back();
    }
    twos_ = StepsOf(twos);
    ones_ = StepsOf(ones);
}

}  // namespace velloran
