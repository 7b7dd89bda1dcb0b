#pragma once

// Halving of a binary image: each output pixel covers a 2 by 2 block and is black when at least so
// many of the four are. (D. Bloomberg, "Multiresolution Morphological Approach to Document Image
// Analysis", 1991.)

#include "imageproc/BinaryImage.h"

namespace velloran::imageproc {

class ReduceThreshold {
 public:
    explicit ReduceThreshold(const BinaryImage& image) : image_(image) {}

    /// Halves the image; the odd rest is dropped. A line of pixels pairs up along its length
    /// (1 and 2 take either, 3 and 4 both), a single pixel and a null image stay. A threshold
    /// outside 1 to 4 throws std::invalid_argument.
    ReduceThreshold& reduce(int threshold);

    const BinaryImage& image() const { return image_; }
    operator const BinaryImage&() const { return image_; }

 private:
    void reduceBlocks(int threshold);
    void reduceColumn(bool either);
    void reduceRow(bool either);

    BinaryImage image_;
};

}  // namespace velloran::imageproc
