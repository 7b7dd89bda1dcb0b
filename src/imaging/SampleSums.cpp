#include "imaging/SampleSums.h"

#include "core/Rounding.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/SampleSums.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

void WidenToWords(const std::uint8_t* samples, int count, std::uint16_t* out) {
    for (int i = 0; i < count; ++i)
        out[i] = samples[i];
}

void WidenToFloats(const std::uint8_t* samples, int count, float* out) {
    for (int i = 0; i < count; ++i)
        out[i] = static_cast<float>(samples[i]);
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(WidenToWords);
HWY_EXPORT(WidenToFloats);

/// The slow way for weights of any size.
void SumExactly(std::span<const Tap> taps, std::int64_t divisor, const std::uint16_t* samples,
                int count, std::uint8_t* out) {
    for (int i = 0; i < count; ++i) {
        std::int64_t sum = 0;
        for (const Tap& tap : taps)
            sum += std::int64_t{tap.weight} * samples[i + tap.offset];
        out[i] = sum <= 0 ? 0 : ClampToByte(sum / divisor + (sum % divisor * 2 >= divisor ? 1 : 0));
    }
}

}  // namespace

void Widen(const std::uint8_t* samples, int count, std::uint16_t* out) {
    HWY_DYNAMIC_DISPATCH(WidenToWords)(samples, count, out);
}

void Widen(const std::uint8_t* samples, int count, float* out) {
    HWY_DYNAMIC_DISPATCH(WidenToFloats)(samples, count, out);
}

SampleSums::SampleSums(std::span<const Tap> taps, std::int32_t divisor)
    : taps_(taps.begin(), taps.end()), divisor_(divisor) {
    if (TapGroups::CanHold(taps, divisor))
        groups_.emplace(taps, divisor);
}

void SampleSums::Row(const std::uint16_t* samples, int count, std::uint8_t* out) const {
    if (groups_)
        SumTaps(*groups_, samples, count, out);
    else
        SumExactly(taps_, divisor_, samples, count, out);
}

}  // namespace velloran
#endif  // HWY_ONCE
