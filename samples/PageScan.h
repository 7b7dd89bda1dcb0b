#pragma once

// From inks, paper and light to the pixels that a scanner would give.

#include "core/DibImage.h"
#include "samples/Light.h"
#include "samples/Plane.h"
#include "samples/Sheet.h"
#include "samples/Truth.h"

namespace velloran::samples {

enum class Depth { kColor, kGray, kBilevel };

struct PaperStock {
    Rgb color{246, 245, 241};
    double blotch = 0;    // amplitude of clouds, levels
    double fibre = 0;     // amplitude of fine structure, levels
    double browning = 0;  // how far the rim turns brown, 0 to 1
};

/// All that a scan sees. Planes that are empty are not there.
struct Scene {
    int width = 0, height = 0, dpi = 300;
    std::uint64_t seed = 0;
    PaperStock stock;
    Rgb ink{28, 27, 30}, sealColor{196, 32, 38}, desk{20, 20, 22}, speckColor{52, 46, 40};
    bool woodenDesk = false;
    Plane paper;  // empty: paper everywhere
    Plane deskShadow;
    Inks inks;
    Plane reverse;  // the other side's ink, blurred
    double bleedThrough = 0;
    Plane specks;
    std::vector<Box> blackEdges;  // whole pixels
    Rgb blackEdgeColor{9, 9, 11};
    Light light;
    double noise = 0;  // standard deviation, levels
};

/// Rows are computed on all threads; the picture does not hang on their number. Throws
/// std::bad_alloc when there is no memory for the picture.
CDibImage ScanScene(const Scene& scene, Depth depth, bool inverted);

/// A plane as an 8-bit grey image.
CDibImage PlaneToImage(const Plane& plane, int dpi);

}  // namespace velloran::samples
