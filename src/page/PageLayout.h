#pragma once

// Placement of the content on its page: how large the content is to become, how large the page is,
// and the page itself. A request is rebuilt for each run; lengths in unit 0 are hundredths of a
// centimetre, and become pixels by its DPI.

#include "core/Pipeline.h"

namespace velloran {

class CDibImage;

/// Sets innerWidth and innerHeight, the type area in pixels; -1 where that side is free, 0 where
/// the margins leave nothing. Any values are taken.
void computeInnerSize(LayoutRequest& request);

/// Sets contentWidth and contentHeight: the cut page by its percentage, enlarged or reduced to the
/// type area where the rules ask for that. Both are 0 when the size of the page is not known.
void computeContentSize(LayoutRequest& request);

/// Whether both sides of the type area have 11 pixels or more, or are free; computes them.
bool innerSizeValid(LayoutRequest& request);

/// Puts the image on its page, at any depth: the page takes the image's depth, palette, resolution
/// and transparent index, its rest the fill colour or the palette entry nearest to it, and opaque
/// alpha where the image has alpha. In unit 0 the margins in the request become pixels. 1 also
/// where the size asks for no page; 0, image unchanged, for an empty image, a page of no size or
/// above the limits of a picture, and without memory.
int placeOnPage(CDibImage& image, LayoutRequest& request);

}  // namespace velloran
