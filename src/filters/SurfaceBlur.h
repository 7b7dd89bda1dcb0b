#pragma once

// Surface blur: smoothing that keeps edges. It flattens screens and paper texture and leaves lines.

namespace velloran {

class CDibImage;

/// The value of the parameter is the position in its list.
enum class SurfaceBlurAlgorithm : int {
    kWeighted = 0,           // weights fall linearly with the difference from the centre
    kGuided = 1,             // guided filter, the picture is its own guide
    kSelectiveGaussian = 2,  // Gaussian of the neighbours that are near in level
    kSelectiveMean = 3,      // mean of the neighbours that are near in level
};

/// Each channel for itself, every one of the `times` passes on the result of the one before.
/// `radius` is limited to 1..15, `threshold` to 2..50, `times` to 3. Normalises the depth. Refuses
/// times below 1, empty images and algorithms outside the list; the guided form also sides
/// below 3 and, like the selective Gaussian, a shortage of memory. The other two algorithms leave
/// out the passes that find no memory and return non-zero.
int SurfaceBlur(CDibImage& image, int radius, int threshold, int times, int algorithm);

}  // namespace velloran
