#include <algorithm>
#include <cstring>

#include "imaging/TapGroups.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/SumTaps.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

#if HWY_ARCH_X86 && HWY_TARGET != HWY_SCALAR
// The two sums of a step, 16 bits each, are laid side by side, so that one instruction multiplies
// both and adds the products as 32 bits. (What other processors have for it adds other pairs.)
namespace hn = hwy::HWY_NAMESPACE;
using Words = hn::ScalableTag<std::int16_t>;
using Sum = hn::Vec<hn::RepartitionToWide<Words>>;

constexpr int kLanes = HWY_LANES(std::int16_t);
constexpr int kRegisters = std::min(4, kSumBlock / kLanes);
constexpr int kAtOnce = kRegisters * kLanes;
static_assert(kSumBlock % kAtOnce == 0);

/// Products in the order of the interleaving.
struct Sums {
    Sum lower[kRegisters], upper[kRegisters];
};

template <int kCount>
HWY_INLINE hn::Vec<Words> SumOf(const std::uint16_t* samples, const std::int32_t* offsets) {
    const Words words;
    const auto load = [&](int k) HWY_ATTR {
        return hn::LoadU(words, reinterpret_cast<const std::int16_t*>(samples + offsets[k]));
    };
    auto sum = load(0);
    for (int k = 1; k < kCount; ++k)
        sum = hn::Add(sum, load(k));
    return sum;
}

template <int kFirst, int kSecond>
HWY_INLINE void AddSteps(std::span<const TapStep<kFirst, kSecond>> steps,
                         const std::uint16_t* samples, Sums& sums) {
    const Words words;
    const hn::RepartitionToWide<Words> wide;
    for (const auto& step : steps) {
        const auto lower = static_cast<std::uint16_t>(step.firstWeight);
        const auto upper = static_cast<std::uint16_t>(step.secondWeight);
        const auto both = lower | static_cast<std::uint32_t>(upper) << 16;
        const auto weights = hn::BitCast(words, hn::Set(wide, static_cast<std::int32_t>(both)));
        for (int i = 0; i < kRegisters; ++i) {
            const auto first = SumOf<kFirst>(samples + kLanes * i, step.first);
            const auto second = SumOf<kSecond>(samples + kLanes * i, step.second);
            sums.lower[i] =
                hn::ReorderWidenMulAccumulate(wide, hn::InterleaveLower(words, first, second),
                                              weights, sums.lower[i], sums.lower[i]);
            sums.upper[i] =
                hn::ReorderWidenMulAccumulate(wide, hn::InterleaveUpper(words, first, second),
                                              weights, sums.upper[i], sums.upper[i]);
        }
    }
}

HWY_INLINE Sum Divided(Sum sums, float step, float offset) {
    const hn::RepartitionToWide<Words> wide;
    const hn::RebindToFloat<decltype(wide)> floats;
    return hn::ConvertTo(wide,
                         hn::Mul(hn::Add(hn::ConvertTo(floats, sums), hn::Set(floats, offset)),
                                 hn::Set(floats, step)));
}

void SumRow(const TapGroups& taps, const std::uint16_t* samples, int count, std::uint8_t* out) {
    const Words words;
    const hn::Rebind<std::uint8_t, Words> bytes;
    const float step = taps.Step(), offset = taps.Offset();
    for (int x = 0; x < count; x += kAtOnce) {
        Sums sums;
        for (int i = 0; i < kRegisters; ++i)
            sums.lower[i] = sums.upper[i] = hn::Zero(hn::RepartitionToWide<Words>());
        AddSteps(taps.Fours(), samples + x, sums);
        AddSteps(taps.Twos(), samples + x, sums);
        AddSteps(taps.TwoAndOne(), samples + x, sums);
        AddSteps(taps.Ones(), samples + x, sums);
        std::uint8_t last[kAtOnce];
        std::uint8_t* const to = count - x >= kAtOnce ? out + x : last;
        for (int i = 0; i < kRegisters; ++i) {
            // Narrowing undoes the order of the interleaving, and limits.
            const auto quotients = hn::ReorderDemote2To(words, Divided(sums.lower[i], step, offset),
                                                        Divided(sums.upper[i], step, offset));
            hn::StoreU(hn::DemoteTo(bytes, quotients), bytes, to + kLanes * i);
        }
        if (to == last)
            std::memcpy(out + x, last, static_cast<std::size_t>(count - x));
    }
}
#else
void AddProducts(const std::uint16_t* samples, std::span<const std::int32_t> offsets,
                 std::int32_t weight, std::int32_t* sums) {
    std::int16_t together[kSumBlock] = {};
    for (const std::int32_t offset : offsets)
        for (int i = 0; i < kSumBlock; ++i)
            together[i] = static_cast<std::int16_t>(together[i] + samples[offset + i]);
    for (int i = 0; i < kSumBlock; ++i)
        sums[i] += weight * together[i];
}

template <int kFirst, int kSecond>
void AddSteps(std::span<const TapStep<kFirst, kSecond>> steps, const std::uint16_t* samples,
              std::int32_t* sums) {
    for (const auto& step : steps) {
        AddProducts(samples, step.first, step.firstWeight, sums);
        AddProducts(samples, step.second, step.secondWeight, sums);
    }
}

void SumRow(const TapGroups& taps, const std::uint16_t* samples, int count, std::uint8_t* out) {
    const float step = taps.Step(), offset = taps.Offset();
    for (int x = 0; x < count; x += kSumBlock) {
        std::int32_t sums[kSumBlock] = {};
        AddSteps(taps.Fours(), samples + x, sums);
        AddSteps(taps.Twos(), samples + x, sums);
        AddSteps(taps.TwoAndOne(), samples + x, sums);
        AddSteps(taps.Ones(), samples + x, sums);
        const int length = std::min(kSumBlock, count - x);
        for (int i = 0; i < length; ++i) {
            const float quotient = (static_cast<float>(sums[i]) + offset) * step;
            const float limited = quotient < 0.0F ? 0.0F : (quotient > 255.0F ? 255.0F : quotient);
            out[x + i] = static_cast<std::uint8_t>(static_cast<int>(limited));
        }
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

HWY_EXPORT(SumRow);

}  // namespace

void SumTaps(const TapGroups& taps, const std::uint16_t* samples, int count, std::uint8_t* out) {
    HWY_DYNAMIC_DISPATCH(SumRow)(taps, samples, count, out);
}

}  // namespace velloran
#endif  // HWY_ONCE
