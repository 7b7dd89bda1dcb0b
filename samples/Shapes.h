#pragma once

// Points, boxes and outlines in continuous coordinates: x to the right, y down, pixel (i, j) covers
// [i, i + 1) x [j, j + 1). An outline is filled by the non-zero rule.

#include <vector>

namespace velloran::samples {

struct Point {
    double x = 0, y = 0;
};
inline Point operator+(Point a, Point b) {
    return {a.x + b.x, a.y + b.y};
}
inline Point operator-(Point a, Point b) {
    return {a.x - b.x, a.y - b.y};
}
inline Point operator*(Point a, double factor) {
    return {a.x * factor, a.y * factor};
}
double Length(Point a);
inline Point Blend(Point a, Point b, double t) {
    return a + (b - a) * t;
}

struct Box {
    double left = 0, top = 0, right = 0, bottom = 0;
    double Width() const { return right - left; }
    double Height() const { return bottom - top; }
    Point Center() const { return {(left + right) / 2, (top + bottom) / 2}; }
    bool IsEmpty() const { return right <= left || bottom <= top; }
    Box Inset(double dx, double dy) const { return {left + dx, top + dy, right - dx, bottom - dy}; }
};

/// Grows from nothing to the box around all points that it is shown.
class Bounds {
 public:
    void Add(Point point);
    void Add(const Box& box);
    bool IsEmpty() const { return empty_; }
    /// All zero when nothing was added.
    const Box& Get() const { return box_; }

 private:
    Box box_;
    bool empty_ = true;
};

using Contour = std::vector<Point>;

struct Path {
    std::vector<Contour> contours;

    void Add(Contour contour) { contours.push_back(std::move(contour)); }
    void Add(const Path& path);
    Bounds GetBounds() const;
};

Contour RectangleContour(const Box& box);
/// `steps` points; `turn` radians; positive orientation as all shapes here.
Contour EllipseContour(Point center, double radiusX, double radiusY, int steps, double turn = 0);
/// Steps that keep a circle of this radius in pixels within a twentieth of a pixel.
int CircleSteps(double radius);
Path CirclePath(Point center, double radius);
/// A line of round ends and joins; `closed` joins the last point to the first.
Path StrokePath(const Contour& line, double width, bool closed = false);
/// A smooth line through the points (Catmull-Rom), `steps` points a span.
Contour SmoothLine(const Contour& points, int steps, bool closed = false);

/// The parts of `path` inside a convex contour of positive orientation. Edges along the border may
/// double back; they enclose nothing.
Path ClipToConvex(const Path& path, const Contour& convex);

}  // namespace velloran::samples
