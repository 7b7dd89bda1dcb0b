#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

#include "dewarping/CylindricalSurfaceDewarper.h"

namespace velloran::test {
namespace {

using dewarping::CylindricalSurfaceDewarper;
using QT::QPointF;
using Polyline = std::vector<QPointF>;

/// A camera that looks at a page of width 1 and height 1.4: the page is bent to z = bend(x), and
/// stands in an oblique plane.
struct Camera {
    double rise = 0.08;

    double bend(double x) const { return rise * 6.75 * x * (1 - x) * (1 - x); }
    QPointF shot(double x, double v) const {
        // Turned about the x axis by a bit, moved away, and projected.
        const double y = 1.4 * v - 0.7, z = -bend(x), sine = 0.3, cosine = std::sqrt(1 - 0.09);
        const double up = cosine * y - sine * z, away = 3 + sine * y + cosine * z + 0.2 * x;
        return {400 + 1200 * (x - 0.5) / away, 500 + 1200 * up / away};
    }
    Polyline line(double v) const {
        Polyline polyline;
        for (int i = 0; i <= 200; ++i)
            polyline.push_back(shot(i / 200.0, v));
        return polyline;
    }
};

TEST(Surface, OfAFlatRectangleMovesNothing) {
    const CylindricalSurfaceDewarper surface({{10, 20}, {110, 20}}, {{10, 90}, {110, 90}});
    EXPECT_NEAR(surface.flatWidth(), 100, 1e-9);
    EXPECT_NEAR(surface.flatHeight(), 70, 1e-9);
    for (const QPointF at : {QPointF{10, 20}, {60, 55}, {110, 90}, {33, 81}}) {
        EXPECT_NEAR(surface.toFlat(at).x, at.x - 10, 1e-9);
        EXPECT_NEAR(surface.toFlat(at).y, at.y - 20, 1e-9);
    }
}

TEST(Surface, LinesOfABentPageInPerspectiveComeOutLevel) {
    const Camera camera;
    const CylindricalSurfaceDewarper surface(camera.line(0.05), camera.line(0.95));
    for (const double v : {0.05, 0.2, 0.5, 0.7, 0.95}) {
        double low = 1e9, high = -1e9;
        for (int i = 0; i <= 50; ++i) {
            const double y = surface.toFlat(camera.shot(i / 50.0, v)).y;
            low = std::min(low, y);
            high = std::max(high, y);
        }
        EXPECT_LT(high - low, 0.15) << "the line at " << v << " of a page of 560 pixels";
        // And in their proportions down the page.
        EXPECT_NEAR((low + high) / 2, (v - 0.05) / 0.9 * surface.flatHeight(), 0.2);
    }
}

TEST(Surface, UnbentLinesComeOutUpright) {
    const Camera camera;
    const CylindricalSurfaceDewarper surface(camera.line(0), camera.line(1));
    for (int i = 0; i <= 10; ++i) {
        const double top = surface.toFlat(camera.shot(i / 10.0, 0.02)).x;
        for (const double v : {0.3, 0.98})
            EXPECT_NEAR(surface.toFlat(camera.shot(i / 10.0, v)).x, top, 0.6) << i;
    }
}

TEST(Surface, SteepPartsGetTheRoomThatTheyTookOnThePage) {
    const Camera camera;
    // The first tenth of the page is steep: with depth it takes more of the width than without.
    const CylindricalSurfaceDewarper deep(camera.line(0), camera.line(1)),
        shallow(camera.line(0), camera.line(1), 0);
    const auto share = [&](const CylindricalSurfaceDewarper& surface) {
        return surface.toFlat(camera.shot(0.1, 0.5)).x / surface.flatWidth();
    };
    EXPECT_GT(share(deep), share(shallow) * 1.005);
    EXPECT_GT(deep.flatWidth(), shallow.flatWidth());
    // Without depth lengths are those of the chords.
    const double top = camera.shot(1, 0).x - camera.shot(0, 0).x;
    const double bottom = camera.shot(1, 1).x - camera.shot(0, 1).x;
    EXPECT_NEAR(shallow.flatWidth(), (top + bottom) / 2, 1);
}

TEST(Surface, ThereAndBackIsTheSamePlace) {
    const Camera camera;
    const CylindricalSurfaceDewarper surface(camera.line(0), camera.line(1));
    for (double x = 0.02; x < 1; x += 0.07)
        for (double v = -0.1; v <= 1.1; v += 0.12) {
            const QPointF at = camera.shot(x, v), back = surface.toImage(surface.toFlat(at));
            EXPECT_NEAR(back.x, at.x, 1e-6);
            EXPECT_NEAR(back.y, at.y, 1e-6);
        }
}

TEST(Surface, BeyondTheCurvesThePageGoesOn) {
    const CylindricalSurfaceDewarper surface({{10, 20}, {110, 20}}, {{10, 90}, {110, 90}});
    EXPECT_NEAR(surface.toFlat({0, 55}).x, -10, 1e-6);
    EXPECT_NEAR(surface.toFlat({150, 0}).x, 140, 1e-6);
    EXPECT_NEAR(surface.toFlat({50, 0}).y, -20, 1e-9);
    EXPECT_NEAR(surface.toImage({120, 80}).x, 130, 1e-6);
}

TEST(Surface, IsRefusedWhereCurvesMeetOrSpanNothing) {
    const Polyline row = {{0, 0}, {100, 0}}, below = {{0, 50}, {100, 50}};
    const auto make = [](const Polyline& top, const Polyline& bottom) {
        const CylindricalSurfaceDewarper surface(top, bottom);
    };
    EXPECT_THROW(make({{0, 0}, {50, 80}, {100, 0}}, below), std::runtime_error);
    EXPECT_THROW(make(row, row), std::runtime_error);
    EXPECT_THROW(make({{0, 0}}, below), std::runtime_error);
    EXPECT_THROW(make({{5, 5}, {5, 5}}, below), std::runtime_error);
    EXPECT_THROW(make(row, {{100, 50}, {0, 50}}), std::runtime_error);
    EXPECT_THROW(make({{0, 0}, {std::nan(""), 3}, {100, 0}}, {{0, 0}, {0, 0}}), std::runtime_error);
}

}  // namespace
}  // namespace velloran::test
