#pragma once

// How many pages a TIFF holds, and where they lie.

#include <cstdint>

namespace velloran {

class ByteSource;

/// Walks the chain of pages; previews and masks do not count. `pages` is at least 1. False when the
/// chain leads out of the file.
bool CountTiffPages(ByteSource& source, int& pages);

/// Where the page with this number (from 1) lies in the file; 0 for one that there is not.
std::uint64_t FindTiffPage(ByteSource& source, int page);

}  // namespace velloran
