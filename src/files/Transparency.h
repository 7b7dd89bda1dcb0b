#pragma once

// Pages that let shine through what lies beneath. What a picture holds under its transparent parts
// is arbitrary, black as a rule: where a target cannot keep the transparency, the page is laid on
// the fill colour, as a page of glass on paper.

#include "core/BaseImage.h"

namespace velloran {

class CDibImage;

/// Whether any pixel is not opaque: by the alpha plane, by the palette's own alpha, or by the
/// transparent index.
bool HasTransparency(const CDibImage& image);

/// Brings palette alpha and transparent index into an alpha plane, which goes along with changes of
/// depth. 0 without memory, image unchanged.
int MoveTransparencyToPlane(CDibImage& image);

/// Blends every pixel with the colour by its alpha; the image is opaque then. Becomes 24 bits where
/// it must: grey pages on a colour, palettes. 0 without memory, image unchanged but for its depth.
int LayOnColor(CDibImage& image, PaletteEntry color);

}  // namespace velloran
