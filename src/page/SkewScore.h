#pragma once

// How sharply the lines of a black-and-white page stand out when it is looked along at an angle:
// the squared steps of the counts of black from line to line. Black is the value 0; rows count as
// they are stored, the bottom one first. Angles are in degrees.

#include "core/DibImage.h"

namespace velloran {

/// Over rows that rise by tan(angle) a column. Throws std::bad_alloc.
double scoreRows(const CDibImage& gray, double angle);
/// Over columns that move to the right by tan(angle) a row.
double scoreColumns(const CDibImage& gray, double angle);

/// Half the width and height, an odd rest dropped: 255 where the four pixels add up to more than
/// (4 - rule) * 255, else 0. With rule 1 one black pixel makes a black one, with rule 2 it takes
/// two. Resolutions halve. An image below 2 pixels in a direction stays as it is. Throws
/// std::bad_alloc.
void halve(CDibImage& gray, int rule);

}  // namespace velloran
