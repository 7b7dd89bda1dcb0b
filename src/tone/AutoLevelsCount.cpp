#include "tone/AutoLevelsCount.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>

#include "core/StepContext.h"
#include "core/Threads.h"
#include "tone/AutoLevelsLuma.h"
#include "tone/PixelMapRows.h"

namespace velloran {
namespace {

// Counting a byte costs a store, and the processor makes one a cycle. Bytes are therefore counted
// two at a time, in a table of all pairs, and the table is summed up along both sides at the end.
// A page keeps to few of the pairs, so that the table's used part stays near.
using PairTable = std::array<std::uint32_t, 256 * 256>;

constexpr std::size_t kStretch = 512;  // pixels whose luma is worked out at a time

/// The histograms that the first and the second byte of a pair count in.
struct PairTarget {
    std::size_t first, second;
};

std::size_t PairAt(const std::uint8_t* bytes) {
    return static_cast<std::size_t>(bytes[0] | bytes[1] << 8);
}

void CountBytePairs(std::span<const std::uint8_t> bytes, PairTable& table, Histogram& rest) {
    const std::uint8_t* at = bytes.data();
    for (std::size_t count = bytes.size() / 2; count > 0; --count, at += 2)
        ++table[PairAt(at)];
    if (bytes.size() % 2 != 0)
        ++rest[bytes.back()];
}

/// Two pixels of three channels are three pairs.
template <std::size_t N>
void CountPixelPairs(std::span<const std::uint8_t> bytes, PairTable* tables,
                     std::array<Histogram, N>& rest) {
    const std::uint8_t* at = bytes.data();
    for (std::size_t count = bytes.size() / 6; count > 0; --count, at += 6)
        for (std::size_t pair = 0; pair < 3; ++pair)
            ++tables[pair][PairAt(at + 2 * pair)];
    if (bytes.size() % 6 != 0)
        for (std::size_t c = 0; c < 3; ++c)
            ++rest[c][at[c]];
}

/// All bytes in one histogram.
struct BytesCounter {
    static constexpr std::array<PairTarget, 1> kPairs{{{0, 0}}};
    using Histograms = std::array<Histogram, 1>;

    static void CountEach(std::span<const std::uint8_t> bytes, Histograms& sums) {
        for (const std::uint8_t byte : bytes)
            ++sums[0][byte];
    }
    static void CountPairs(std::span<const std::uint8_t> bytes, PairTable* tables,
                           Histograms& sums) {
        CountBytePairs(bytes, tables[0], sums[0]);
    }
};

/// Blue, green and red.
struct ChannelsCounter {
    static constexpr std::array<PairTarget, 3> kPairs{{{0, 1}, {2, 0}, {1, 2}}};
    using Histograms = std::array<Histogram, 3>;

    static void CountEach(std::span<const std::uint8_t> bytes, Histograms& sums) {
        for (std::size_t i = 0; i < bytes.size(); ++i)
            ++sums[i % 3][bytes[i]];
    }
    static void CountPairs(std::span<const std::uint8_t> bytes, PairTable* tables,
                           Histograms& sums) {
        CountPixelPairs(bytes, tables, sums);
    }
};

/// Luma of a stretch of pixels.
struct Luma {
    std::array<std::uint8_t, kStretch> bytes;
    std::size_t count;

    explicit Luma(std::span<const std::uint8_t> pixels) : count(pixels.size() / 3) {
        LumaOfPixels(pixels.data(), count, bytes.data());
    }
    std::span<const std::uint8_t> View() const { return {bytes.data(), count}; }
};

struct LumaCounter {
    static constexpr auto kPairs = BytesCounter::kPairs;
    using Histograms = BytesCounter::Histograms;

    static void CountEach(std::span<const std::uint8_t> pixels, Histograms& sums) {
        BytesCounter::CountEach(Luma(pixels).View(), sums);
    }
    static void CountPairs(std::span<const std::uint8_t> pixels, PairTable* tables,
                           Histograms& sums) {
        BytesCounter::CountPairs(Luma(pixels).View(), tables, sums);
    }
};

/// Blue, green, red and luma.
struct ChannelsAndLumaCounter {
    static constexpr std::array<PairTarget, 4> kPairs{{{0, 1}, {2, 0}, {1, 2}, {3, 3}}};
    using Histograms = std::array<Histogram, 4>;

    static void CountEach(std::span<const std::uint8_t> pixels, Histograms& sums) {
        for (std::size_t i = 0; i < pixels.size(); ++i)
            ++sums[i % 3][pixels[i]];
        const Luma luma(pixels);
        for (const std::uint8_t byte : luma.View())
            ++sums[3][byte];
    }
    static void CountPairs(std::span<const std::uint8_t> pixels, PairTable* tables,
                           Histograms& sums) {
        CountPixelPairs(pixels, tables, sums);
        const Luma luma(pixels);
        CountBytePairs(luma.View(), tables[3], sums[3]);
    }
};

void AddPairs(const PairTable& table, Histogram& first, Histogram& second) {
    for (std::size_t high = 0; high < 256; ++high) {
        std::uint32_t sum = 0;
        for (std::size_t low = 0; low < 256; ++low) {
            const std::uint32_t count = table[high << 8 | low];
            first[low] += count;
            sum += count;
        }
        second[high] += sum;
    }
}

template <typename Counter>
using Histograms = typename Counter::Histograms;

/// Counts a row, in stretches of at most kStretch pixels; byte by byte where there are no tables.
template <typename Counter>
void CountRow(std::span<const std::uint8_t> row, int channels, PairTable* tables,
              Histograms<Counter>& sums) {
    const std::size_t step = kStretch * static_cast<std::size_t>(channels);
    while (!row.empty()) {
        const auto stretch = row.first(std::min(step, row.size()));
        if (tables != nullptr)
            Counter::CountPairs(stretch, tables, sums);
        else
            Counter::CountEach(stretch, sums);
        row = row.subspan(stretch.size());
    }
}

template <typename Counter>
void AddTo(Histograms<Counter>& total, const Histograms<Counter>& own, const PairTable* tables) {
    for (std::size_t n = 0; n < own.size(); ++n)
        for (std::size_t level = 0; level < own[n].size(); ++level)
            total[n][level] += own[n][level];
    for (std::size_t t = 0; tables != nullptr && t < Counter::kPairs.size(); ++t)
        AddPairs(tables[t], total[Counter::kPairs[t].first], total[Counter::kPairs[t].second]);
}

/// A small view is not worth the tables; without memory for them the work goes on without.
template <typename Counter>
Histograms<Counter> CountRows(ConstPlaneView pixels) {
    constexpr std::size_t kTables = Counter::kPairs.size();
    const auto threads = static_cast<std::size_t>(MaxThreads());
    std::unique_ptr<PairTable[]> all;
    if (IsWorthThreads(pixels))
        all.reset(new (std::nothrow) PairTable[threads * kTables]());
    Histograms<Counter> total{};
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel if (IsWorthThreads(pixels))
    {
        PairTable* tables =
            all ? all.get() + kTables * static_cast<std::size_t>(ThreadNumber()) : nullptr;
        Histograms<Counter> own{};
#pragma omp for schedule(static) nowait
        for (int y = 0; y < pixels.height; ++y)
            if (!cancel.IsCancelled())
                CountRow<Counter>(pixels.Row(y), pixels.channels, tables, own);
#pragma omp critical(velloran_histograms)
        AddTo<Counter>(total, own, tables);
    }
    return total;
}

}  // namespace

Histogram CountBytes(ConstPlaneView pixels) {
    return CountRows<BytesCounter>(pixels)[0];
}

std::array<Histogram, 3> CountChannels(ConstPlaneView pixels) {
    return CountRows<ChannelsCounter>(pixels);
}

Histogram CountLuma(ConstPlaneView pixels) {
    return CountRows<LumaCounter>(pixels)[0];
}

std::array<Histogram, 4> CountChannelsAndLuma(ConstPlaneView pixels) {
    return CountRows<ChannelsAndLumaCounter>(pixels);
}

}  // namespace velloran
