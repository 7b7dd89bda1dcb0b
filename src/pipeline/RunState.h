#pragma once

// What one run of the enhancement carries from step to step. It lives and ends with the run.

#include <cstdint>

#include "core/DibImage.h"
#include "core/Pipeline.h"
#include "page/PageSizes.h"
#include "params/Settings.h"
#include "pipeline/Findings.h"
#include "pipeline/FoundValues.h"
#include "pipeline/StepTable.h"

namespace velloran {

struct RunState {
    static constexpr std::uint32_t kUnknownBackground = 0xFFFFFFFF;

    CDibImage* image = nullptr;  // the page, changed in place; null when describing
    int stop = kStopWhole;
    bool isPreview = false;  // nobody is told of the steps: colours are only made to look reduced
    std::int32_t deskewEdge = 0;

    /// The values of the run, with what its steps found so far.
    ParaValues values{};
    FoundValues found{};
    bool wantsSure = false;  // the searches also tell how sure they are
    FoundSure sure{};

    /// Empty, or 8 bits in the size of the page: 255 where the page is, 0 where a geometry step
    /// left nothing of it.
    CDibImage mask{};
    /// Three equal bytes: the dark level of the page, measured where it is first asked for.
    std::uint32_t background = kUnknownBackground;
    std::int32_t pendingAngle = 0;  // deskew, hundredths of a degree
    bool deferRotation = false;     // until the content box was searched
    LayoutRequest layout{};
    DecreaseBppRequest reduce{};

    /// What the gates may know. Content that was not measured yet, since the page is not known or
    /// its layout not begun, is left out.
    GateInput Known() const {
        if (image == nullptr || (layout.imageWidth == 0 && layout.contentWidth == 0))
            return {values, {}};
        return {values, ContentSizes{image->GetWidth(), image->GetHeight(), layout.contentWidth,
                                     layout.contentHeight}};
    }

    void NoteSure(Finding finding, double value) {
        sure[static_cast<std::size_t>(finding)] = value;
    }

    std::int32_t Value(ParaIndex index) const { return values[static_cast<std::size_t>(index)]; }
};

/// Whether content of the size that the layout wants can be a picture at all. Where a page size
/// asks for more, the page stays as it is; a percentage that does is told as want of memory.
inline bool FitsItsPage(const RunState& state) {
    return state.Value(PARA_PAGE_SIZE) < kGivenWidth ||
           CDibImage::CanCreate(state.layout.contentWidth, state.layout.contentHeight,
                                state.image->GetBpp());
}

}  // namespace velloran
