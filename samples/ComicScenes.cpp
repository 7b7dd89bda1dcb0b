#include "samples/ComicScenes.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "samples/Texts.h"

namespace velloran::samples {

namespace {

// Places told as shares of the panel.
struct PanelFrame {
    const Box& box;
    Point At(double x, double y) const {
        return {box.left + box.Width() * x, box.top + box.Height() * y};
    }
    Contour All() const { return RectangleContour(box.Inset(-2, -2)); }
    double Size() const { return std::min(box.Width(), box.Height()); }
};

ToneAt FadeDown(const Box& box, double top, double bottom) {
    return [=](Point at) {
        return top + (bottom - top) * std::clamp((at.y - box.top) / box.Height(), 0.0, 1.0);
    };
}

void DrawBuilding(ComicPen& pen, const Box& box, const Tint& tint, bool solid, Random& random) {
    if (solid)
        pen.Solid(RectangleContour(box));
    else
        pen.Object(RectangleContour(box), tint);
    const double cell = std::max(box.Width() / 5, 7.0);
    for (double y = box.top + cell; y < box.bottom - cell; y += cell * 1.4)
        for (double x = box.left + cell * 0.6; x < box.right - cell; x += cell * 1.1) {
            const Contour window = RectangleContour({x, y, x + cell * 0.6, y + cell * 0.8});
            if (random.Chance(0.55))
                pen.White(window);
            else if (!solid)
                pen.Solid(window);
        }
}

void DrawCity(ComicPen& pen, const Box& panel, Random& random) {
    const PanelFrame frame{panel};
    pen.Tone(frame.All(), {0.6, 0.7, 0.35, 0.05}, FadeDown(panel, 1, 0.1));
    pen.Object(EllipseContour(frame.At(random.Between(0.6, 0.85), 0.22), frame.Size() * 0.11,
                              frame.Size() * 0.11, 60),
               {0, 0, 0.05, 0.4});
    for (int layer = 0; layer < 3; ++layer) {
        double x = -0.05 - 0.1 * random.Unit();
        while (x < 1.05) {
            const double width = random.Between(0.1, 0.2);
            const double top = 0.38 + 0.16 * layer + random.Between(-0.12, 0.12);
            const Point from = frame.At(x, top), to = frame.At(x + width, 1.1);
            DrawBuilding(pen, {from.x, from.y, to.x, to.y},
                         {0.12 + 0.15 * layer, 0.25, 0.15 + 0.15 * layer, 0.2}, layer == 2, random);
            x += width + random.Between(0, 0.03);
        }
    }
}

void DrawClose(ComicPen& pen, const Box& panel, Random& random) {
    const PanelFrame frame{panel};
    const double vanishing = random.Between(0.3, 0.7);
    pen.Tone(frame.All(), {0.22, 0.25, 0.05, 0.1}, FadeDown(panel, 0.2, 1));
    for (int i = 0; i < 26; ++i) {  // lines of speed
        const double y = i / 26.0 + random.Between(0, 0.03);
        const double reach = random.Between(0.1, 0.3);
        pen.Stroke({frame.At(0, y), frame.At(reach, y)}, random.Between(0.4, 1));
        pen.Stroke({frame.At(1, y), frame.At(1 - reach, y)}, random.Between(0.4, 1));
    }
    DrawFace(pen, frame.At(vanishing, 0.58), panel.Height() * 0.6, random);
}

void DrawBurst(ComicPen& pen, const Box& panel, Random& random) {
    const PanelFrame frame{panel};
    const Point middle = frame.At(random.Between(0.4, 0.6), random.Between(0.45, 0.55));
    const double reach = Length({panel.Width(), panel.Height()});
    pen.Tone(frame.All(), {0.0, 0.0, 0.05, 0.6});
    for (int i = 0; i < 110; ++i) {  // lines that point at the middle
        const double angle = 2 * std::numbers::pi * (i + random.Between(0, 0.8)) / 110;
        const double half = random.Between(0.002, 0.012);
        const double inner = random.Between(0.3, 0.5) * frame.Size();
        const auto ray = [&](double a, double r) {
            return middle + Point{std::cos(a), std::sin(a)} * r;
        };
        pen.Solid({ray(angle, inner), ray(angle - half, reach), ray(angle + half, reach)});
    }
    Contour star;
    for (int i = 0; i < 28; ++i) {
        const double angle = 2 * std::numbers::pi * i / 28;
        const double radius = frame.Size() * (i % 2 == 0 ? random.Between(0.36, 0.46) : 0.27);
        star.push_back(middle + Point{std::cos(angle) * 1.15, std::sin(angle)} * radius);
    }
    pen.Object(star, {0, 0, 0.1, 0.7}, 1.3);
    const std::u16string sound = Sound(random);
    const double size = frame.Size() * (sound.size() > 2 ? 0.22 : 0.3);
    pen.Paper().WriteLine(
        sound, Font::kHei, size,
        middle + Point{-size * static_cast<double>(sound.size()) * 0.42, size * 0.36});
}

void DrawTree(ComicPen& pen, Point foot, double height, Random& random) {
    pen.Object(
        {foot + Point{-height * 0.04, 0}, foot + Point{height * 0.04, 0},
         foot + Point{height * 0.025, -height * 0.5}, foot + Point{-height * 0.025, -height * 0.5}},
        {0.5, 0.3, 0.5, 0.7});
    Contour crown;
    for (int i = 0; i < 11; ++i) {
        const double angle = 2 * std::numbers::pi * i / 11;
        const double radius = height * random.Between(0.22, 0.31);
        crown.push_back(foot + Point{0, -height * 0.68} +
                        Point{std::cos(angle), std::sin(angle) * 1.1} * radius);
    }
    pen.Object(SmoothLine(crown, 6, /*closed=*/true), {0.35, 0.6, 0.05, 0.7});
}

void DrawHills(ComicPen& pen, const Box& panel, Random& random) {
    const PanelFrame frame{panel};
    pen.Tone(frame.All(), {0.25, 0.5, 0.05, 0}, FadeDown(panel, 0.9, 0.1));
    pen.Object(EllipseContour(frame.At(random.Between(0.15, 0.8), 0.25), frame.Size() * 0.1,
                              frame.Size() * 0.1, 60),
               {0, 0, 0.2, 0.7});
    for (int layer = 0; layer < 3; ++layer) {
        const double phase = random.Turn();
        const double base = 0.5 + 0.17 * layer, swing = 0.1 - 0.02 * layer;
        Contour hill;
        for (int i = 0; i <= 60; ++i) {
            const double x = -0.05 + 1.1 * i / 60;
            hill.push_back(frame.At(x, base + swing * std::sin(phase + x * (5 - layer)) +
                                           swing * 0.3 * std::sin(phase * 2 + x * 13)));
        }
        hill.push_back(frame.At(1.05, 1.05));
        hill.push_back(frame.At(-0.05, 1.05));
        pen.Object(hill, {0.1 + 0.12 * layer, 0.3 + 0.1 * layer, 0.05, 0.3 + 0.15 * layer});
        for (int tree = 0; tree < 2 * layer; ++tree)
            DrawTree(pen, frame.At(random.Between(0.05, 0.95), base + 0.1 + 0.06 * layer),
                     frame.Size() * (0.16 + 0.09 * layer), random);
    }
    DrawWalker(pen, frame.At(random.Between(0.3, 0.7), 0.97), frame.Size() * 0.32, false);
}

void DrawRain(ComicPen& pen, const Box& panel, Random& random) {
    const PanelFrame frame{panel};
    const double meet = random.Between(0.35, 0.65);
    pen.Tone(frame.All(), {0.5, 0.45, 0.3, 0.1}, FadeDown(panel, 0.6, 0.9));
    const Contour road = {frame.At(meet - 0.04, 0.5), frame.At(meet + 0.04, 0.5),
                          frame.At(1.1, 1.05), frame.At(-0.1, 1.05)};
    pen.Object(road, {0.12, 0.2, 0.1, 0.1});
    for (const double side : {-1.0, 1.0})
        for (int house = 0; house < 4; ++house) {
            // Far houses first, so that near ones hide them.
            const double reach = 0.19 + 0.13 * house;
            const auto corner = [&](double distance, double rise) {
                return frame.At(meet + side * distance, 0.5 + rise * distance);
            };
            pen.Object({corner(reach, 0.55), corner(reach + 0.14, 0.6),
                        corner(reach + 0.14, -1.25 - 0.2 * (house % 2)), corner(reach, -1.25)},
                       {0.2 + 0.15 * (house % 2), 0.3, 0.2 + 0.2 * (house % 2), 0.3});
            pen.Solid({corner(reach + 0.03, 0.1), corner(reach + 0.08, 0.1),
                       corner(reach + 0.08, -0.4), corner(reach + 0.03, -0.4)});
        }
    DrawWalker(pen, frame.At(meet + random.Between(-0.1, 0.1), 0.95), frame.Size() * 0.45, true);
    for (int i = 0; i < 90; ++i) {
        const Point from = frame.At(random.Between(-0.05, 1.05), random.Between(-0.1, 1));
        pen.Stroke({from, from + Point{-0.02, 0.09} * panel.Height()}, 0.45);
    }
}

void DrawShelf(ComicPen& pen, const Box& panel, Random& random) {
    const PanelFrame frame{panel};
    pen.Tone(frame.All(), {0.2, 0.1, 0.25, 0.4});
    const Tint backs[] = {{0.45, 0.6, 0.2, 0.1},
                          {0.1, 0.05, 0.6, 0.5},
                          {0.25, 0.1, 0.1, 0.65},
                          {0, 0.35, 0.05, 0.3},
                          {0.6, 0.6, 0.5, 0.2}};
    constexpr int kBoards = 3;
    for (int board = 0; board < kBoards; ++board) {
        const double floor = (board + 1.0) / kBoards;
        double x = 0.02;
        while (x < 0.97) {
            const double width = random.Between(0.02, 0.05);
            const double top = floor - random.Between(0.17, 0.27);
            if (random.Chance(0.9)) {
                const Point from = frame.At(x, top), to = frame.At(x + width, floor - 0.03);
                pen.Object(RectangleContour({from.x, from.y, to.x, to.y}), backs[random.Below(5)],
                           0.9);
                const double band = from.y + (to.y - from.y) * 0.2;
                pen.Stroke({{from.x, band}, {to.x, band}}, 0.8);
            }
            x += width;
        }
        const Point from = frame.At(-0.02, floor - 0.03), to = frame.At(1.02, floor);
        pen.Object(RectangleContour({from.x, from.y, to.x, to.y}), {0.55, 0.3, 0.5, 0.7}, 1.1);
    }
    DrawFace(pen, frame.At(random.Between(0.35, 0.65), 0.68), panel.Height() * 0.42, random);
}

using SceneFunction = void (*)(ComicPen&, const Box&, Random&);
constexpr SceneFunction kScenes[kSceneCount] = {DrawCity,  DrawClose, DrawBurst,
                                                DrawHills, DrawRain,  DrawShelf};

}  // namespace

void DrawScene(int scene, ComicPen& pen, const Box& panel, Random& random) {
    kScenes[scene](pen, panel, random);
}

}  // namespace velloran::samples
