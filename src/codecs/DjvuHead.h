#pragma once

// The chunks of a DjVu file that tell of its pages, read without the library. Internal to the
// codecs.

#include <cstdint>
#include <vector>

#include "io/FileError.h"

namespace velloran {

class ByteSource;

struct DjvuPageHead {
    int width = 0, height = 0;  // as it is shown
    int dpi = 300;
};

/// Where the pages lie, in their order; false with a reason where there are none in the file.
bool FindDjvuPages(ByteSource& source, std::vector<std::uint64_t>& places, FileError* error);

/// What the page at a place says of itself.
bool ReadDjvuPageHead(ByteSource& source, std::uint64_t place, DjvuPageHead& head,
                      FileError* error);

}  // namespace velloran
