#include "imaging/CountLevels.h"

#include <vector>

#include "core/Threads.h"

namespace velloran {

LevelCounts CountLevels(ConstPlaneView pixels, int channel) {
    // Two tables a thread: one would wait for itself where neighbours have the same level.
    struct Tables {
        LevelCounts even{}, odd{};
    };
    std::vector<Tables> perThread(static_cast<std::size_t>(MaxThreads()));
#pragma omp parallel for schedule(static) if (IsWorthThreads(pixels))
    for (int y = 0; y < pixels.height; ++y) {
        Tables& tables = perThread[static_cast<std::size_t>(ThreadNumber())];
        const std::uint8_t* sample = pixels.Row(y).data() + channel;
        const std::ptrdiff_t step = pixels.channels;
        int x = 0;
        for (; x + 2 <= pixels.width; x += 2) {
            ++tables.even[sample[x * step]];
            ++tables.odd[sample[(x + 1) * step]];
        }
        if (x < pixels.width)
            ++tables.even[sample[x * step]];
    }
    LevelCounts counts{};
    for (const Tables& tables : perThread)
        for (std::size_t level = 0; level < 256; ++level)
            counts[level] += tables.even[level] + tables.odd[level];
    return counts;
}

}  // namespace velloran
