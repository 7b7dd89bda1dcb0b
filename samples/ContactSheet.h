#pragma once

// Pictures side by side with captions, to be looked at: before and after, or one page through
// several settings.

#include <string>
#include <vector>

#include "core/DibImage.h"

namespace velloran::samples {

struct SheetPicture {
    std::u16string caption;
    CDibImage image;
};

struct SheetLayout {
    int columns = 2;
    /// The largest size of a picture on the sheet. A larger one is shrunk by area averaging, with
    /// its proportions; a smaller one keeps its pixels.
    int cellWidth = 600, cellHeight = 800;
    double captionSize = 18;  // pixels; 0: no captions
};

/// A 24-bit sheet, row by row from the top left; each caption stands below its picture. Depths of
/// the pictures may change. Throws std::invalid_argument for no pictures, an empty picture or a
/// layout below 1, std::bad_alloc, and FontMissing where a caption wants a font.
CDibImage MakeContactSheet(std::vector<SheetPicture>& pictures, const SheetLayout& layout);

}  // namespace velloran::samples
