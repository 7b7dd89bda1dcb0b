#pragma once

// What stands on a page of words.

#include "samples/PageKinds.h"
#include "samples/Sheet.h"
#include "samples/Texts.h"

namespace velloran::samples {

/// A book page: running head, title, justified paragraphs, with pictures between them where asked
/// for, page number.
void DrawBookPage(Sheet& sheet, Language language, BookFill fill, int pageNumber, Random& random);
/// A page of the old kind: columns from right to left between rules, in a double frame.
void DrawVerticalPage(Sheet& sheet, Random& random);
/// A title and a ruled table of names and numbers.
void DrawTablePage(Sheet& sheet, Random& random);
/// A short letter; returns the left end of its signature, where a seal may touch it.
Point DrawLetter(Sheet& sheet, Random& random);

}  // namespace velloran::samples
