#include "page/Shadows.h"

#include "imageproc/BinaryMorphology.h"
#include "imageproc/RasterOp.h"
#include "imageproc/SeedFill.h"

namespace velloran {

using imageproc::BinaryImage;
using imageproc::BwColor;

imageproc::BinaryImage filterShadows(const BinaryImage& shadows) {
    constexpr int kEdge = 2;
    BinaryImage edge(shadows.size(), BwColor::kBlack);
    if (shadows.width() > 2 * kEdge && shadows.height() > 2 * kEdge)
        edge.fill(
            QT::QRect{kEdge, kEdge, shadows.width() - 1 - kEdge, shadows.height() - 1 - kEdge},
            BwColor::kWhite);
    return seedFill(edge, shadows, imageproc::Connectivity::k8);
}

void removeShadows(const BinaryImage& src, BinaryImage& content, BinaryImage& shadows) {
    using imageproc::Brick;
    const QT::QSize flat{300, 14}, upright{14, 300};
    BinaryImage bars = openBrick(src, flat);
    imageproc::rasterOp<imageproc::Unite>(bars, openBrick(src, upright));
    const BinaryImage reach = dilateBrick(src, Brick(QT::QSize{3, 3}));
    BinaryImage joined = seedFill(bars, reach, imageproc::Connectivity::k8);
    imageproc::rasterOp<imageproc::Intersect>(joined, src);
    shadows = filterShadows(joined);
    content = src;
    subtract(content, shadows);
}

}  // namespace velloran
