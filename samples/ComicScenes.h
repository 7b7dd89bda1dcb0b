#pragma once

// What happens in the panels of a comic. Each scene fills the box; the sheet cuts at the panel.

#include "samples/ComicPen.h"
#include "samples/Random.h"

namespace velloran::samples {

constexpr int kSceneCount = 6;
/// Scene 0 to kSceneCount - 1; no two of them look alike, and neither do two drawings of one.
void DrawScene(int scene, ComicPen& pen, const Box& panel, Random& random);

/// A head with shoulders, `size` pixels from chin to crown.
void DrawFace(ComicPen& pen, Point middle, double size, Random& random);
/// Somebody in a coat, seen from afar, feet at `feet`.
void DrawWalker(ComicPen& pen, Point feet, double height, bool umbrella);

}  // namespace velloran::samples
