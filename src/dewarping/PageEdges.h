#pragma once

// Curves of a page from its upper and lower edge.

#include "core/DibImage.h"
#include "dewarping/DistortionModelBuilder.h"

namespace velloran::dewarping {

/// Finds the edges of the page on an 8-bit grey picture of that width and gives the builder a curve
/// for each, and its bounds. Returns the share of the width that the shorter of both covers; 0,
/// builder unchanged, where there is no pair. Throws std::bad_alloc.
double tracePageEdges(const CDibImage& gray, DistortionModelBuilder& builder, int width);

}  // namespace velloran::dewarping
