#include "samples/CurvedScore.h"

#include <algorithm>
#include <cmath>

namespace velloran::samples {

namespace {

double Middle(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double NinthTenth(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[(values.size() - 1) * 9 / 10];
}

/// The y of a line at x, if it gets there.
bool HeightAt(const TextLine& line, double x, double& y) {
    for (std::size_t i = 0; i + 1 < line.baseline.size(); ++i) {
        const Point a = line.baseline[i], b = line.baseline[i + 1];
        if (x < a.x || x > b.x || b.x <= a.x)
            continue;
        y = a.y + (b.y - a.y) * (x - a.x) / (b.x - a.x);
        return true;
    }
    return false;
}

}  // namespace

double LeavesStraight(const std::vector<Point>& points) {
    const double n = static_cast<double>(points.size());
    Point mean;
    for (const Point& p : points)
        mean = mean + p * (1 / n);
    double xx = 0, xy = 0;
    for (const Point& p : points) {
        xx += (p.x - mean.x) * (p.x - mean.x);
        xy += (p.x - mean.x) * (p.y - mean.y);
    }
    const double slope = xx > 0 ? xy / xx : 0;
    double most = 0;
    for (const Point& p : points)
        most = std::max(most, std::fabs(p.y - mean.y - slope * (p.x - mean.x)));
    return most / std::sqrt(1 + slope * slope);
}

double LinePitchOf(const Truth& truth) {
    std::vector<double> distances, sizes;
    for (const TextLine& line : truth.lines) {
        if (line.vertical || line.baseline.size() < 2)
            continue;
        sizes.push_back(line.fontSize);
        const Point middle = line.baseline[line.baseline.size() / 2];
        double nearest = 0;
        for (const TextLine& other : truth.lines) {
            double y = 0;
            if (other.vertical || !HeightAt(other, middle.x, y) || y <= middle.y + 1)
                continue;
            if (nearest == 0 || y - middle.y < nearest)
                nearest = y - middle.y;
        }
        if (nearest > 0)
            distances.push_back(nearest);
    }
    if (sizes.empty())
        return 0;
    // Lines far apart are no measure of what a reader sees as crooked.
    const double size = Middle(sizes);
    return distances.empty() ? 1.5 * size : std::min(Middle(distances), 2.5 * size);
}

std::vector<double> BentLines(const Truth& truth, const std::function<Point(Point)>& toFlat) {
    constexpr double kShortest = 4;  // pitches
    const double pitch = LinePitchOf(truth);
    std::vector<double> bent;
    for (const TextLine& line : truth.lines) {
        if (line.vertical || line.baseline.size() < 2 ||
            Length(line.baseline.back() - line.baseline.front()) < kShortest * pitch)
            continue;
        std::vector<Point> points = line.baseline;
        if (toFlat)
            std::transform(points.begin(), points.end(), points.begin(), toFlat);
        bent.push_back(LeavesStraight(points) / pitch);
    }
    return bent;
}

bool IsWorse(std::vector<double> before, std::vector<double> after) {
    if (before.empty() || after.empty())
        return false;
    return NinthTenth(std::move(after)) > NinthTenth(std::move(before)) + 0.05;
}

}  // namespace velloran::samples
