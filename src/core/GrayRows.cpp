#include "core/GrayRows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "core/GrayRows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

void OneByOne(const std::uint8_t* pixels, int count, std::uint8_t* gray) {
    for (int x = 0; x < count; ++x, pixels += 3)
        gray[x] = static_cast<std::uint8_t>(
            (114U * pixels[0] + 587U * pixels[1] + 299U * pixels[2] + 500U) / 1000U);
}

#if HWY_TARGET == HWY_SCALAR
void GrayRow(const std::uint8_t* pixels, int count, std::uint8_t* gray) {
    OneByOne(pixels, count, gray);
}
#else
namespace hn = hwy::HWY_NAMESPACE;
using Bytes = hn::Full128<std::uint8_t>;

/// Of four pixels. Half a thousandth is added before the division, whose error is far smaller: no
/// quotient comes to lie at the wrong side of a whole number.
template <class Vector>
HWY_INLINE auto Levels(Vector blue, Vector green, Vector red) {
    const hn::Full128<std::int32_t> ints;
    const hn::Full128<float> floats;
    const auto sum =
        hn::Add(hn::Add(hn::Mul(blue, hn::Set(ints, 114)), hn::Mul(green, hn::Set(ints, 587))),
                hn::Add(hn::Mul(red, hn::Set(ints, 299)), hn::Set(ints, 500)));
    return hn::ConvertTo(ints, hn::Mul(hn::Add(hn::ConvertTo(floats, sum), hn::Set(floats, 0.5F)),
                                       hn::Set(floats, 0.001F)));
}

void GrayRow(const std::uint8_t* pixels, int count, std::uint8_t* gray) {
    constexpr int kStep = 16, kPart = 4;
    const Bytes bytes;
    const hn::Full128<std::int32_t> ints;
    const hn::FixedTag<std::uint8_t, kPart> part;
    int x = 0;
    for (; x + kStep <= count; x += kStep) {
        hn::Vec<Bytes> blue, green, red;
        hn::LoadInterleaved3(bytes, pixels + 3 * x, blue, green, red);
        HWY_ALIGN std::uint8_t channels[3][kStep];
        hn::Store(blue, bytes, channels[0]);
        hn::Store(green, bytes, channels[1]);
        hn::Store(red, bytes, channels[2]);
        for (int i = 0; i < kStep; i += kPart) {
            const auto of = [&](int channel) HWY_ATTR {
                return hn::PromoteTo(ints, hn::Load(part, channels[channel] + i));
            };
            hn::StoreU(hn::DemoteTo(part, Levels(of(0), of(1), of(2))), part, gray + x + i);
        }
    }
    OneByOne(pixels + 3 * x, count - x, gray + x);
}
#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {

HWY_EXPORT(GrayRow);

void GrayOfColors(const std::uint8_t* pixels, int count, std::uint8_t* gray) {
    HWY_DYNAMIC_DISPATCH(GrayRow)(pixels, count, gray);
}

}  // namespace velloran
#endif  // HWY_ONCE
