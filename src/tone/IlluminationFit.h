#pragma once

// Uneven light evened out: a smooth surface is fitted to the paper of a page, and every sample is
// divided by it.

namespace velloran {

class CDibImage;

/// 24-bit pages keep their colours, all others become 8-bit grey. 0 for an invalid image, sides
/// below 2 and without memory, with the image unchanged but for its depth.
int IlluminationFit(CDibImage& image);

}  // namespace velloran
