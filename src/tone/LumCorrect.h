#pragma once

// Evening out the light of a page by one of six methods.

namespace velloran {

class CDibImage;

/// 1 fitted surface, 2 multi-scale retinex and brightening, 3 without it, 4 Frankle-McCann retinex,
/// 5 black-and-white text, 6 the same with red kept. 0 for any other method and where the method
/// refuses.
int LumCorrect(CDibImage& image, int method);

}  // namespace velloran
