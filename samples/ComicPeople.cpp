#include <cmath>

#include "samples/ComicScenes.h"

namespace velloran::samples {

namespace {

const Tint kSkin{0, 0.02, 0.12, 0.2};
const Tint kHairTones[] = {{0.55, 0.5, 0.6, 0.7}, {0.3, 0.2, 0.5, 0.7}, {0.1, 0.05, 0.2, 0.65}};
const Tint kCoats[] = {{0.4, 0.65, 0.3, 0.05}, {0.2, 0.1, 0.65, 0.5}, {0.3, 0.6, 0.1, 0.6}};

// Shapes are told for a head of height 1 around (0, 0) and looking ahead.
struct HeadFrame {
    Point middle;
    double size;
    double look;  // how far the face is turned aside, -0.12 to 0.12

    Contour operator()(const Contour& shape) const {
        Contour placed;
        for (const Point point : shape)
            placed.push_back(middle + point * size);
        return placed;
    }
    Contour Smooth(const Contour& shape, bool closed = true) const {
        return (*this)(SmoothLine(shape, 8, closed));
    }
};

void DrawEye(ComicPen& pen, const HeadFrame& head, double side) {
    const double x = side * 0.19 + head.look, y = 0.06;
    const Point middle = {x, y};
    pen.White(head.Smooth({{x - 0.1, y}, {x, y - 0.08}, {x + 0.1, y}, {x, y + 0.07}}));
    pen.Solid(head(EllipseContour(middle, 0.052, 0.075, 24)));
    pen.White(head(EllipseContour(middle + Point{-0.018, -0.03}, 0.018, 0.024, 12)));
    pen.Stroke(head.Smooth({{x - 0.11, y - 0.01},
                            {x - 0.05, y - 0.085},
                            {x + 0.05, y - 0.085},
                            {x + 0.11, y - 0.01}},
                           false),
               1.7);
    pen.Stroke(head.Smooth({{x - 0.06, y + 0.08}, {x, y + 0.09}, {x + 0.06, y + 0.08}}, false),
               0.7);
    pen.Stroke(head.Smooth({{x - 0.11, y - 0.16}, {x, y - 0.2}, {x + 0.11, y - 0.165}}, false),
               1.4);
}

void DrawHair(ComicPen& pen, const HeadFrame& head, Random& random) {
    // A cap with a jagged lower edge: from the left temple over the crown and back in spikes.
    Contour hair = SmoothLine({{-0.47, 0.16},
                               {-0.5, -0.2},
                               {-0.3, -0.58},
                               {0.05, -0.66},
                               {0.36, -0.52},
                               {0.5, -0.18},
                               {0.47, 0.16}},
                              8);
    constexpr int kSpikes = 7;
    for (int i = 0; i <= kSpikes; ++i) {
        const double x = 0.4 - 0.8 * i / kSpikes;
        const double deep = 0.02 + 0.1 * random.Unit() + 0.35 * x * x;
        hair.push_back({x + 0.05, -0.24 + 0.5 * x * x});
        hair.push_back({x - 0.02, -0.14 + deep});
    }
    const bool solid = random.Chance(0.4);
    const Contour placed = head(hair);
    if (solid)
        pen.Solid(placed);
    else
        pen.Object(placed, kHairTones[random.Below(3)]);
    for (int i = 0; i < 5; ++i) {  // shine on solid hair, strands on light hair
        const double x = -0.22 + 0.1 * i;
        const Contour strand =
            head.Smooth({{x * 0.6, -0.58}, {x, -0.45}, {x * 1.2, -0.32}}, /*closed=*/false);
        if (solid)
            pen.Paper().Erase(StrokePath(strand, pen.LineWidth() * 0.8));
        else
            pen.Stroke(strand, 0.7);
    }
}

void DrawMouth(ComicPen& pen, const HeadFrame& head, Random& random) {
    const double x = head.look;
    if (random.Chance(0.5)) {
        pen.Stroke(head.Smooth({{x - 0.09, 0.31}, {x, 0.335}, {x + 0.1, 0.3}}, false), 1.1);
        return;
    }
    pen.Solid(head.Smooth({{x - 0.09, 0.28}, {x, 0.265}, {x + 0.09, 0.28}, {x, 0.38}}));
    pen.White(head.Smooth({{x - 0.05, 0.345}, {x, 0.325}, {x + 0.05, 0.345}, {x, 0.365}}));
}

}  // namespace

void DrawFace(ComicPen& pen, Point middle, double size, Random& random) {
    const HeadFrame head{middle, size, random.Between(-0.1, 0.1)};
    const Tint coat = kCoats[random.Below(3)];
    pen.Object(head.Smooth({{-0.14, 0.4},
                            {-0.2, 0.62},
                            {-0.75, 0.78},
                            {-0.95, 1.4},
                            {0.95, 1.4},
                            {0.75, 0.78},
                            {0.2, 0.62},
                            {0.14, 0.4}}),
               coat, 1.2);
    pen.Object(head({{-0.15, 0.3}, {0.15, 0.3}, {0.17, 0.62}, {0, 0.86}, {-0.17, 0.62}}), kSkin);
    pen.Tone(head({{-0.15, 0.38}, {0.15, 0.38}, {0.16, 0.55}, {0, 0.6}, {-0.16, 0.55}}),
             {0.35, 0.1, 0.3, 0.3});
    pen.Stroke(head({{-0.19, 0.62}, {-0.05, 1.0}, {0, 0.88}, {0.05, 1.0}, {0.19, 0.62}}));
    for (const double side : {-1.0, 1.0})
        pen.Object(head(EllipseContour({side * 0.43, 0.1}, 0.07, 0.12, 24)), kSkin);
    pen.Object(head.Smooth({{-0.42, -0.2},
                            {-0.42, 0.12},
                            {-0.3, 0.36},
                            {head.look * 0.4, 0.52},
                            {0.3, 0.36},
                            {0.42, 0.12},
                            {0.42, -0.2},
                            {0, -0.5}}),
               kSkin, 1.2);
    for (const double side : {-1.0, 1.0}) {
        pen.Tone(head(EllipseContour({side * 0.26 + head.look, 0.22}, 0.075, 0.04, 16)),
                 {0.22, 0, 0.4, 0.15});
        DrawEye(pen, head, side);
    }
    pen.Stroke(head({{head.look * 1.3, 0.17},
                     {head.look * 1.5 + 0.025, 0.215},
                     {head.look * 1.3 - 0.01, 0.22}}),
               0.8);
    DrawMouth(pen, head, random);
    DrawHair(pen, head, random);
}

void DrawWalker(ComicPen& pen, Point feet, double height, bool umbrella) {
    const auto at = [&](double x, double y) { return feet + Point{x, -y} * height; };
    const auto shape = [&](const Contour& points) {
        Contour placed;
        for (const Point point : points)
            placed.push_back(at(point.x, point.y));
        return placed;
    };
    pen.Tone(EllipseContour(at(0.18, 0), height * 0.42, height * 0.05, 32), {0.5, 0.4, 0.3, 0.3});
    pen.Solid(shape({{-0.13, 0}, {-0.05, 0}, {0, 0.35}, {-0.09, 0.35}}));
    pen.Solid(shape({{0.06, 0}, {0.15, 0.01}, {0.09, 0.35}, {0, 0.35}}));
    pen.Object(
        shape({{-0.2, 0.22}, {0.2, 0.22}, {0.13, 0.74}, {0.06, 0.8}, {-0.06, 0.8}, {-0.13, 0.74}}),
        kCoats[1]);
    pen.Stroke(shape({{0.01, 0.24}, {0.01, 0.7}}), 0.7);
    pen.Object(EllipseContour(at(0, 0.89), height * 0.085, height * 0.1, 24), kSkin);
    pen.Solid(SmoothLine(
        shape({{-0.1, 0.9}, {-0.06, 1.0}, {0.06, 1.0}, {0.1, 0.9}, {0.04, 0.94}, {-0.04, 0.94}}), 4,
        /*closed=*/true));
    if (!umbrella)
        return;
    pen.Stroke(shape({{0.12, 0.5}, {0.14, 1.3}}), 1);
    Contour roof =
        SmoothLine(shape({{-0.42, 1.05}, {-0.3, 1.28}, {0.1, 1.42}, {0.5, 1.3}, {0.66, 1.07}}), 8);
    for (const double x : {0.4, 0.12, -0.14})
        roof.push_back(at(x, 1.1));
    pen.Object(roof, {0.35, 0.1, 0.7, 0.55}, 1.1);
    for (const double x : {0.4, 0.12, -0.14})
        pen.Stroke(SmoothLine({at(0.1, 1.42), at(0.1 + (x - 0.1) * 0.8, 1.28), at(x, 1.1)}, 6),
                   0.6);
}

}  // namespace velloran::samples
