#pragma once

// What a new JPEG may inherit from the file that its page came from. Internal to the codecs.

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>

namespace velloran {

class CDibImage;
class CParaBlock;

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

/// The path that JPG_SRC_* mean: that of `image` when its file is a JPEG, else of `sourceImage`
/// (may be null) under the same condition, else empty.
std::filesystem::path JpegSourcePath(const CDibImage& image, const CDibImage* sourceImage);

/// Nothing when the file cannot be opened or has no readable head. Quantisation tables that hold a
/// zero are damaged and left out. Throws std::bad_alloc.
std::optional<JpegSourceHead> ReadJpegSourceHead(const std::filesystem::path& path);

}  // namespace velloran
