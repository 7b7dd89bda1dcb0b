#include "samples/Seal.h"

#include <cmath>
#include <numbers>

namespace velloran::samples {

namespace {

constexpr std::u16string_view kLegend = u"北坡书社藏书清样之章";

// A character whose foot points to the seal's middle.
Path TurnedGlyph(const Glyph& glyph, double size, Point middle, double turn) {
    Path path = glyph.outline;
    const double c = std::cos(turn), s = std::sin(turn);
    for (Contour& contour : path.contours)
        for (Point& point : contour) {
            const Point p = (point - Point{0.5, -0.36}) * size;
            point = middle + Point{p.x * c - p.y * s, p.x * s + p.y * c};
        }
    return path;
}

}  // namespace

void DrawSeal(Sheet& sheet, Point center, double radius, const Rgb& color) {
    Plane& ink = sheet.GetInks().seal;
    const auto ring = [&](double at, double width) {
        const Contour circle = EllipseContour(center, at, at, CircleSteps(at));
        sheet.Ink(StrokePath(circle, width, /*closed=*/true), ink);
    };
    ring(radius * 0.95, radius * 0.1);
    ring(radius * 0.83, radius * 0.025);
    const int count = static_cast<int>(kLegend.size());
    for (int i = 0; i < count; ++i) {
        const double turn = 2 * std::numbers::pi * i / count;
        const Point middle = center + Point{std::sin(turn), -std::cos(turn)} * (radius * 0.61);
        sheet.Ink(
            TurnedGlyph(sheet.Fonts().Get(Font::kHei, kLegend[i]), radius * 0.33, middle, turn),
            ink);
    }
    const double core = radius * 0.2;
    for (int petal = 0; petal < 5; ++petal) {
        const double turn = 2 * std::numbers::pi * petal / 5;
        sheet.Ink(CirclePath(center + Point{std::sin(turn), -std::cos(turn)} * (radius * 0.21),
                             radius * 0.11),
                  ink);
    }
    sheet.Ink(CirclePath(center, core), ink);
    sheet.GetTruth().seal = SealTruth{sheet.InScan(center), radius, core, color};
}

}  // namespace velloran::samples
