#pragma once

// How many pages a TIFF holds.

namespace velloran {

class ByteSource;

/// Walks the chain of pages; previews and masks do not count. `pages` is at least 1. False when the
/// chain leads out of the file.
bool CountTiffPages(ByteSource& source, int& pages);

}  // namespace velloran
