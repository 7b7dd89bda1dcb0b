#include "filters/UsmMixer.h"

#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "filters/UsmMixer.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

/// difference * amount / 100 in 16 bits: whole hundreds and, as a fraction of 65536 that is rounded
/// up, the rest. 255 times its error is less than a hundredth, so the truncated sum is exact.
struct Scale {
    std::uint16_t whole, part;

    explicit Scale(int amount)
        : whole(static_cast<std::uint16_t>(amount / 100)),
          part(static_cast<std::uint16_t>((amount % 100 * 65536 + 99) / 100)) {}
};

#if HWY_TARGET == HWY_SCALAR
std::ptrdiff_t MixBlocks(Scale, int, const std::uint8_t*, std::ptrdiff_t, std::uint8_t*) {
    return 0;
}
#else
namespace hn = hwy::HWY_NAMESPACE;
using Bytes = hn::ScalableTag<std::uint8_t>;
using Words = hn::Repartition<std::uint16_t, Bytes>;

template <class Vector>
HWY_INLINE Vector Scaled(Vector difference, Vector whole, Vector part, Vector most) {
    return hn::Min(hn::Add(hn::Mul(difference, whole), hn::MulHigh(difference, part)), most);
}

/// Returns how many samples are done, whole vectors of them.
std::ptrdiff_t MixBlocks(Scale scale, int threshold, const std::uint8_t* blurred,
                         std::ptrdiff_t count, std::uint8_t* row) {
    const Bytes bytes;
    const Words words;
    const auto whole = hn::Set(words, scale.whole), part = hn::Set(words, scale.part);
    const auto most = hn::Set(words, 255);
    const auto stays = hn::Set(bytes, static_cast<std::uint8_t>(threshold));
    const auto step = static_cast<std::ptrdiff_t>(hn::Lanes(bytes));
    std::ptrdiff_t x = 0;
    for (; x + step <= count; x += step) {
        const auto from = hn::LoadU(bytes, row + x), blur = hn::LoadU(bytes, blurred + x);
        const auto above = hn::SaturatedSub(from, blur);
        const auto difference = hn::Or(above, hn::SaturatedSub(blur, from));
        // The two bytes of a word for themselves: nothing has to be laid out anew.
        const auto both = hn::BitCast(words, difference);
        const auto low = Scaled(hn::And(both, most), whole, part, most);
        const auto high = Scaled(hn::ShiftRight<8>(both), whole, part, most);
        const auto scaled = hn::BitCast(bytes, hn::Or(low, hn::ShiftLeft<8>(high)));
        const auto isSmall = hn::Eq(hn::Max(difference, stays), stays);
        const auto change = hn::IfThenZeroElse(isSmall, scaled);
        const auto isBelow = hn::Eq(above, hn::Zero(bytes));
        hn::StoreU(
            hn::IfThenElse(isBelow, hn::SaturatedSub(from, change), hn::SaturatedAdd(from, change)),
            bytes, row + x);
    }
    return x;
}
#endif

void MixRow(int amount, int threshold, const std::uint8_t* blurred, int count, std::uint8_t* row) {
    const Scale scale(amount);
    for (std::ptrdiff_t x = MixBlocks(scale, threshold, blurred, count, row); x < count; ++x) {
        const int sample = row[x], difference = sample - blurred[x];
        const int distance = difference < 0 ? -difference : difference;
        const int scaled = distance * scale.whole + (distance * scale.part >> 16);
        const int change = distance <= threshold ? 0 : scaled;
        const int value = difference < 0 ? sample - change : sample + change;
        row[x] = static_cast<std::uint8_t>(value < 0 ? 0 : (value > 255 ? 255 : value));
    }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(MixRow);

}  // namespace

void UsmMixer::Mix(const std::uint8_t* blurred, int count, std::uint8_t* row) const {
    HWY_DYNAMIC_DISPATCH(MixRow)(amount, threshold, blurred, count, row);
}

}  // namespace velloran
#endif  // HWY_ONCE
