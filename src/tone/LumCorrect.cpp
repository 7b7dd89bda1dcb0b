#include "tone/LumCorrect.h"

#include "tone/BlackWhiteText.h"
#include "tone/FrankleMcCann.h"
#include "tone/IlluminationFit.h"
#include "tone/MultiScaleRetinex.h"

namespace velloran {
namespace {

/// Positions in the list of PARA_LUM_CORRECT.
enum LumMethod : int {
    kFit = 1,
    kRetinexBrightened,
    kRetinex,
    kFrankleMcCann,
    kBlackWhite,
    kBlackWhiteAndRed,
};

}  // namespace

int LumCorrect(CDibImage& image, int method) {
    switch (method) {
        case kFit:
            return IlluminationFit(image);
        case kRetinexBrightened:
            return MultiScaleRetinex(image, /*brighten=*/true);
        case kRetinex:
            return MultiScaleRetinex(image, /*brighten=*/false);
        case kFrankleMcCann:
            return FrankleMcCannRetinex(image, /*iterations=*/1);
        case kBlackWhite:
            return BlackWhiteText(image, /*keepColor=*/false);
        case kBlackWhiteAndRed:
            return BlackWhiteText(image, /*keepColor=*/true);
        default:
            return 0;
    }
}

}  // namespace velloran
