#include "tone/AutoLevelsLuma.h"

#include "core/Rounding.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tone/AutoLevelsLuma.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

#if HWY_TARGET == HWY_SCALAR
std::size_t LumaOfVectors(const std::uint8_t*, std::size_t, std::uint8_t*) {
    return 0;
}
#else
namespace hn = hwy::HWY_NAMESPACE;
using Bytes = hn::ScalableTag<std::uint8_t>;
using Words = hn::Repartition<std::uint16_t, Bytes>;

/// 601 G + 306 R + 117 B is 4 A + T with A = 150 G + 76 R + 29 B and T = G + 2 R + B, so that a
/// 1024th of it is a 256th of A + T / 4, which fits 16 bits.
template <class Vector>
HWY_INLINE Vector LumaOfWords(Vector blue, Vector green, Vector red) {
    const Words d;
    const auto coarse =
        hn::Add(hn::Add(hn::Mul(green, hn::Set(d, 150)), hn::Mul(red, hn::Set(d, 76))),
                hn::Mul(blue, hn::Set(d, 29)));
    const auto fine = hn::Add(hn::Add(green, blue), hn::Add(red, red));
    return hn::Add(coarse, hn::ShiftRight<2>(fine));  // in its high byte
}

/// Returns how many pixels are done, whole vectors of them.
std::size_t LumaOfVectors(const std::uint8_t* pixels, std::size_t pixelCount, std::uint8_t* luma) {
    const Bytes bytes;
    const Words words;
    const auto low = hn::Set(words, 0xFF);
    const std::size_t step = hn::Lanes(bytes);
    std::size_t i = 0;
    for (; i + step <= pixelCount; i += step) {
        hn::Vec<Bytes> b, g, r;
        hn::LoadInterleaved3(bytes, pixels + 3 * i, b, g, r);
        const auto blue = hn::BitCast(words, b), green = hn::BitCast(words, g);
        const auto red = hn::BitCast(words, r);
        const auto even = LumaOfWords(hn::And(blue, low), hn::And(green, low), hn::And(red, low));
        const auto odd =
            LumaOfWords(hn::ShiftRight<8>(blue), hn::ShiftRight<8>(green), hn::ShiftRight<8>(red));
        const auto both = hn::Or(hn::ShiftRight<8>(even), hn::AndNot(low, odd));
        hn::StoreU(hn::BitCast(bytes, both), bytes, luma + i);
    }
    return i;
}
#endif

void LumaOfRun(const std::uint8_t* pixels, std::size_t pixelCount, std::uint8_t* luma) {
    for (std::size_t i = LumaOfVectors(pixels, pixelCount, luma); i < pixelCount; ++i)
        luma[i] = LumaOf(pixels[3 * i], pixels[3 * i + 1], pixels[3 * i + 2]);
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(LumaOfRun);

}  // namespace

void LumaOfPixels(const std::uint8_t* pixels, std::size_t pixelCount, std::uint8_t* luma) {
    HWY_DYNAMIC_DISPATCH(LumaOfRun)(pixels, pixelCount, luma);
}

}  // namespace velloran
#endif  // HWY_ONCE
