#pragma once

// Where the content of a page lies: the box of what remains on a small black-and-white copy without
// the scanner's shadows, black edges and specks.

#include "page/Margins.h"

namespace velloran {

class CDibImage;

struct ContentBoxRequest {
    bool removeBlackEdge = true;  // shadows and what touches the edge do not count
    PageBox searchRect;           // within the image
    int speckle = 8;              // diameter in pixels of the copy; 0 and less stand for 4
    bool compensation = true;     // the box grows by the speckle again; not for 0 and less
    bool bkMore = false;          // for dirty backgrounds: empty bands are cut away, too
};

/// 1 with the box in pixels of the image, which stays as it is; it never leaves searchRect, and a
/// page without content gives searchRect. 0 with searchRect for an empty image or a search
/// rectangle without pixels, without memory, and where the binary toolkit fails.
int findContentBox(const CDibImage& image, const ContentBoxRequest& request, PageBox& box);

}  // namespace velloran
