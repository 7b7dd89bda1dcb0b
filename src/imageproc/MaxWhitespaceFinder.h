#pragma once

// Large empty rectangles of a binary image, best first, by branch and bound. (T. Breuel, "Two
// Geometric Algorithms for Layout Analysis", 2002.)

#include <cstdint>
#include <memory>
#include <queue>
#include <utility>
#include <vector>

#include "imageproc/BinaryImage.h"

namespace velloran::imageproc {

/// A rectangle that waits, with the obstacles in it that it has not been split around.
struct WhitespaceRegion {
    QT::QRect bounds;
    std::vector<QT::QRect> pending;
    std::size_t knownObstacles = 0;  // how many of the finder's obstacles it has seen
};

// Orderings: true when `a` comes behind `b`. Each is bounded by the enclosing rectangle, so that
// the first empty rectangle that comes up is the best one.
struct PreferHorizontal {
    bool operator()(const WhitespaceRegion& a, const WhitespaceRegion& b) const;
};
struct PreferVertical {
    bool operator()(const WhitespaceRegion& a, const WhitespaceRegion& b) const;
};
struct AreaCompare {
    bool operator()(const WhitespaceRegion& a, const WhitespaceRegion& b) const;
};

/// The queue of rectangles.
class PriorityStorage {
 public:
    virtual ~PriorityStorage() = default;
    virtual bool empty() const = 0;
    virtual void push(WhitespaceRegion region) = 0;
    virtual const WhitespaceRegion& top() const = 0;
    virtual void pop() = 0;
};

template <typename Ordering>
class PriorityStorageImpl : public PriorityStorage {
 public:
    bool empty() const override { return queue_.empty(); }
    void push(WhitespaceRegion region) override { queue_.push(std::move(region)); }
    const WhitespaceRegion& top() const override { return queue_.top(); }
    void pop() override { queue_.pop(); }

 private:
    std::priority_queue<WhitespaceRegion, std::vector<WhitespaceRegion>, Ordering> queue_;
};

class max_whitespace_finder {
 public:
    enum ObstacleMode { kAutoObstacles = 0, kManualObstacles = 1 };

    /// Rectangles with a side below `minSize` are dropped. A null image throws
    /// std::invalid_argument.
    max_whitespace_finder(std::unique_ptr<PriorityStorage> storage, const BinaryImage& image,
                          QT::QSize minSize);

    /// Makes the finder with one of the orderings.
    template <typename Ordering>
    static max_whitespace_finder make(const BinaryImage& image, QT::QSize minSize = {4, 4}) {
        return {std::make_unique<PriorityStorageImpl<Ordering>>(), image, minSize};
    }

    /// Rectangles found from now on keep clear of it.
    void addObstacle(const QT::QRect& obstacle);

    /// The next empty rectangle, or the null rectangle when the queue is empty or `maxIterations`
    /// are spent. With kAutoObstacles it becomes an obstacle itself.
    QT::QRect next(ObstacleMode obstacleMode = kAutoObstacles, int maxIterations = 1'000'000);

    /// All that next() gave so far.
    const std::vector<QT::QRect>& results() const { return results_; }

 private:
    bool hasBlack(const QT::QRect& rect) const;
    std::pair<int, int> blackPixelNearCenter(QT::QRect rect) const;
    void splitAround(const WhitespaceRegion& region, const QT::QRect& obstacle);
    void pushIfLargeEnough(const WhitespaceRegion& parent, const QT::QRect& bounds);
    void takeNewObstacles(WhitespaceRegion& region) const;

    std::vector<std::int32_t> integral_;  // black pixels above and left of each corner
    int integralStride_;
    std::unique_ptr<PriorityStorage> storage_;
    std::vector<QT::QRect> obstacles_;
    std::vector<QT::QRect> results_;
    QT::QSize minSize_;
};

}  // namespace velloran::imageproc
