#include "page/PackedLine.h"

namespace velloran {

void lineTable(std::vector<int>& table, int x1, int x2, int width, int height) {
    table.resize(static_cast<std::size_t>(std::max(height, 0)));
    const std::int64_t steps = std::max(height - 1, 1);
    const std::int64_t across = std::int64_t{x2} - x1;
    const std::int64_t size = across < 0 ? -across : across;
    for (int fromTop = 0; fromTop < height; ++fromTop) {
        const std::int64_t moved = (2 * size * fromTop + steps) / (2 * steps);
        const std::int64_t x = across < 0 ? x1 - moved : x1 + moved;
        table[static_cast<std::size_t>(height - 1 - fromTop)] =
            static_cast<int>(std::clamp<std::int64_t>(x, 0, width - 1));
    }
}

}  // namespace velloran
