#pragma once

// Pixel mapping: several tone adjustments folded into one 256-byte table, so that a page is
// touched once whatever their number. Samples are 8 bits a channel. Each stage composes its own
// table behind the running one and returns 0 when it is neutral (map untouched), else 1. Any int
// is taken as a parameter.

#include <array>
#include <cstdint>

namespace velloran {

class CDibImage;

/// Index: input sample; value: output sample.
using PixelMap = std::array<std::uint8_t, 256>;

PixelMap IdentityPixelMap();

/// Gain in percent for samples from `threshold` on; 100 is neutral.
int MapHighlight(int highlight, int threshold, PixelMap& map);
/// Gain in percent by repeated addition; 100 is neutral.
int MapBrightness(int brightness, PixelMap& map);
/// (i * i) / (255 - div) - offset; div 0 and 255 are neutral.
int MapParabola(int div, int offset, PixelMap& map);
/// Contrast around mid grey 128, in percent; 100 is neutral.
int MapContrast(int contrast, PixelMap& map);
/// Cubic Bezier curve through (0, 0) and (255, 255); all zero and the diagonal are neutral.
int MapBezierCurve(int x1, int y1, int x2, int y2, PixelMap& map);
/// Exponent in hundredths; 100 is neutral.
int MapGamma(int gamma, PixelMap& map);

/// One-dimensional Bezier curve by de Casteljau's scheme: degree + 1 control values sampled at
/// k / sampleCount, each rounded half up toward zero. A count below 1 yields nothing.
void BezierSample(int degree, const std::int32_t* controlValues, int sampleCount,
                  std::int32_t* out);

/// The map over palette entries, or over the pixels of 8-bit grey and 24-bit images; pure
/// black-and-white images pass. Returns non-zero when the image is valid.
int ApplyPixelMap(const PixelMap& map, CDibImage& image);

}  // namespace velloran
