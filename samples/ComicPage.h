#pragma once

// A page of panels with speech balloons.

#include "samples/ComicPen.h"
#include "samples/Random.h"
#include "samples/Texts.h"

namespace velloran::samples {

void DrawComicPage(Sheet& sheet, ComicStyle style, int pageNumber, Random& random);

}  // namespace velloran::samples
