#include "samples/Shapes.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace velloran::samples {

double Length(Point a) {
    return std::sqrt(a.x * a.x + a.y * a.y);
}

void Bounds::Add(Point point) {
    Add(Box{point.x, point.y, point.x, point.y});
}

void Bounds::Add(const Box& box) {
    if (empty_) {
        box_ = box;
        empty_ = false;
        return;
    }
    box_ = {std::min(box_.left, box.left), std::min(box_.top, box.top),
            std::max(box_.right, box.right), std::max(box_.bottom, box.bottom)};
}

void Path::Add(const Path& path) {
    contours.insert(contours.end(), path.contours.begin(), path.contours.end());
}

Bounds Path::GetBounds() const {
    Bounds bounds;
    for (const Contour& contour : contours)
        for (const Point point : contour)
            bounds.Add(point);
    return bounds;
}

Contour RectangleContour(const Box& box) {
    return {
        {box.left, box.top}, {box.right, box.top}, {box.right, box.bottom}, {box.left, box.bottom}};
}

Contour EllipseContour(Point center, double radiusX, double radiusY, int steps, double turn) {
    Contour contour(steps);
    const double cosTurn = std::cos(turn), sinTurn = std::sin(turn);
    for (int i = 0; i < steps; ++i) {
        const double angle = 2 * std::numbers::pi * i / steps;
        const double x = radiusX * std::cos(angle), y = radiusY * std::sin(angle);
        contour[i] = center + Point{x * cosTurn - y * sinTurn, x * sinTurn + y * cosTurn};
    }
    return contour;
}

int CircleSteps(double radius) {
    // The sagitta of a chord is about radius * angle^2 / 8.
    return std::clamp(static_cast<int>(10 * std::sqrt(std::max(radius, 0.0))), 16, 400);
}

Path CirclePath(Point center, double radius) {
    return {{EllipseContour(center, radius, radius, CircleSteps(radius))}};
}

namespace {

// From center + `from` clockwise as seen through `sweep` radians, and back to the centre.
Contour Fan(Point center, Point from, double sweep) {
    const double share = sweep / (2 * std::numbers::pi);
    const int steps = std::max(1, static_cast<int>(std::ceil(CircleSteps(Length(from)) * share)));
    Contour fan = {center};
    for (int i = 0; i <= steps; ++i) {
        const double angle = sweep * i / steps;
        const double c = std::cos(angle), s = std::sin(angle);
        fan.push_back(center + Point{from.x * c - from.y * s, from.x * s + from.y * c});
    }
    return fan;
}

}  // namespace

Path StrokePath(const Contour& line, double width, bool closed) {
    // Pieces that meet edge to edge, so that no pixel of a soft rim counts twice.
    Path path;
    const double half = width / 2;
    struct Piece {
        Point from, to, side;
    };
    std::vector<Piece> pieces;
    for (std::size_t i = 0; i + (closed ? 0 : 1) < line.size(); ++i) {
        const Point from = line[i], to = line[(i + 1) % line.size()];
        const double length = Length(to - from);
        if (length > 0)
            pieces.push_back({from, to, Point{-(to.y - from.y), to.x - from.x} * (half / length)});
    }
    if (pieces.empty())
        return line.empty() ? path : CirclePath(line[0], half);
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const Piece& piece = pieces[i];
        path.Add({piece.from - piece.side, piece.to - piece.side, piece.to + piece.side,
                  piece.from + piece.side});
        if (!closed && i + 1 == pieces.size())
            break;
        const Point next = pieces[(i + 1) % pieces.size()].side;
        const double cross = piece.side.x * next.y - piece.side.y * next.x;
        const double dot = piece.side.x * next.x + piece.side.y * next.y;
        const double sweep = std::atan2(std::abs(cross), dot);
        if (sweep > 0)
            path.Add(Fan(piece.to, cross >= 0 ? piece.side * -1 : next, sweep));
    }
    if (!closed) {
        path.Add(Fan(pieces.front().from, pieces.front().side, std::numbers::pi));
        path.Add(Fan(pieces.back().to, pieces.back().side * -1, std::numbers::pi));
    }
    return path;
}

Contour SmoothLine(const Contour& points, int steps, bool closed) {
    Contour line;
    const int count = static_cast<int>(points.size());
    const auto at = [&](int i) {
        return closed ? points[(i + count) % count] : points[std::clamp(i, 0, count - 1)];
    };
    for (int i = 0; i < (closed ? count : count - 1); ++i) {
        const Point a = at(i - 1), b = at(i), c = at(i + 1), d = at(i + 2);
        for (int step = 0; step < steps; ++step) {
            const double t = static_cast<double>(step) / steps;
            line.push_back((b * 2 + (c - a) * t + (a * 2 - b * 5 + c * 4 - d) * (t * t) +
                            (b * 3 - a - c * 3 + d) * (t * t * t)) *
                           0.5);
        }
    }
    if (!closed && count > 0)
        line.push_back(points.back());
    return line;
}

namespace {

// Sutherland and Hodgman, "Reentrant polygon clipping", 1974: one side of the convex contour.
Contour ClipToHalfPlane(const Contour& contour, Point from, Point to) {
    const auto side = [&](Point p) {
        return (to.x - from.x) * (p.y - from.y) - (to.y - from.y) * (p.x - from.x);
    };
    Contour kept;
    for (std::size_t i = 0; i < contour.size(); ++i) {
        const Point a = contour[i], b = contour[(i + 1) % contour.size()];
        const double sideA = side(a), sideB = side(b);
        if (sideA >= 0)
            kept.push_back(a);
        if ((sideA >= 0) != (sideB >= 0))
            kept.push_back(Blend(a, b, sideA / (sideA - sideB)));
    }
    return kept;
}

}  // namespace

Path ClipToConvex(const Path& path, const Contour& convex) {
    Path clipped;
    for (Contour contour : path.contours) {
        for (std::size_t i = 0; i < convex.size() && !contour.empty(); ++i)
            contour = ClipToHalfPlane(contour, convex[i], convex[(i + 1) % convex.size()]);
        if (contour.size() >= 3)
            clipped.Add(std::move(contour));
    }
    return clipped;
}

}  // namespace velloran::samples
