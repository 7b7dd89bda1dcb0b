#pragma once

// Curves of a page from its lines of text.

#include <optional>

#include "core/DibImage.h"
#include "core/QtTypes.h"
#include "dewarping/CoverPage.h"
#include "dewarping/DistortionModelBuilder.h"
#include "dewarping/PageShape.h"

namespace velloran::dewarping {

/// What tracing lines of text brought: how well they agree, and the lines themselves in pixels of
/// the picture.
struct TextTrace {
    ShapeEvidence evidence;  // its pitch is in pixels of the picture
    std::vector<LineTrack> lines;
    PageContent content;  // what the agreeing lines cover
};

/// Traces the lines of text of an 8-bit grey page of that width and gives the builder a curve for
/// each line that agrees with the others, and its bounds: those given, where they have a length,
/// else the sides of the page. `sigma` says how even the light is, `clean` 1 that the page holds
/// text alone. Nothing, builder unchanged, where no lines hold a shape. Throws std::bad_alloc.
std::optional<TextTrace> traceTextLines(const CDibImage& gray, DistortionModelBuilder& builder,
                                        int width, double sigma, const QT::QLineF& left,
                                        const QT::QLineF& right, int clean);

/// Traces a smaller, blurred copy (the smallest for `second` 1), on which lines run together across
/// gaps, within the bounds of the builder. Its curves take the place of those that begin or end
/// near them. 0, builder unchanged, when nothing is found.
int extendTextLines(const CDibImage& gray, DistortionModelBuilder& builder, int width, int height,
                    int second, double sigma);

}  // namespace velloran::dewarping
