#include "reduce/ComponentList.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "core/StepContext.h"

namespace velloran {
namespace {

/// First column from `x` on whose sample is below 255, or the width: white goes by in words.
int NextBlack(const std::uint8_t* row, int x, int width) {
    constexpr std::uint64_t kWhite = ~std::uint64_t{0};
    while (x + 8 <= width) {
        std::uint64_t eight;
        std::memcpy(&eight, row + x, 8);
        if (eight != kWhite)
            break;
        x += 8;
    }
    while (x < width && row[x] == 255)
        ++x;
    return x;
}

int NextWhite(const std::uint8_t* row, int x, int width) {
    while (x < width && row[x] != 255)
        ++x;
    return x;
}

/// Labels that turned out to be one: the lower label stands for both.
std::int32_t Root(std::vector<std::int32_t>& parent, std::int32_t label) {
    while (parent[static_cast<std::size_t>(label)] != label) {
        auto& above = parent[static_cast<std::size_t>(label)];
        above = parent[static_cast<std::size_t>(above)];
        label = above;
    }
    return label;
}

}  // namespace

ComponentList::ComponentList(ConstPlaneView topDown, int dpi) : limits_(SizeLimitsAt(dpi)) {
    CollectRuns(topDown);
    JoinRows();
    BuildComponents();
}

void ComponentList::CollectRuns(ConstPlaneView topDown) {
    const CancelToken cancel = CurrentCancel();
    for (int y = 0; y < topDown.height && !cancel.IsCancelled(); ++y) {
        const std::uint8_t* row = topDown.Row(y).data();
        for (int x = NextBlack(row, 0, topDown.width); x < topDown.width;) {
            const int end = NextWhite(row, x, topDown.width);
            runs_.push_back(
                {y, static_cast<std::uint16_t>(x), static_cast<std::uint16_t>(end - 1), 0});
            x = NextBlack(row, end, topDown.width);
        }
    }
}

/// Gives each run the label of a run that it touches in the row above, or a new one, and then the
/// lowest of the labels that were joined, counted without gaps.
void ComponentList::JoinRows() {
    std::vector<std::int32_t> parent;
    std::size_t above = 0, aboveEnd = 0;  // runs of the row above
    const CancelToken cancel = CurrentCancel();
    for (std::size_t i = 0; i < runs_.size();) {
        if (cancel.IsCancelled()) {
            runs_.resize(i);  // those that have a label
            break;
        }
        const std::int32_t y = runs_[i].y;
        if (aboveEnd == 0 || runs_[aboveEnd - 1].y != y - 1)
            above = aboveEnd;
        const std::size_t begin = i;
        for (; i < runs_.size() && runs_[i].y == y; ++i) {
            Run& run = runs_[i];
            while (above < aboveEnd && runs_[above].x2 + 1 < run.x1)
                ++above;
            std::int32_t label = -1;
            for (std::size_t j = above; j < aboveEnd && runs_[j].x1 <= run.x2 + 1; ++j) {
                const std::int32_t other = Root(parent, runs_[j].component);
                if (label < 0) {
                    label = other;
                } else if (other != label) {
                    const std::int32_t low = std::min(label, other);
                    parent[static_cast<std::size_t>(std::max(label, other))] = low;
                    label = low;
                }
            }
            if (label < 0) {
                label = static_cast<std::int32_t>(parent.size());
                parent.push_back(label);
            }
            run.component = label;
        }
        above = begin;
        aboveEnd = i;
    }
    std::vector<std::int32_t> compact(parent.size(), -1);
    std::int32_t count = 0;
    for (std::size_t label = 0; label < parent.size(); ++label) {
        const std::int32_t root = Root(parent, static_cast<std::int32_t>(label));
        compact[label] = root == static_cast<std::int32_t>(label)
                             ? count++
                             : compact[static_cast<std::size_t>(root)];
    }
    for (Run& run : runs_)
        run.component = compact[static_cast<std::size_t>(run.component)];
    components_.assign(static_cast<std::size_t>(count), Component{});
}

void ComponentList::BuildComponents() {
    for (const Run& run : runs_)
        ++components_[static_cast<std::size_t>(run.component)].runs;
    std::int32_t first = 0;
    for (Component& component : components_) {
        component.firstRun = first;
        first += component.runs;
        component.runs = 0;
    }
    std::vector<Run> sorted(runs_.size());
    for (const Run& run : runs_) {
        Component& c = components_[static_cast<std::size_t>(run.component)];
        if (c.runs == 0) {
            c.minX = run.x1;
            c.maxX = run.x2;
            c.minY = run.y;
        }
        c.minX = std::min<std::int32_t>(c.minX, run.x1);
        c.maxX = std::max<std::int32_t>(c.maxX, run.x2);
        c.maxY = run.y;
        c.pixels += run.x2 - run.x1 + 1;
        sorted[static_cast<std::size_t>(c.firstRun + c.runs++)] = run;
    }
    runs_ = std::move(sorted);
}

}  // namespace velloran
