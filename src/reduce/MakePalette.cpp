#include "reduce/PaletteMakers.h"

namespace velloran {

Palette MakePalette(const CDibImage& image, int quantize, int colors, int bits) {
    switch (quantize) {
        case kMedianCut:
            return MedianCutPalette(image, colors);
        case kXiaolinWu:
            return WuPalette(image, colors);
        case kFixedPalette:
            return FixedPalette(image, colors, bits);
        case kNeuralNetwork:
            return NeuralPalette(image, colors);
        default:
            return OctreePalette(image, bits == 1 ? 2 : colors);
    }
}

}  // namespace velloran
