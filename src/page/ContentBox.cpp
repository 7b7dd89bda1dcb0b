#include "page/ContentBox.h"

#include <algorithm>
#include <cmath>

#include "core/DibImage.h"
#include "core/Refusal.h"
#include "page/BinaryPage.h"
#include "page/BoxImage.h"
#include "page/Shadows.h"
#include "page/WhitespaceBox.h"
#include "reduce/CleanPage.h"

namespace velloran {
namespace {

constexpr int kUsualSpeckle = 4;

/// What is left without specks and edges, painted into the copy, and its box; the whole copy where
/// nothing is left.
PageBox filterComponents(BoxImage& copy, const ContentBoxRequest& request) {
    CleanRequest clean;
    clean.deBlack = request.removeBlackEdge;
    clean.despeckleSize = copy.speckle > 0 ? copy.speckle : kUsualSpeckle;
    QT::QRect box;
    CleanComponents(copy.page, &box, clean);
    const int width = copy.page.GetWidth(), height = copy.page.GetHeight();
    return {box.left, box.top, std::min(box.right + 1, width), std::min(box.bottom + 1, height)};
}

void Grow(PageBox& box, int by, const CDibImage& page) {
    by = std::min(by, std::max(page.GetWidth(), page.GetHeight()));
    box.left = std::max(0, box.left - by);
    box.top = std::max(0, box.top - by);
    box.right = std::min(page.GetWidth(), box.right + by);
    box.bottom = std::min(page.GetHeight(), box.bottom + by);
}

/// In pixels of the image: outward to whole ones, and within the search rectangle.
PageBox InImage(const PageBox& box, const BoxImage& copy, const PageBox& searchRect) {
    const auto outer = [](int at, double scale) {
        return static_cast<int>(std::ceil(at * scale - 1e-6));
    };
    const int left = searchRect.left + static_cast<int>(box.left * copy.scaleX);
    const int top = searchRect.top + static_cast<int>(box.top * copy.scaleY);
    const int right = searchRect.left + outer(box.right, copy.scaleX);
    const int bottom = searchRect.top + outer(box.bottom, copy.scaleY);
    return {std::max(left, searchRect.left), std::max(top, searchRect.top),
            std::min(right, searchRect.right), std::min(bottom, searchRect.bottom)};
}

PageBox Search(BoxImage& copy, const ContentBoxRequest& request) {
    imageproc::BinaryImage content = BinaryOf(copy.page), shadows;
    if (request.removeBlackEdge || request.bkMore) {
        const imageproc::BinaryImage all = content;
        removeShadows(all, content, shadows);
    }
    PaintBinary(content, copy.page);
    PageBox box = filterComponents(copy, request);
    if (request.bkMore) {
        findBoxByWhitespace(content, BinaryOf(copy.page), shadows, box);
        if (box.right <= box.left || box.bottom <= box.top)
            return {0, 0, copy.page.GetWidth(), copy.page.GetHeight()};
    }
    if (request.speckle > 0 && request.compensation)
        Grow(box, copy.speckle, copy.page);
    return box;
}

}  // namespace

int findContentBox(const CDibImage& image, const ContentBoxRequest& request, PageBox& box) {
    box = request.searchRect;
    if (!image.IsValid())
        return 0;
    return RefuseWhenOutOfMemory([&] {
        BoxImage copy;
        if (!prepareBoxImage(image, request, copy))
            return 0;
        const PageBox found = Search(copy, request);
        if (found.Width() < 1 || found.Height() < 1)
            return 0;
        box = InImage(found, copy, request.searchRect);
        return 1;
    });
}

}  // namespace velloran
