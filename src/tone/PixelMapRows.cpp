#include "tone/PixelMapRows.h"

#include <bit>
#include <cstring>

#include "core/StepContext.h"
#include "core/Threads.h"

#define HWY_WANT_AVX3_DL  // has permutes of bytes
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tone/PixelMapRows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

#if HWY_TARGET == HWY_SCALAR || HWY_HAVE_SCALABLE

/// Reading eight samples at once spares the loop seven of its nine loads.
void MapRun(const PixelMap& map, std::uint8_t* bytes, std::size_t count) {
    std::size_t i = 0;
    for (; i + 8 <= count; i += 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes + i, 8);
        for (int k = 0; k < 8; ++k) {
            const int shift = std::endian::native == std::endian::little ? 8 * k : 56 - 8 * k;
            bytes[i + k] = map[word >> shift & 255];
        }
    }
    for (; i < count; ++i)
        bytes[i] = map[bytes[i]];
}

void MapPixelRun(const ChannelMaps& maps, std::uint8_t* bytes, std::size_t pixelCount) {
    for (std::size_t i = 0; i < pixelCount; ++i, bytes += 3) {
        bytes[0] = maps[0][bytes[0]];
        bytes[1] = maps[1][bytes[1]];
        bytes[2] = maps[2][bytes[2]];
    }
}

#else

namespace hn = hwy::HWY_NAMESPACE;
using Bytes = hn::ScalableTag<std::uint8_t>;
using SignedBytes = hn::ScalableTag<std::int8_t>;
using Vector = hn::Vec<Bytes>;
constexpr std::size_t kVector = hn::MaxLanes(Bytes());
constexpr std::size_t kPair = 2 * kVector;

/// Two vectors of samples share each load of a piece of a table.
struct Pair {
    Vector a, b;
};

HWY_INLINE Pair Load(const std::uint8_t* a, const std::uint8_t* b) {
    return {hn::LoadU(Bytes(), a), hn::LoadU(Bytes(), b)};
}

HWY_INLINE void Store(const Pair& pair, std::uint8_t* a, std::uint8_t* b) {
    hn::StoreU(pair.a, Bytes(), a);
    hn::StoreU(pair.b, Bytes(), b);
}

/// `set` where the top bit of a byte is set.
HWY_INLINE Vector Select(Vector clear, Vector set, Vector topBits) {
    const SignedBytes d;
    return hn::BitCast(Bytes(), hn::IfNegativeThenElse(hn::BitCast(d, topBits), hn::BitCast(d, set),
                                                       hn::BitCast(d, clear)));
}

#if HWY_TARGET == HWY_AVX3_DL && defined(__GNUC__) && !defined(__clang__)

/// One permute looks up 7 bits in two vectors of 64 entries each; two of them and a selection by
/// the top bit are a whole look-up.
class Table {
 public:
    HWY_INLINE explicit Table(const PixelMap& map) { std::memcpy(piece_, map.data(), map.size()); }

    HWY_INLINE Pair LookUp(const Pair& samples) const {
        return {LookUp(samples.a), LookUp(samples.b)};
    }

 private:
    using Piece = std::uint8_t __attribute__((vector_size(64)));
    static_assert(sizeof(Vector) == sizeof(Piece));

    // Of shuffles of whole vectors by bytes, Highway has those of 4 bits alone.
    HWY_INLINE Vector LookUp(Vector samples) const {
        Piece at;
        std::memcpy(&at, &samples, sizeof at);
        const Piece dark = __builtin_shuffle(piece_[0], piece_[1], at);
        const Piece light = __builtin_shuffle(piece_[2], piece_[3], at);
        Vector clear, set;
        std::memcpy(&clear, &dark, sizeof clear);
        std::memcpy(&set, &light, sizeof set);
        return Select(clear, set, samples);
    }

    Piece piece_[4];
};

#else

/// A byte shuffle looks up 4 bits in a table of 16 entries. The low half of a sample is looked up
/// in all sixteen pieces of the table, and the bits of its high half choose among the results: a
/// binary tree of selections.
class Table {
 public:
    HWY_INLINE explicit Table(const PixelMap& map) : map_(map.data()) {}

    HWY_INLINE Pair LookUp(const Pair& samples) const {
        const Vector lowHalf = hn::Set(Bytes(), 15);
        const Pair low{hn::And(samples.a, lowHalf), hn::And(samples.b, lowHalf)};
        // A selection looks at the top bit: samples shifted until bit 4, 5, 6, 7 stands there.
        Pair selectors[4];
        selectors[3] = samples;
        for (int bit = 2; bit >= 0; --bit)
            selectors[bit] = {hn::Add(selectors[bit + 1].a, selectors[bit + 1].a),
                              hn::Add(selectors[bit + 1].b, selectors[bit + 1].b)};
        return LookUpBits<7>(map_, low, selectors);
    }

 private:
    /// Looks up bits 0 to `kTopBit` of the samples in the 2 << kTopBit entries from `table` on.
    template <int kTopBit>
    static HWY_INLINE Pair LookUpBits(const std::uint8_t* table, const Pair& low,
                                      const Pair* selectors) {
        if constexpr (kTopBit == 3) {
            const Vector piece = hn::LoadDup128(Bytes(), table);
            return {hn::TableLookupBytes(piece, low.a), hn::TableLookupBytes(piece, low.b)};
        } else {
            const Pair clear = LookUpBits<kTopBit - 1>(table, low, selectors);
            const Pair set = LookUpBits<kTopBit - 1>(table + (1 << kTopBit), low, selectors);
            const Pair& chosen = selectors[kTopBit - 4];
            return {Select(clear.a, set.a, chosen.a), Select(clear.b, set.b, chosen.b)};
        }
    }

    const std::uint8_t* map_;
};

#endif

void MapRun(const PixelMap& map, std::uint8_t* bytes, std::size_t count) {
    const Table table(map);
    const auto mapPair = [&](std::uint8_t* at) HWY_ATTR {
        Store(table.LookUp(Load(at, at + kVector)), at, at + kVector);
    };
    for (; count >= kPair; count -= kPair, bytes += kPair)
        mapPair(bytes);
    if (count == 0)
        return;
    std::uint8_t rest[kPair] = {};
    std::memcpy(rest, bytes, count);
    mapPair(rest);
    std::memcpy(bytes, rest, count);
}

/// Which bytes of three vectors on end, whole pixels, are of one channel. Entry k has all bits set
/// in the bytes j for which j + k divides by 3.
class PixelMasks {
 public:
    HWY_INLINE PixelMasks() {
        for (std::size_t k = 0; k < 3; ++k) {
            std::uint8_t bytes[kVector];
            for (std::size_t j = 0; j < kVector; ++j)
                bytes[j] = (j + k) % 3 == 0 ? 0xFF : 0;
            at_[k] = hn::LoadU(Bytes(), bytes);
        }
    }

    /// Byte j of vector i lies at kVector * i + j.
    HWY_INLINE Vector Of(std::size_t channel, std::size_t i) const {
        return at_[(kVector * i + 3 - channel) % 3];
    }

 private:
    Vector at_[3];
};

// In three vectors on end, byte j belongs to another channel in each of them. So selections alone
// gather the samples of one channel, and selections put them back.
HWY_INLINE void MapSixVectors(const Table (&tables)[3], const PixelMasks& masks,
                              std::uint8_t* bytes) {
    std::uint8_t* other = bytes + 3 * kVector;
    Pair in[3], mapped[3];
    for (std::size_t i = 0; i < 3; ++i)
        in[i] = Load(bytes + i * kVector, other + i * kVector);
    const auto join = [&](const Pair(&from)[3], Vector second, Vector third) HWY_ATTR {
        return Pair{Select(Select(from[0].a, from[1].a, second), from[2].a, third),
                    Select(Select(from[0].b, from[1].b, second), from[2].b, third)};
    };
    for (std::size_t c = 0; c < 3; ++c)
        mapped[c] = tables[c].LookUp(join(in, masks.Of(c, 1), masks.Of(c, 2)));
    for (std::size_t i = 0; i < 3; ++i)
        Store(join(mapped, masks.Of(1, i), masks.Of(2, i)), bytes + i * kVector,
              other + i * kVector);
}

void MapPixelRun(const ChannelMaps& maps, std::uint8_t* bytes, std::size_t pixelCount) {
    const Table tables[3] = {Table(maps[0]), Table(maps[1]), Table(maps[2])};
    const PixelMasks masks;
    for (; pixelCount >= kPair; pixelCount -= kPair, bytes += 3 * kPair)
        MapSixVectors(tables, masks, bytes);
    if (pixelCount == 0)
        return;
    std::uint8_t rest[3 * kPair] = {};
    std::memcpy(rest, bytes, 3 * pixelCount);
    MapSixVectors(tables, masks, rest);
    std::memcpy(bytes, rest, 3 * pixelCount);
}

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(MapRun);
HWY_EXPORT(MapPixelRun);

}  // namespace

void MapBytes(const PixelMap& map, std::uint8_t* bytes, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(MapRun)(map, bytes, count);
}

void MapPixels(const ChannelMaps& maps, std::uint8_t* bytes, std::size_t pixelCount) {
    HWY_DYNAMIC_DISPATCH(MapPixelRun)(maps, bytes, pixelCount);
}

void MapRows(const PixelMap& map, PlaneView pixels) {
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(pixels))
    for (int y = 0; y < pixels.height; ++y) {
        if (cancel.IsCancelled())
            continue;
        const std::span<std::uint8_t> row = pixels.Row(y);
        MapBytes(map, row.data(), row.size());
    }
}

void MapChannelRows(const ChannelMaps& maps, PlaneView pixels) {
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(pixels))
    for (int y = 0; y < pixels.height; ++y) {
        if (cancel.IsCancelled())
            continue;
        MapPixels(maps, pixels.Row(y).data(), static_cast<std::size_t>(pixels.width));
    }
}

}  // namespace velloran
#endif  // HWY_ONCE
