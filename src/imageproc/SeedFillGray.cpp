#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <vector>

#include "core/StepContext.h"
#include "imageproc/SeedFill.h"

namespace velloran::imageproc {
namespace {

struct Offset {
    int x, y;
};
constexpr std::array<Offset, 8> kNeighbors = {
    {{-1, 0}, {1, 0}, {0, -1}, {0, 1}, {-1, -1}, {1, -1}, {-1, 1}, {1, 1}}};

std::span<const Offset> neighborsOf(Connectivity connectivity) {
    return std::span(kNeighbors).first(connectivity == Connectivity::k8 ? 8 : 4);
}

/// The neighbours that a raster scan has passed: the row before and the sample before.
std::uint8_t highestPassed(const std::uint8_t* row, const std::uint8_t* passed, int x, int step,
                           int width, Connectivity connectivity) {
    std::uint8_t highest = row[x];
    const auto take = [&](const std::uint8_t* line, int at) {
        if (line != nullptr && at >= 0 && at < width && line[at] > highest)
            highest = line[at];
    };
    take(row, x - step);
    take(passed, x);
    if (connectivity == Connectivity::k8) {
        take(passed, x - 1);
        take(passed, x + 1);
    }
    return highest;
}

/// One scan over the plane, forward (step 1) or backward (-1).
void scan(PlaneView seed, ConstPlaneView mask, int step, Connectivity connectivity) {
    const CancelToken cancel = CurrentCancel();
    for (int i = 0; i < seed.height && !cancel.IsCancelled(); ++i) {
        const int y = step > 0 ? i : seed.height - 1 - i;
        std::uint8_t* row = seed.Row(y).data();
        const std::uint8_t* limit = mask.Row(y).data();
        const std::uint8_t* passed = i == 0 ? nullptr : seed.Row(y - step).data();
        for (int j = 0; j < seed.width; ++j) {
            const int x = step > 0 ? j : seed.width - 1 - j;
            const std::uint8_t reached =
                std::min(limit[x], highestPassed(row, passed, x, step, seed.width, connectivity));
            row[x] = std::max(row[x], reached);
        }
    }
}

constexpr std::size_t kPollEvery = 65536;  // samples

/// What two scans leave to do: from the highest level down, so that a sample is raised once, to
/// where it ends, and the work grows with the pixels.
class LevelFill {
 public:
    LevelFill(PlaneView seed, ConstPlaneView mask, Connectivity connectivity)
        : seed_(seed), mask_(mask), neighbors_(neighborsOf(connectivity)) {}

    void run() {
        const CancelToken cancel = CurrentCancel();
        for (int y = 0; y < seed_.height && !cancel.IsCancelled(); ++y)
            for (int x = 0; x < seed_.width; ++x)
                if (canRaiseANeighbor(x, y))
                    waiting_[seed_.Row(y)[x]].push_back({x, y});
        std::size_t told = 0;
        for (std::size_t level = waiting_.size(); level-- > 0;)
            while (!waiting_[level].empty()) {
                if (++told % kPollEvery == 0 && cancel.IsCancelled())
                    return;
                const Offset at = waiting_[level].back();
                waiting_[level].pop_back();
                if (seed_.Row(at.y)[at.x] == level)  // else it was raised, and has been told then
                    raiseNeighbors(at.x, at.y);
            }
    }

 private:
    /// Where a neighbour rises to, 0 where it stays.
    int raisedLevel(int level, int x, int y) const {
        if (x < 0 || y < 0 || x >= seed_.width || y >= seed_.height)
            return 0;
        const int reached = std::min<int>(level, mask_.Row(y)[x]);
        return reached > seed_.Row(y)[x] ? reached : 0;
    }

    bool canRaiseANeighbor(int x, int y) const {
        const int level = seed_.Row(y)[x];
        return std::any_of(neighbors_.begin(), neighbors_.end(), [&](const Offset& offset) {
            return raisedLevel(level, x + offset.x, y + offset.y) != 0;
        });
    }

    void raiseNeighbors(int x, int y) {
        const int level = seed_.Row(y)[x];
        for (const Offset& offset : neighbors_) {
            const Offset at{x + offset.x, y + offset.y};
            const int raised = raisedLevel(level, at.x, at.y);
            if (raised == 0)
                continue;
            seed_.Row(at.y)[at.x] = static_cast<std::uint8_t>(raised);
            waiting_[static_cast<std::size_t>(raised)].push_back(at);
        }
    }

    PlaneView seed_;
    ConstPlaneView mask_;
    std::span<const Offset> neighbors_;
    std::array<std::vector<Offset>, 256> waiting_;
};

}  // namespace

void seedFillGrayInPlace(CDibImage& seed, const CDibImage& mask, Connectivity connectivity) {
    if (seed.GetWidth() != mask.GetWidth() || seed.GetHeight() != mask.GetHeight() ||
        seed.GetBpp() != 8 || mask.GetBpp() != 8)
        throw std::invalid_argument("seedFillGrayInPlace: seed and mask have different sizes");
    const PlaneView view = ViewOf(seed);
    const ConstPlaneView limit = ViewOf(mask);
    for (int y = 0; y < view.height; ++y)
        for (int x = 0; x < view.width; ++x)
            view.Row(y)[x] = std::min(view.Row(y)[x], limit.Row(y)[x]);
    scan(view, limit, 1, connectivity);
    scan(view, limit, -1, connectivity);
    LevelFill(view, limit, connectivity).run();
}

}  // namespace velloran::imageproc
