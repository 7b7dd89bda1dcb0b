#include "imaging/CountLevels.h"

#include <vector>

#include "core/Threads.h"

namespace velloran {

namespace {

/// Two tables: one would wait for itself where neighbours have the same level.
struct Tables {
    LevelCounts even{}, odd{};

    void Count(BasicChannelRow<const std::uint8_t> samples) {
        int x = 0;
        for (; x + 2 <= samples.width; x += 2) {
            ++even[samples[x]];
            ++odd[samples[x + 1]];
        }
        if (x < samples.width)
            ++even[samples[x]];
    }

    void AddTo(LevelCounts& counts) const {
        for (std::size_t level = 0; level < counts.size(); ++level)
            counts[level] += even[level] + odd[level];
    }
};

}  // namespace

LevelCounts CountLevels(ConstPlaneView pixels, int channel) {
    const ConstChannelView samples = pixels.Channel(channel);
    LevelCounts counts{};
    if (!IsWorthThreads(pixels)) {
        Tables tables;
        for (int y = 0; y < pixels.height; ++y)
            tables.Count(samples.Row(y));
        tables.AddTo(counts);
        return counts;
    }
    std::vector<Tables> perThread(static_cast<std::size_t>(MaxThreads()));
#pragma omp parallel for schedule(static)
    for (int y = 0; y < pixels.height; ++y)
        perThread[static_cast<std::size_t>(ThreadNumber())].Count(samples.Row(y));
    for (const Tables& tables : perThread)
        tables.AddTo(counts);
    return counts;
}

}  // namespace velloran
