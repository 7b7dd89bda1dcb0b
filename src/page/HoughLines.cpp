#include "page/HoughLines.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "core/ExactMath.h"
#include "core/Rounding.h"
#include "core/StepContext.h"
#include "page/PackedLine.h"

namespace velloran {
namespace {

constexpr int kAngles = 141;
constexpr double kFirstAngle = -7.0, kAngleStep = 0.1;  // degrees
constexpr double kDistanceStep = 5.0;                   // pixels
constexpr double kRadian = 0.017453292519943295;
constexpr int kSideColumns = 3, kLimitWidth = 3;

/// Votes of a sample; brighter edges count for more, by powers of two.
constexpr int WeightOf(std::uint8_t value) {
    constexpr int kBounds[] = {1, 4, 10, 22, 46, 94, 190};
    int weight = 2;
    for (const int bound : kBounds)
        weight += value > bound ? 1 : 0;
    return weight;
}

constexpr auto kWeights = [] {
    std::array<int, 256> weights{};
    for (std::size_t value = 2; value < 256; ++value)
        weights[value] = WeightOf(static_cast<std::uint8_t>(value));
    return weights;
}();

/// What the pixels of rows first <= y < end left of column x vote, for every x: sums of sums, of
/// which the votes of any stretch of rows are one subtraction.
class VoteTable {
 public:
    VoteTable(int width, int height)
        : width_(width),
          votes_((static_cast<std::size_t>(width) + 1) * (static_cast<std::size_t>(height) + 1)) {}

    /// Rows come from the top. `samples` vote from column `first` to the one before `end`.
    void SetRow(int y, const std::uint8_t* samples, int first, int end) {
        const std::int32_t* above = Row(y);
        std::int32_t* row = Row(y + 1);
        std::int32_t sum = 0;
        for (int x = 0; x < width_; ++x) {
            row[x] = above[x] + sum;
            sum += x >= first && x < end ? kWeights[samples[x]] : 0;
        }
        row[width_] = above[width_] + sum;
    }

    std::int32_t Between(int firstRow, int endRow, int x) const {
        return Row(endRow)[x] - Row(firstRow)[x];
    }

 private:
    const std::int32_t* Row(int y) const {
        return votes_.data() + (static_cast<std::size_t>(width_) + 1) * static_cast<std::size_t>(y);
    }
    std::int32_t* Row(int y) { return const_cast<std::int32_t*>(std::as_const(*this).Row(y)); }

    int width_;
    std::vector<std::int32_t> votes_;
};

/// Cells of angle and distance. The border between two cells crosses each row at one place, which
/// is the same column over many rows, since lines are nearly upright: the votes beside a border are
/// taken from the table for each such stretch at once.
class Accumulator {
 public:
    Accumulator(int width, int height) : width_(width), height_(height) {
        const double diagonal = std::sqrt(double(width) * width + double(height) * height);
        bias_ = diagonal;
        bins_ = static_cast<int>(2 * diagonal / kDistanceStep) + 2;
        cells_.assign(static_cast<std::size_t>(bins_) * kAngles, 0);
        for (int angle = 0; angle < kAngles; ++angle) {
            const double radians = (kFirstAngle + kAngleStep * angle) * kRadian;
            cosines_[static_cast<std::size_t>(angle)] = Cos(radians);
            sines_[static_cast<std::size_t>(angle)] = Sin(radians);
        }
    }

    void Count(const VoteTable& votes) {
        const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static)
        for (int angle = 0; angle < kAngles; ++angle)
            if (!cancel.IsCancelled())
                CountAngle(votes, static_cast<std::size_t>(angle));
    }

    /// Lines of the cells with at least so many votes, the most first; equals in order of angle and
    /// distance.
    std::vector<HoughLine> Lines(int leastVotes) const {
        std::vector<HoughLine> lines;
        for (int angle = 0; angle < kAngles; ++angle)
            for (int bin = 0; bin < bins_; ++bin)
                if (const int votes = cells_[static_cast<std::size_t>(angle) * bins_ + bin];
                    votes >= leastVotes)
                    lines.push_back(LineOf(angle, bin, votes));
        std::stable_sort(lines.begin(), lines.end(),
                         [](const HoughLine& a, const HoughLine& b) { return a.votes > b.votes; });
        return lines;
    }

 private:
    HoughLine LineOf(int angle, int bin, int votes) const {
        const double cosine = cosines_[static_cast<std::size_t>(angle)];
        const double sine = sines_[static_cast<std::size_t>(angle)];
        const double distance = bin * kDistanceStep - bias_;
        const QT::QPointF top{distance / cosine, 0};
        const QT::QPointF bottom{(distance - height_ * sine) / cosine, double(height_)};
        return top.x <= bottom.x ? HoughLine{top, bottom, votes} : HoughLine{bottom, top, votes};
    }

    void CountAngle(const VoteTable& votes, std::size_t angle) {
        const double cosine = cosines_[angle], slope = sines_[angle] / cosine;
        std::int32_t* cells = cells_.data() + angle * static_cast<std::size_t>(bins_);
        std::int32_t left = 0;
        for (int bin = 0; bin < bins_; ++bin) {
            const double border = ((bin + 0.5) * kDistanceStep - bias_) / cosine;
            const std::int32_t all = VotesLeftOf(votes, border, slope);
            cells[bin] = all - left;
            left = all;
        }
    }

    /// The votes left of a border that crosses the first row at x = `top` and moves by -`slope` a
    /// row: of the columns x < ceil(top - y * slope).
    std::int32_t VotesLeftOf(const VoteTable& votes, double top, double slope) const {
        const double bottom = top - slope * (height_ - 1);
        if (std::max(top, bottom) <= 0)
            return 0;
        if (std::min(top, bottom) >= width_)
            return votes.Between(0, height_, width_);
        std::int32_t sum = 0;
        double column = std::ceil(top);
        for (int y = 0; y < height_;) {
            // Towards the left the border leaves its column when it has crossed the one before,
            // towards the right when it has passed its own.
            const double leaves = slope > 0   ? std::ceil((top - column + 1) / slope)
                                  : slope < 0 ? std::floor((column - top) / -slope) + 1
                                              : height_;
            const int end = static_cast<int>(std::clamp<double>(leaves, y + 1, height_));
            const int x = static_cast<int>(std::clamp<double>(column, 0, width_));
            sum += votes.Between(y, end, x);
            y = end;
            column += slope > 0 ? -1 : 1;
        }
        return sum;
    }

    int width_, height_, bins_ = 0;
    double bias_ = 0;
    std::array<double, kAngles> cosines_{}, sines_{};
    std::vector<std::int32_t> cells_;
};

struct Columns {
    int first = 0, end = 0;
};

/// The columns of each stored row that vote.
class VotingColumns {
 public:
    VotingColumns(int width, int height, const LineLimits& limits)
        : width_(width), hasLeft_(limits.left != 0), hasRight_(limits.right != 0) {
        if (hasLeft_)
            lineTable(left_, UnpackLine(limits.left).top, UnpackLine(limits.left).bottom, width,
                      height);
        if (hasRight_)
            lineTable(right_, UnpackLine(limits.right).top, UnpackLine(limits.right).bottom, width,
                      height);
    }

    Columns OfStoredRow(int row) const {
        Columns columns{kSideColumns, width_ - kSideColumns};
        if (hasLeft_)
            columns.first =
                std::max(columns.first, left_[static_cast<std::size_t>(row)] + kLimitWidth + 1);
        if (hasRight_)
            columns.end =
                std::min(columns.end, right_[static_cast<std::size_t>(row)] - kLimitWidth);
        return columns;
    }

 private:
    int width_;
    bool hasLeft_, hasRight_;
    std::vector<int> left_, right_;
};

bool AreOne(const HoughLine& a, const HoughLine& b) {
    int x = 0, y = 0;
    return crossLines(a.p1, a.p2, b.p1, b.p2, x, y) == 2;
}

/// Lines that cross one with more votes are that line. The candidates come best first, so the kept
/// one always has at least as many.
std::vector<HoughLine> WithoutDoubles(const std::vector<HoughLine>& candidates) {
    std::vector<HoughLine> kept;
    for (const HoughLine& candidate : candidates) {
        auto match = kept.end();
        for (auto line = kept.begin(); line != kept.end();) {
            if (!AreOne(candidate, *line)) {
                ++line;
            } else if (match == kept.end()) {
                match = line++;
            } else {
                const auto at = match - kept.begin();
                line = kept.erase(line);
                match = kept.begin() + at;
            }
        }
        if (match == kept.end())
            kept.push_back(candidate);
    }
    return kept;
}

}  // namespace

std::vector<HoughLine> houghLines(const CDibImage& edges, const LineLimits& limits, double scale) {
    const int width = edges.GetWidth(), height = edges.GetHeight();
    VoteTable votes(width, height);
    const VotingColumns columns(width, height, limits);
    for (int y = 0; y < height; ++y) {
        const int stored = height - 1 - y;
        const Columns voting = columns.OfStoredRow(stored);
        votes.SetRow(y, edges.GetBits(stored), voting.first, voting.end);
    }
    Accumulator accumulator(width, height);
    accumulator.Count(votes);
    const int leastVotes = static_cast<int>(height * 5.0 * 0.8) + 1;
    std::vector<HoughLine> lines = WithoutDoubles(accumulator.Lines(leastVotes));
    for (HoughLine& line : lines)
        for (QT::QPointF* point : {&line.p1, &line.p2})
            *point = {point->x * scale, point->y * scale};
    return lines;
}

int crossLines(QT::QPointF a1, QT::QPointF a2, QT::QPointF b1, QT::QPointF b2, int& x, int& y) {
    const auto ax = static_cast<float>(a2.x - a1.x), ay = static_cast<float>(a2.y - a1.y);
    const auto bx = static_cast<float>(b2.x - b1.x), by = static_cast<float>(b2.y - b1.y);
    const float determinant = ax * by - ay * bx;
    if (determinant == 0.0F)
        return 0;
    const float t =
        (static_cast<float>(b1.x - a1.x) * by - static_cast<float>(b1.y - a1.y) * bx) / determinant;
    const float crossX = static_cast<float>(a1.x) + t * ax;
    const float crossY = static_cast<float>(a1.y) + t * ay;
    x = TruncToInt(static_cast<double>(crossX));
    y = TruncToInt(static_cast<double>(crossY));
    const auto within = [](float at, double from, double to) {
        return std::fabs(at - static_cast<float>((from + to) / 2)) <=
               static_cast<float>(std::fabs(to - from) / 2);
    };
    const bool inside = within(crossX, a1.x, a2.x) && within(crossX, b1.x, b2.x) &&
                        within(crossY, a1.y, a2.y) && within(crossY, b1.y, b2.y);
    return inside ? 2 : 1;
}

}  // namespace velloran
