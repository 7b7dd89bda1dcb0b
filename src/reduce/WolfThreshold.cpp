#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "core/GrayDepth.h"
#include "core/Refusal.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "reduce/Binarize.h"
#include "reduce/WolfRows.h"

namespace velloran {
namespace {

/// Sums over a window that slides down a plane: columns are kept up row by row, and differences of
/// their running sums give the windows of a row. All sums are whole numbers, so a result does not
/// depend on where a thread began.
class WindowSums {
 public:
    WindowSums(ConstPlaneView plane, int reachX, int reachY)
        : plane_(plane),
          reachX_(reachX),
          reachY_(reachY),
          column_(static_cast<std::size_t>(plane.width)),
          columnSquares_(column_.size()),
          running_(column_.size() + 2 * static_cast<std::size_t>(reachX) + 2),
          runningSquares_(running_.size()),
          share_(column_.size()) {}

    /// Goes to row y; rows must follow each other, from any first one.
    void GoTo(int y) {
        if (y == next_) {
            if (y - 1 - reachY_ >= 0)
                AddRow(y - 1 - reachY_, -1);
            if (y + reachY_ < plane_.height)
                AddRow(y + reachY_, 1);
        } else {
            std::fill(column_.begin(), column_.end(), 0);
            std::fill(columnSquares_.begin(), columnSquares_.end(), 0);
            for (int row = std::max(0, y - reachY_);
                 row <= std::min(plane_.height - 1, y + reachY_); ++row)
                AddRow(row, 1);
        }
        next_ = y + 1;
        UpdateRunning();
        UpdateShare(std::min(plane_.height - 1, y + reachY_) - std::max(0, y - reachY_) + 1);
    }

    WolfRow Row() const {
        const int window = 2 * reachX_ + 1;
        return {running_.data(),        running_.data() + window,
                runningSquares_.data(), runningSquares_.data() + window,
                share_.data(),          plane_.width};
    }

 private:
    void AddRow(int y, int sign) {
        const std::uint8_t* sample = plane_.Row(y).data();
        const auto factor = static_cast<std::uint32_t>(sign);  // -1 wraps, and so do the sums
        for (std::size_t x = 0; x < column_.size(); ++x) {
            const std::uint32_t value = sample[x];
            column_[x] += factor * value;
            columnSquares_[x] += factor * (value * value);
        }
    }

    /// Running sums with reachX zeros before the first column and the total behind the last.
    void UpdateRunning() {
        std::uint64_t sum = 0, squares = 0;
        std::size_t at = static_cast<std::size_t>(reachX_);
        for (std::size_t x = 0; x < column_.size(); ++x) {
            sum += column_[x];
            squares += columnSquares_[x];
            ++at;
            running_[at] = sum;
            runningSquares_[at] = squares;
        }
        std::fill(running_.begin() + static_cast<std::ptrdiff_t>(at), running_.end(), sum);
        std::fill(runningSquares_.begin() + static_cast<std::ptrdiff_t>(at), runningSquares_.end(),
                  squares);
    }

    void UpdateShare(int rows) {
        if (rows == rows_)
            return;
        rows_ = rows;
        for (int x = 0; x < plane_.width; ++x) {
            const int columns =
                std::min(plane_.width - 1, x + reachX_) - std::max(0, x - reachX_) + 1;
            share_[static_cast<std::size_t>(x)] =
                1.0 / (static_cast<double>(columns) * static_cast<double>(rows));
        }
    }

    ConstPlaneView plane_;
    int reachX_, reachY_;
    int next_ = -1, rows_ = 0;
    std::vector<std::uint32_t> column_, columnSquares_;
    std::vector<std::uint64_t> running_, runningSquares_;
    std::vector<double> share_;
};

int DarkestLevel(ConstPlaneView plane) {
    int darkest = 255;
    for (int y = 0; y < plane.height; ++y)
        for (const std::uint8_t sample : plane.Row(y))
            darkest = std::min<int>(darkest, sample);
    return darkest;
}

/// Calls `visit(sums, y)` for every row with the sums at that row; each thread has its own.
template <typename Visit>
void ForEachRow(std::vector<WindowSums>& sums, ConstPlaneView plane, Visit&& visit) {
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(plane))
    for (int y = 0; y < plane.height; ++y) {
        if (cancel.IsCancelled())
            continue;
        WindowSums& own = sums[static_cast<std::size_t>(ThreadNumber())];
        own.GoTo(y);
        visit(own, y);
    }
}

double LargestVariance(std::vector<WindowSums>& sums, ConstPlaneView plane) {
    std::vector<double> ofRow(static_cast<std::size_t>(plane.height));
    ForEachRow(sums, plane, [&](const WindowSums& at, int y) {
        ofRow[static_cast<std::size_t>(y)] = LargestVarianceOf(at.Row());
    });
    return *std::max_element(ofRow.begin(), ofRow.end());
}

/// The sides of the window as reaches to either side; odd, no longer than any page needs, and so
/// short that a column's squares fit 32 bits.
int ReachOf(int windowSide, int pageSide) {
    constexpr int kLongest = 32767;
    return std::min({(windowSide | 1) / 2, pageSide, kLongest});
}

}  // namespace

int WolfThreshold(CDibImage& image, int windowWidth, int windowHeight, int lowBound, int highBound,
                  bool keepDepth) {
    if (!image.IsValid() || windowWidth < 3 || windowHeight < 3)
        return 0;
    if (image.IsBW())
        return 1;
    if (ConvertToGray(image) == 0)
        return 0;
    return RefuseWhenOutOfMemory([&] {
        const CDibImage source(image);
        if (!source.IsValid())
            return 0;
        const ConstPlaneView plane = ViewOf(source);
        std::vector<WindowSums> sums(static_cast<std::size_t>(MaxThreads()),
                                     WindowSums(plane, ReachOf(windowWidth, plane.width),
                                                ReachOf(windowHeight, plane.height)));
        const WolfTone tone{static_cast<float>(std::sqrt(LargestVariance(sums, plane))),
                            static_cast<float>(DarkestLevel(plane)), lowBound, highBound};
        if (CurrentCancel().IsCancelled())
            return 0;
        const PlaneView target = ViewOf(image);
        ForEachRow(sums, plane, [&](const WindowSums& at, int y) {
            ThresholdRow(at.Row(), tone, plane.Row(y).data(), target.Row(y).data());
        });
        return keepDepth ? 1 : PackBilevel(image);
    });
}

}  // namespace velloran
