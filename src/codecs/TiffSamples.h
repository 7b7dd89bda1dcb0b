#pragma once

// From rows of TIFF samples to rows of a page.

#include <cstdint>
#include <vector>

#include "codecs/TiffFormat.h"

namespace velloran {

class CDibImage;
class InkConverter;

/// The colour before it was multiplied by its alpha, rounded; without alpha the sample itself.
std::uint8_t UnmultipliedSample(unsigned sample, unsigned alpha);

class TiffSamples {
 public:
    /// All must outlive this; the page has the format's size and depth, and an alpha plane where
    /// the format has alpha.
    TiffSamples(const TiffFormat& format, const InkConverter& inks, CDibImage& page);

    /// Where a decoded row may go at once: the page's own row, else scratch.
    std::uint8_t* Target(int y, std::size_t rowBytes);
    /// Turns a row of samples, which it may change, into row y of the page, counted from the top.
    void Take(std::uint8_t* samples, int y);

 private:
    void TakeIndexed(const std::uint8_t* samples, std::uint8_t* row);
    void TakeGray(const std::uint8_t* samples, std::uint8_t* row) const;
    void TakeRgb(const std::uint8_t* samples, std::uint8_t* row) const;
    void TakeCmyk(const std::uint8_t* samples, std::uint8_t* row);
    void TakeAlpha(const std::uint8_t* samples, std::uint8_t* row, std::uint8_t* alpha) const;

    const TiffFormat& format_;
    const InkConverter& inks_;
    CDibImage& page_;
    std::size_t width_, stride_;
    std::uint8_t inversion_;  // 255 where white is zero and the page has the identity ramp
    std::vector<std::uint8_t> scratch_, narrow_;
};

}  // namespace velloran
