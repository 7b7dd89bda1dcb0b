#include "samples/Sheet.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "text/Text.h"

namespace velloran::samples {

namespace {

constexpr int kCurledBaselinePoints = 9;

Path PlacedGlyph(const Glyph& glyph, double size, Point origin) {
    Path path = glyph.outline;
    for (Contour& contour : path.contours)
        for (Point& point : contour)
            point = origin + point * size;
    return path;
}

// A screen has hundreds of thousands of them; the polygon has the circle's area.
Contour Dot(Point center, double radius) {
    constexpr int kSteps = 12;
    static const Contour circle = [] {
        const double corner = 2 * std::numbers::pi / kSteps;
        const double reach = std::sqrt(corner / std::sin(corner));
        return EllipseContour({}, reach, reach, kSteps);
    }();
    Contour dot(kSteps);
    std::transform(circle.begin(), circle.end(), dot.begin(),
                   [&](Point point) { return center + point * radius; });
    return dot;
}

}  // namespace

Sheet::Sheet(const SheetPlace& place, Inks& inks, FontBook& fonts, Truth& truth)
    : place_(place), inks_(inks), fonts_(fonts), truth_(truth) {}

void Sheet::Ink(const Path& path, Plane& plane) {
    const Path kept = clip_.empty() ? path : ClipToConvex(path, clip_);
    const Path warped = place_.warp(kept);
    const Bounds bounds = warped.GetBounds();
    if (bounds.IsEmpty())
        return;
    plane.Paint(warped, 255, coverage_);
    content_.Add(bounds.Get());
    if (place_.upright)
        uprightContent_.Add((*place_.upright)(kept).GetBounds().Get());
}

void Sheet::Erase(const Path& path) {
    const Path warped = place_.warp(clip_.empty() ? path : ClipToConvex(path, clip_));
    for (Plane* plane : {&inks_.black, &inks_.cyan, &inks_.magenta, &inks_.yellow})
        if (!plane->IsEmpty())
            plane->Paint(warped, 0, coverage_);
}

void Sheet::PrintTone(const Path& area, const Screen& screen, const ToneAt& tone, Plane& plane,
                      ScreenTruth* notes) {
    const Path kept = clip_.empty() ? area : ClipToConvex(area, clip_);
    const Bounds bounds = kept.GetBounds();
    if (bounds.IsEmpty())
        return;
    const double angle = screen.angleDegrees * std::numbers::pi / 180;
    const Point along = Point{std::cos(angle), std::sin(angle)} * screen.pitch;
    const Point across = {-along.y, along.x};
    const Box& box = bounds.Get();
    const double reach = Length({box.Width(), box.Height()}) / 2 / screen.pitch + 1;
    // The lattice hangs on the page's corner, so that areas that meet share one lattice.
    const double middleI =
        (box.Center().x * along.x + box.Center().y * along.y) / (screen.pitch * screen.pitch);
    const double middleJ =
        (box.Center().x * across.x + box.Center().y * across.y) / (screen.pitch * screen.pitch);
    Path dots;
    double toneSum = 0;
    int toneCount = 0;
    for (int j = static_cast<int>(std::floor(middleJ - reach)); j <= middleJ + reach; ++j)
        for (int i = static_cast<int>(std::floor(middleI - reach)); i <= middleI + reach; ++i) {
            const Point center = along * i + across * j;
            if (center.x < box.left - screen.pitch || center.x > box.right + screen.pitch ||
                center.y < box.top - screen.pitch || center.y > box.bottom + screen.pitch)
                continue;
            const double share = std::clamp(tone(center), 0.0, 0.75);
            toneSum += share;
            ++toneCount;
            const double radius = screen.pitch * std::sqrt(share / std::numbers::pi);
            if (radius > 0.15)
                dots.Add(Dot(center, radius));
        }
    const Path warped = place_.warp(kept);
    const Bounds warpedBounds = warped.GetBounds();
    mask_.Fill(warped, PixelsAround(warpedBounds, plane.Width(), plane.Height()));
    plane.PaintMasked(place_.warp(dots), mask_, coverage_);
    if (notes != nullptr && toneCount > 0)
        notes->areas.push_back({warpedBounds.Get(), toneSum / toneCount});
}

void Sheet::WriteLine(std::u16string_view text, Font font, double size,
                      const std::vector<Point>& origins, const std::array<Point, 2>& baseline,
                      bool vertical) {
    Bounds bounds;
    for (std::size_t i = 0; i < text.size() && i < origins.size(); ++i) {
        const Path path = PlacedGlyph(fonts_.Get(font, text[i]), size, origins[i]);
        if (path.contours.empty())
            continue;
        Ink(path);
        bounds.Add(InScan(path));
    }
    if (bounds.IsEmpty())
        return;
    TextLine line{ToUtf8(text), vertical, place_.page, size, bounds.Get(), {}};
    const int points = place_.warp.IsCurled() ? kCurledBaselinePoints : 2;
    for (int i = 0; i < points; ++i)
        line.baseline.push_back(
            InScan(Blend(baseline[0], baseline[1], static_cast<double>(i) / (points - 1))));
    truth_.lines.push_back(std::move(line));
}

double Sheet::WriteLine(std::u16string_view text, Font font, double size, Point origin) {
    std::vector<Point> origins;
    double x = origin.x;
    for (const char16_t character : text) {
        origins.push_back({x, origin.y});
        x += fonts_.Get(font, character).advance * size;
    }
    WriteLine(text, font, size, origins, {origin, Point{x, origin.y}});
    return x - origin.x;
}

}  // namespace velloran::samples
