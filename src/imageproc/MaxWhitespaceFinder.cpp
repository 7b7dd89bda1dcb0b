#include "imageproc/MaxWhitespaceFinder.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <tuple>

namespace velloran::imageproc {
namespace {

bool meet(const QT::QRect& a, const QT::QRect& b) {
    return a.left <= b.right && b.left <= a.right && a.top <= b.bottom && b.top <= a.bottom;
}

/// Equal scores come in reading order, so that results do not hang on the queue's inner order.
template <typename Score>
bool comesBehind(const WhitespaceRegion& a, const WhitespaceRegion& b, Score score) {
    const auto key = [&](const WhitespaceRegion& r) {
        return std::tuple(
            score(static_cast<double>(r.bounds.Width()), static_cast<double>(r.bounds.Height())),
            -r.bounds.top, -r.bounds.left, r.bounds.Width());
    };
    return key(a) < key(b);
}

}  // namespace

bool PreferHorizontal::operator()(const WhitespaceRegion& a, const WhitespaceRegion& b) const {
    return comesBehind(a, b, [](double width, double height) { return width * width * height; });
}

bool PreferVertical::operator()(const WhitespaceRegion& a, const WhitespaceRegion& b) const {
    return comesBehind(a, b, [](double width, double height) { return width * height * height; });
}

bool AreaCompare::operator()(const WhitespaceRegion& a, const WhitespaceRegion& b) const {
    return comesBehind(a, b, [](double width, double height) { return width * height; });
}

max_whitespace_finder::max_whitespace_finder(std::unique_ptr<PriorityStorage> storage,
                                             const BinaryImage& image, QT::QSize minSize)
    : integralStride_(image.width() + 1), storage_(std::move(storage)), minSize_(minSize) {
    if (image.isNull())
        throw std::invalid_argument("max_whitespace_finder: null image");
    integral_.assign(static_cast<std::size_t>(integralStride_) * (image.height() + 1), 0);
    for (int y = 0; y < image.height(); ++y) {
        const std::int32_t* above =
            integral_.data() + static_cast<std::ptrdiff_t>(y) * integralStride_;
        std::int32_t* row = integral_.data() + static_cast<std::ptrdiff_t>(y + 1) * integralStride_;
        std::int32_t inRow = 0;
        for (int x = 0; x < image.width(); ++x) {
            inRow += image.isBlack(x, y) ? 1 : 0;
            row[x + 1] = above[x + 1] + inRow;
        }
    }
    pushIfLargeEnough({}, image.rect());
}

void max_whitespace_finder::addObstacle(const QT::QRect& obstacle) {
    if (!obstacle.IsEmpty())
        obstacles_.push_back(obstacle);
}

QT::QRect max_whitespace_finder::next(ObstacleMode obstacleMode, int maxIterations) {
    for (int i = 0; i < maxIterations && !storage_->empty(); ++i) {
        WhitespaceRegion region = storage_->top();
        storage_->pop();
        takeNewObstacles(region);
        if (!region.pending.empty()) {
            const QT::QRect obstacle = region.pending.back();
            region.pending.pop_back();
            splitAround(region, obstacle);
        } else if (hasBlack(region.bounds)) {
            const auto [x, y] = blackPixelNearCenter(region.bounds);
            splitAround(region, {x, y, x, y});
        } else {
            if (obstacleMode == kAutoObstacles)
                obstacles_.push_back(region.bounds);
            results_.push_back(region.bounds);
            return region.bounds;
        }
    }
    return {};
}

bool max_whitespace_finder::hasBlack(const QT::QRect& rect) const {
    const auto at = [this](int x, int y) {
        return integral_[static_cast<std::size_t>(y) * integralStride_ + x];
    };
    return at(rect.right + 1, rect.bottom + 1) - at(rect.left, rect.bottom + 1) -
               at(rect.right + 1, rect.top) + at(rect.left, rect.top) >
           0;
}

/// Halves the rectangle until one pixel is left, each time to the half nearer to the centre when
/// that holds black.
std::pair<int, int> max_whitespace_finder::blackPixelNearCenter(QT::QRect rect) const {
    const int centerX = (rect.left + rect.right) / 2, centerY = (rect.top + rect.bottom) / 2;
    while (rect.Width() > 1 || rect.Height() > 1) {
        QT::QRect first = rect, second = rect;
        bool firstIsNearer;
        if (rect.Width() >= rect.Height()) {
            first.right = (rect.left + rect.right) / 2;
            second.left = first.right + 1;
            firstIsNearer = std::abs(first.right - centerX) <= std::abs(second.left - centerX);
        } else {
            first.bottom = (rect.top + rect.bottom) / 2;
            second.top = first.bottom + 1;
            firstIsNearer = std::abs(first.bottom - centerY) <= std::abs(second.top - centerY);
        }
        const QT::QRect& nearer = firstIsNearer ? first : second;
        rect = hasBlack(nearer) ? nearer : (firstIsNearer ? second : first);
    }
    return {rect.left, rect.top};
}

void max_whitespace_finder::splitAround(const WhitespaceRegion& region, const QT::QRect& obstacle) {
    const QT::QRect& b = region.bounds;
    if (!meet(b, obstacle)) {
        pushIfLargeEnough(region, b);
        return;
    }
    pushIfLargeEnough(region, {b.left, b.top, obstacle.left - 1, b.bottom});
    pushIfLargeEnough(region, {obstacle.right + 1, b.top, b.right, b.bottom});
    pushIfLargeEnough(region, {b.left, b.top, b.right, obstacle.top - 1});
    pushIfLargeEnough(region, {b.left, obstacle.bottom + 1, b.right, b.bottom});
}

void max_whitespace_finder::pushIfLargeEnough(const WhitespaceRegion& parent,
                                              const QT::QRect& bounds) {
    if (bounds.IsEmpty() || bounds.Width() < minSize_.width || bounds.Height() < minSize_.height)
        return;
    WhitespaceRegion region{bounds, {}, parent.knownObstacles};
    for (const QT::QRect& obstacle : parent.pending)
        if (meet(obstacle, bounds))
            region.pending.push_back(obstacle);
    storage_->push(std::move(region));
}

void max_whitespace_finder::takeNewObstacles(WhitespaceRegion& region) const {
    for (; region.knownObstacles < obstacles_.size(); ++region.knownObstacles)
        if (meet(obstacles_[region.knownObstacles], region.bounds))
            region.pending.push_back(obstacles_[region.knownObstacles]);
}

}  // namespace velloran::imageproc
