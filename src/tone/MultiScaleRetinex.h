#pragma once

// Multi-scale retinex: each sample beside its surroundings at several sizes, in logarithms. (D.
// Jobson, Z. Rahman, G. Woodell, "A Multiscale Retinex for Bridging the Gap Between Color Images
// and the Human Observation of Scenes", 1997.)

namespace velloran {

class CDibImage;

/// The fixed values of the illumination step.
struct RetinexParams {
    int scale = 210;
    int scaleCount = 3;
    float dynamicRange = 4.0F;  // standard deviations each side of the mean that are shown
};

/// With `brighten` the lightest 0.3 percent of the samples become white. A picture without any
/// contrast comes out white. 0 for an invalid image, a scale below 0, less than one scale or more
/// than 16, and without memory, with the image unchanged but for its depth.
int MultiScaleRetinex(CDibImage& image, bool brighten, int scale = RetinexParams{}.scale,
                      int scaleCount = RetinexParams{}.scaleCount,
                      float dynamicRange = RetinexParams{}.dynamicRange);

}  // namespace velloran
