#include "dewarping/TextSides.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace velloran::dewarping {
namespace {

using QT::QLineF;
using QT::QPointF;

constexpr double kSteepest = 0.12, kUpright = 0.003;  // of x beside y

/// x = at + slope * (y - middle)
struct Edge {
    double at = 0, slope = 0;
    std::size_t members = 0;
};

/// The straight line that most of the points lie along, within the tolerance.
std::optional<Edge> edgeThrough(const std::vector<QPointF>& points, double tolerance, int height) {
    constexpr double kLeastSpan = 0.4, kLeastShare = 0.5;
    constexpr std::size_t kLeastMembers = 6;
    const double middle = height / 2.0;
    const auto isMember = [&](const Edge& edge, const QPointF& p) {
        return std::fabs(p.x - edge.at - edge.slope * (p.y - middle)) <= tolerance;
    };
    Edge best;
    for (const QPointF& p : points)
        for (const QPointF& q : points) {
            if (q.y - p.y < kLeastSpan * height)
                continue;
            Edge edge{0, (q.x - p.x) / (q.y - p.y), 0};
            edge.at = p.x + edge.slope * (middle - p.y);
            if (std::fabs(edge.slope) > kSteepest)
                continue;
            for (const QPointF& r : points)
                edge.members += isMember(edge, r) ? 1 : 0;
            if (edge.members > best.members)
                best = edge;
        }
    if (best.members < kLeastMembers ||
        static_cast<double>(best.members) < kLeastShare * static_cast<double>(points.size()))
        return std::nullopt;
    // Least squares through those.
    double n = 0, sy = 0, sx = 0, syy = 0, sxy = 0;
    for (const QPointF& p : points) {
        if (!isMember(best, p))
            continue;
        const double y = p.y - middle;
        n += 1;
        sy += y;
        sx += p.x;
        syy += y * y;
        sxy += y * p.x;
    }
    const double spread = syy - sy * sy / n;
    if (spread > 0)
        best.slope = (sxy - sx * sy / n) / spread;
    best.at = (sx - best.slope * sy) / n;
    return best;
}

/// The line of that slope that touches the picture's side from within.
QLineF sideOf(double slope, double side, bool isLeft, int height) {
    const double reach = slope * (height - 1.0);
    const double top = isLeft ? std::max(0.0, -reach) : side - std::max(0.0, reach);
    return {{top, 0}, {top + reach, height - 1.0}};
}

}  // namespace

std::optional<PageSides> sidesOfText(const std::vector<LineTrack>& lines, double linePitch,
                                     int width, int height) {
    constexpr double kLong = 0.5;  // of the longest line
    double longest = 0;
    for (const LineTrack& line : lines)
        longest = std::max(longest, line.length());
    std::vector<QPointF> begins, ends;
    for (const LineTrack& line : lines)
        if (line.length() >= kLong * longest) {
            begins.push_back(line.points.front());
            ends.push_back(line.points.back());
        }
    const auto left = edgeThrough(begins, linePitch / 3, height);
    const auto right = edgeThrough(ends, linePitch / 3, height);
    if (!left || !right || right->at - left->at < 0.3 * width)
        return std::nullopt;
    // The slope changes evenly from one edge to the other, and on to the sides.
    const double change = (right->slope - left->slope) / (right->at - left->at);
    const auto slopeAt = [&](double x) {
        return std::clamp(left->slope + change * (x - left->at), -kSteepest, kSteepest);
    };
    const double last = width - 1.0, slopeLeft = slopeAt(0), slopeRight = slopeAt(last);
    if (std::max(std::fabs(slopeLeft), std::fabs(slopeRight)) < kUpright)
        return std::nullopt;
    return PageSides{sideOf(slopeLeft, 0, true, height), sideOf(slopeRight, last, false, height)};
}

}  // namespace velloran::dewarping
