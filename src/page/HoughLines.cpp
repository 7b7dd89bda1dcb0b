#include "page/HoughLines.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "core/ExactMath.h"
#include "core/Rounding.h"
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

/// Cells of angle and distance. A row's votes are kept as running sums, so that each cell takes
/// its stretch of the row in one subtraction.
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

    /// `sums[x]` holds the votes of the row left of column x.
    void AddRow(int y, const std::vector<std::int32_t>& sums) {
        for (std::size_t angle = 0; angle < kAngles; ++angle) {
            const double cosine = cosines_[angle], start = y * sines_[angle] + bias_;
            std::int32_t* cells = cells_.data() + angle * static_cast<std::size_t>(bins_);
            int bin = static_cast<int>(start / kDistanceStep + 0.5), x = 0;
            while (x < width_) {
                const double end = ((bin + 0.5) * kDistanceStep - start) / cosine;
                const int next = std::clamp(static_cast<int>(std::ceil(end)), x, width_);
                cells[bin] +=
                    sums[static_cast<std::size_t>(next)] - sums[static_cast<std::size_t>(x)];
                x = next;
                ++bin;
            }
        }
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
    Accumulator accumulator(width, height);
    const VotingColumns columns(width, height, limits);
    std::vector<std::int32_t> sums(static_cast<std::size_t>(width) + 1);
    for (int row = 0; row < height; ++row) {
        const Columns voting = columns.OfStoredRow(row);
        const std::uint8_t* samples = edges.GetBits(row);
        for (int x = 0; x < width; ++x) {
            const bool votes = x >= voting.first && x < voting.end;
            sums[static_cast<std::size_t>(x) + 1] =
                sums[static_cast<std::size_t>(x)] + (votes ? kWeights[samples[x]] : 0);
        }
        accumulator.AddRow(height - 1 - row, sums);
    }
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
