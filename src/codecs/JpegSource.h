#pragma once

// What a new JPEG may inherit from the file that its page came from. Internal to the codecs.

#include <array>
#include <cstdint>
#include <optional>

struct jpeg_decompress_struct;

namespace velloran {

class CDibImage;

struct JpegSourceHead {
    using QuantTable = std::array<std::uint16_t, 64>;
    struct Sampling {
        int horizontal = 1, vertical = 1;
    };

    std::array<std::optional<QuantTable>, 4> quantTables;  // by slot
    int components = 0;
    std::array<Sampling, 4> sampling;  // of the first four components
    bool progressive = false;
    bool usualHuffmanTables = false;  // tables 0 are those of the standard's annex
};

/// What a head that was read holds. Quantisation tables that hold a zero are damaged and left out.
JpegSourceHead SourceHeadOf(const jpeg_decompress_struct& head);

/// The head that JPG_SRC_* mean: that of `image` when it came from a JPEG, else of `sourceImage`
/// (may be null) under the same condition, else null.
const JpegSourceHead* JpegHeadFor(const CDibImage& image, const CDibImage* sourceImage);

}  // namespace velloran
