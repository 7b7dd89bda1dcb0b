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
/// `first`, then `second`.
PixelMap Compose(const PixelMap& first, const PixelMap& second);

/// Gain in percent for samples from `threshold` on, the others keep their value; 100 is neutral.
/// Here, in brightness and in gamma a negative result saturates at 255.
int MapHighlight(int highlight, int threshold, PixelMap& map);
/// Gain in percent of every sample, summed up by repeated addition; 100 is neutral.
int MapBrightness(int brightness, PixelMap& map);
/// (i * i) / (255 - div) - offset, clamped; the quotient is truncated. A div of 0 or 255 is neutral
/// whatever the offset.
int MapParabola(int div, int offset, PixelMap& map);
/// Contrast around mid grey 128, in percent, truncated toward zero; 100 is neutral.
int MapContrast(int contrast, PixelMap& map);
/// Cubic Bezier curve from (0, 0) to (255, 255) with two control points, which may lie outside
/// 0..255; where the curve turns back in x the later sample counts. All zero and (0, 0, 255, 255)
/// are neutral.
int MapBezierCurve(int x1, int y1, int x2, int y2, PixelMap& map);
/// Exponent in hundredths, white kept: above 100 darkens mid tones, below lightens; 100 is neutral,
/// 0 makes all white.
int MapGamma(int gamma, PixelMap& map);

inline constexpr int kMaxBezierDegree = 15;

/// One-dimensional Bezier curve by de Casteljau's scheme: degree + 1 control values sampled at
/// k / sampleCount (so the last point is never reached), each plus 0.5 and truncated toward zero:
/// -3.2 gives -2. A count below 1, or a degree outside 0..15, yields nothing.
void BezierSample(int degree, const std::int32_t* controlValues, int sampleCount,
                  std::int32_t* out);

/// The map over the palette entries, indexes kept; or over every byte of every pixel of 24-bit
/// images and of 8-bit ones with the identity grey ramp, padding kept. 1-bit images of pure black
/// and white pass unchanged. Rows run in parallel. Returns non-zero when the image is valid.
int ApplyPixelMap(const PixelMap& map, CDibImage& image);

}  // namespace velloran
