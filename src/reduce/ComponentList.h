#pragma once

// Connected regions of black, held as runs: (A. Rosenfeld, J. Pfaltz, "Sequential Operations in
// Digital Picture Processing", 1966.) 8-connected; rows are counted from the top of the picture.

#include <algorithm>
#include <cstdint>
#include <vector>

#include "core/PlaneView.h"

namespace velloran {

struct Run {
    std::int32_t y;
    std::uint16_t x1, x2;  // first and last column
    std::int32_t component;
};

struct Component {
    std::int32_t minX, minY, maxX, maxY;  // inclusive
    std::int32_t pixels;
    std::int32_t runs, firstRun;  // a removed component has 0 runs

    bool IsEmpty() const { return runs == 0; }
};

/// What counts as large, small and tiny, in pixels, at a resolution.
struct SizeLimits {
    int large, small, tiny;
};

/// The resolution is limited to 200..900 dpi first.
constexpr SizeLimits SizeLimitsAt(int dpi) {
    dpi = std::clamp(dpi, 200, 900);
    return {std::min(dpi, 500), std::max(dpi / 150, 2), std::max(dpi * dpi / 20000 - 1, 0)};
}

class ComponentList {
 public:
    /// Black is any sample below 255; `topDown` has the top row of the picture first and is at most
    /// 65536 wide. Throws std::bad_alloc.
    explicit ComponentList(ConstPlaneView topDown, int dpi = 300);

    const SizeLimits& Limits() const { return limits_; }

    const std::vector<Component>& Components() const { return components_; }
    void Remove(std::size_t index) { components_[index].runs = 0; }

    /// Runs of a component, `runs` of them.
    const Run* RunsOf(const Component& component) const {
        return runs_.data() + component.firstRun;
    }

 private:
    void CollectRuns(ConstPlaneView topDown);
    void JoinRows();
    void BuildComponents();

    SizeLimits limits_;
    std::vector<Run> runs_;
    std::vector<Component> components_;
};

}  // namespace velloran
