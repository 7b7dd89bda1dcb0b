#include "filters/SmoothLines.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "filters/SmoothLines.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

constexpr int kFraction = 7;

/// alpha * difference >> 16 for an alpha of 16 bits without sign, in signed 16-bit factors: above
/// 32767 it is the product by alpha - 65536, and the difference itself.
struct Follower {
    std::int16_t factor, mask;

    explicit Follower(int alpha)
        : factor(static_cast<std::int16_t>(alpha < 32768 ? alpha : alpha - 65536)),
          mask(static_cast<std::int16_t>(alpha < 32768 ? 0 : -1)) {}

    std::int16_t Next(std::int16_t state, std::int16_t target) const {
        const auto difference = static_cast<std::int16_t>(target - state);
        const auto part = static_cast<std::int16_t>(difference * factor >> 16);
        return static_cast<std::int16_t>(state + part + (difference & mask));
    }
};

void FollowLines(std::uint8_t* samples, int length, int alpha, std::int16_t* kept) {
    const Follower follower(alpha);
    std::int16_t state[kSmoothedLines];
    for (int i = 0; i < kSmoothedLines; ++i)
        state[i] = static_cast<std::int16_t>(samples[i] << kFraction);
    for (int k = 0; k < length; ++k, samples += kSmoothedLines, kept += kSmoothedLines)
        for (int i = 0; i < kSmoothedLines; ++i) {
            const auto target = static_cast<std::int16_t>(samples[i] << kFraction);
            state[i] = follower.Next(state[i], target);
            kept[i] = state[i];
        }
    for (int k = 0; k < length; ++k) {
        samples -= kSmoothedLines;
        kept -= kSmoothedLines;
        for (int i = 0; i < kSmoothedLines; ++i) {
            state[i] = follower.Next(state[i], kept[i]);
            samples[i] = static_cast<std::uint8_t>(state[i] >> kFraction);
        }
    }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(FollowLines);

}  // namespace

void SmoothLines(std::uint8_t* samples, int length, int alpha, std::int16_t* kept) {
    HWY_DYNAMIC_DISPATCH(FollowLines)(samples, length, alpha, kept);
}

}  // namespace velloran
#endif  // HWY_ONCE
