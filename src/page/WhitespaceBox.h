#pragma once

// The content box of a page with a dirty background: what large empty bands leave over.

#include "imageproc/BinaryImage.h"
#include "page/Margins.h"

namespace velloran {

/// `content` is the page without shadows, `cleaned` the same without specks, `shadows` what was
/// taken for shadow; equal sizes. The box is in pixels of them, empty where nothing is left. Throws
/// std::bad_alloc.
void findBoxByWhitespace(const imageproc::BinaryImage& content,
                         const imageproc::BinaryImage& cleaned,
                         const imageproc::BinaryImage& shadows, PageBox& box);

}  // namespace velloran
