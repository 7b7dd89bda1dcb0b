#pragma once

// What the size of a page and the placement on it share.

#include <cstdint>

#include "core/Pipeline.h"

namespace velloran {

/// In pixels; -1 for a side that is free.
struct PageSides {
    std::int32_t width = -1, height = -1;
};

/// A length of the request in pixels: hundredths of a centimetre in unit 0, else as it is.
std::int32_t LayoutPixels(const LayoutRequest& request, std::int32_t length);

/// The sides that the page size tells by itself.
PageSides SidesOfPage(const LayoutRequest& request);

}  // namespace velloran
