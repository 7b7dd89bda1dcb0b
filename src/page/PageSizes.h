#pragma once

// The page sizes that a layout offers, by their position in the list of PARA_PAGE_SIZE.

#include <cstdint>

namespace velloran {

/// The first rows of the list, which no size stands behind; kFirstNamedSize and above are sizes.
enum PageSizeRow : std::int32_t {
    kKeepPage = 0,        // the page as it was, blank outside the content
    kContentOnly = 1,     // nothing is added
    kContentMargins = 2,  // the content and the margins
    kGivenWidth = 3,
    kGivenHeight = 4,
    kGivenBoth = 5,
    kFirstNamedSize = 6,
    kPageSizeCount = 36,
};

/// In millimetres; all sizes of the list are whole ones.
struct PaperSize {
    int widthMm = 0, heightMm = 0;
};

/// The paper of a row from kFirstNamedSize on; 0 by 0 for every other value.
PaperSize PaperSizeOf(std::int32_t pageSizeRow);

}  // namespace velloran
