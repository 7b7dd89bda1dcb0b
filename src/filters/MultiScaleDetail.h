#pragma once

// Multi-scale detail: what three smoothings of growing radius take away is given back stronger. The
// finest detail counts less on the bright side of an edge and more on its dark side, so that
// strokes deepen without haloes on the paper.

namespace velloran {

class CDibImage;

/// `radius` of the finest smoothing in pixels, at least 1; the others have twice and four times of
/// it. Normalises the depth. Refuses sides below 4 and a radius below 1; 0, pixels unchanged, then
/// and without memory.
int MultiScaleDetail(CDibImage& image, int radius);

}  // namespace velloran
