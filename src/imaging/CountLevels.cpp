#include "imaging/CountLevels.h"

#include <vector>

#include "core/Threads.h"

namespace velloran {

namespace {

/// Two tables: one would wait for itself where neighbours have the same level.
struct Tables {
    LevelCounts even{}, odd{};

    void Count(std::span<const std::uint8_t> row, int width, int channel, std::ptrdiff_t step) {
        const std::uint8_t* sample = row.data() + channel;
        int x = 0;
        for (; x + 2 <= width; x += 2) {
            ++even[sample[x * step]];
            ++odd[sample[(x + 1) * step]];
        }
        if (x < width)
            ++even[sample[x * step]];
    }

    void AddTo(LevelCounts& counts) const {
        for (std::size_t level = 0; level < counts.size(); ++level)
            counts[level] += even[level] + odd[level];
    }
};

}  // namespace

LevelCounts CountLevels(ConstPlaneView pixels, int channel) {
    LevelCounts counts{};
    if (!IsWorthThreads(pixels)) {
        Tables tables;
        for (int y = 0; y < pixels.height; ++y)
            tables.Count(pixels.Row(y), pixels.width, channel, pixels.channels);
        tables.AddTo(counts);
        return counts;
    }
    std::vector<Tables> perThread(static_cast<std::size_t>(MaxThreads()));
#pragma omp parallel for schedule(static)
    for (int y = 0; y < pixels.height; ++y)
        perThread[static_cast<std::size_t>(ThreadNumber())].Count(pixels.Row(y), pixels.width,
                                                                  channel, pixels.channels);
    for (const Tables& tables : perThread)
        tables.AddTo(counts);
    return counts;
}

}  // namespace velloran
