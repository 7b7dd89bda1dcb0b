#include "samples/Defects.h"

#include <algorithm>
#include <cmath>

namespace velloran::samples {

void AddSpecks(Scene& scene, Truth& truth, Random& random) {
    constexpr int kSpecks = 90;
    scene.specks = Plane(scene.width, scene.height);
    Coverage scratch;
    for (int i = 0; i < kSpecks; ++i) {
        // Many small ones, few large ones; none below what a pixel can show.
        const double size = random.Unit();
        const double radius = std::max(0.8, scene.dpi / 300.0 * (1 + 5 * size * size * size));
        const Point center = {random.Between(radius + 1, scene.width - radius - 1),
                              random.Between(radius + 1, scene.height - radius - 1)};
        scene.specks.Paint(CirclePath(center, radius), 255, scratch);
        truth.specks.push_back({center, radius});
    }
}

void AddBlackEdges(Scene& scene, Truth& truth, Random& random) {
    const double w = scene.width, h = scene.height;
    const auto thickness = [&](double side) {
        return std::max(3.0, std::round(side * random.Between(0.012, 0.045)));
    };
    const int without = random.Below(5);  // of left, top, right, bottom; 4: none
    const Box edges[] = {{0, 0, thickness(w), h},
                         {0, 0, w, thickness(h)},
                         {w - thickness(w), 0, w, h},
                         {0, h - thickness(h), w, h}};
    const int second = random.Below(4);
    for (int i = 0; i < 4; ++i)
        if (i != without && i != second)
            scene.blackEdges.push_back(edges[i]);
    truth.blackEdges = scene.blackEdges;
    truth.blackEdgeColor = scene.blackEdgeColor;
}

Light MakeLight(const PageRecipe& recipe, const PagePlaces& places, const Frame& frame,
                Random& random) {
    Light light;
    if (recipe.light == LightKind::kUneven) {
        light.base = 0.93;
        light.slopeX = random.Sign() * random.Between(0.06, 0.13);
        light.slopeY = random.Sign() * random.Between(0.04, 0.1);
        light.falloff = random.Between(0.02, 0.07);
    }
    if (recipe.light == LightKind::kCorner) {
        const double shorter = std::min(frame.width, frame.height);
        light.corner = Light::Corner{
            {random.Chance(0.5) ? 0.0 : frame.width, random.Chance(0.5) ? 0.0 : frame.height},
            shorter * random.Between(0.55, 0.8),
            random.Between(0.4, 0.55)};
    }
    if (places.gutter)
        light.gutter = Light::Gutter{places.gutter->top, places.gutter->bottom,
                                     std::max(3.0, frame.width * 0.02),
                                     random.Between(recipe.gutterDepthFrom, recipe.gutterDepthTo)};
    return light;
}

PaperStock MakeStock(StockKind kind) {
    switch (kind) {
        case StockKind::kWhite:
            return {{246, 245, 241}, 0.6, 0.8, 0};
        case StockKind::kCream:
            return {{239, 231, 212}, 1.5, 1.2, 0};
        case StockKind::kNewsprint:
            return {{229, 223, 208}, 2, 3.5, 0};
        case StockKind::kOld:
            return {{224, 203, 160}, 7, 3, 0.7};
    }
    return {};
}

}  // namespace velloran::samples
