#pragma once

// Scaling of the working image.

namespace velloran {

class CDibImage;

/// To a new size in place: area averaging where both sides shrink, else three-lobe Lanczos. A
/// pure black-and-white image that shrinks stays at its depth, and so does a depth below 8 with
/// `keepBits`; other palettes become grey or colour first. Alpha is scaled with it, resolutions
/// stay. An equal size is done at once; 0, image unchanged, for an empty image, a side below 1 or
/// no memory.
int ResizeTo(CDibImage& image, int width, int height, bool keepBits = false);

/// What ResizeTo makes of a 24-bit or grey image, which stays. Empty for other images, a side below
/// 1 or no memory; throws std::bad_alloc where a resize needs more.
CDibImage ResizedCopy(const CDibImage& image, int width, int height);

/// ResizeTo with linear interpolation both ways; 8 and 24 bits.
int ResizeToLinear(CDibImage& image, int width, int height);

/// Area averaging where both sides shrink, else linear. 1-bit and 4-bit images stay at their depth,
/// with or without `keepBits`: each pixel takes the palette entry nearest to the mean colour that
/// it covers, of two equally near ones the first. Other images as ResizeTo prepares them.
int ReduceBilevelAware(CDibImage& image, int width, int height, bool keepBits = false);

}  // namespace velloran
