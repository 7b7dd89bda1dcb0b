#pragma once

// The depth that the level filters work at. It differs from the one of the tone steps on purpose:
// little depths become grey even where they are coloured, and a palette of 8 bits becomes colour
// even where its entries are grey.

namespace velloran {

class CDibImage;

/// 24 bits and 8-bit grey stay; below 8 bits becomes 8-bit grey; another 8-bit palette becomes 24
/// bits. 0, image unchanged, when empty or without memory.
int EnsureKernelDepth(CDibImage& image);

}  // namespace velloran
