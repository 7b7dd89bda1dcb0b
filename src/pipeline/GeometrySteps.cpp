#include "pipeline/GeometrySteps.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "core/Rounding.h"
#include "core/StepContext.h"
#include "dewarping/CurvePoints.h"
#include "dewarping/Dewarp.h"
#include "dewarping/FindCurves.h"
#include "dewarping/ResampleFlat.h"
#include "filters/Resample.h"
#include "page/ContentBox.h"
#include "page/DarkLevel.h"
#include "page/Deskew.h"
#include "page/PackedLine.h"
#include "page/PageLayout.h"
#include "page/PageLines.h"
#include "page/PageSplit.h"
#include "page/Trapezoid.h"
#include "pipeline/Findings.h"
#include "pipeline/MaskFill.h"
#include "pipeline/RunState.h"
#include "pipeline/Split.h"

namespace velloran {
namespace {

constexpr int kNearest = 1, kCubic = 0;
enum CorrectionType : std::int32_t { kPlaceCorners = 1, kCutPage = 2, kFlattenCurves = 3 };

std::uint32_t Background(RunState& state) {
    if (state.background == RunState::kUnknownBackground)
        state.background = static_cast<std::uint32_t>(findDarkLevel(*state.image)) * 0x010101U;
    return state.background;
}

/// The mask of the run, all page where there is none yet. 0 without memory.
int EnsureMask(RunState& state) {
    if (state.mask.IsValid())
        return 1;
    if (state.mask.Create(state.image->GetWidth(), state.image->GetHeight(), 8) == nullptr)
        return 0;
    state.mask.SetGrayPalette();
    state.mask.Clear(255);
    return 1;
}

/// The two lines between which a kind of split keeps the page.
struct LinePair {
    std::int32_t first = 0, second = 0;
};

LinePair LinesOfSplit(const RunState& state) {
    const std::int32_t left = state.Value(PARA_PAGE_SPLIT_LEFT);
    const std::int32_t mid = state.Value(PARA_PAGE_SPLIT_MID);
    const std::int32_t right = state.Value(PARA_PAGE_SPLIT_RIGHT);
    switch (effectiveSplit(state.Value(PARA_PAGE_SPLIT_TYPE))) {
        case kKeepLeftToRight:
            return {left, right};
        case kKeepLeftToMid:
            return {left, mid};
        case kKeepMidToRight:
            return {mid, right};
        default:
            return {};
    }
}

void FindSplitLines(RunState& state) {
    if (state.Value(PARA_PAGE_SPLIT_RIGHT) != 0 && state.Value(PARA_PAGE_SPLIT_MID) != 0)
        return;
    std::array<std::int32_t, 3> lines{};  // left, right, mid
    if (SplitFinding finding; state.wantsSure && measureSplit(*state.image, finding) != 0)
        state.NoteSure(Finding::kSplit, finding.sure);
    if (findPageLines(*state.image, kLeftRightMid, lines.data(), 0, 0) == 0)
        return;
    state.found.splitLines = lines;
    state.found.ApplyTo(state.values);
}

/// The lines as they lie in the page that the split has cut out; 0 where there was no split.
LinePair splitLinesForCorrection(const RunState& state) {
    const LinePair lines = LinesOfSplit(state);
    if (lines.first == 0 && lines.second == 0)
        return {};
    const PageLine first = UnpackLine(lines.first), second = UnpackLine(lines.second);
    const int shift = std::min(first.top, first.bottom);
    return {PackLine({first.top - shift, first.bottom - shift}),
            PackLine({second.top - shift, second.bottom - shift})};
}

PackedCorners CornersOf(const RunState& state) {
    return {state.Value(PARA_CRT_PT_LT), state.Value(PARA_CRT_PT_RT), state.Value(PARA_CRT_PT_RB),
            state.Value(PARA_CRT_PT_LB)};
}

void FindPageCorners(RunState& state, std::int32_t type) {
    PackedCorners corners = CornersOf(state);
    if (corners != kUnknownCorners)
        return;
    const LinePair lines = splitLinesForCorrection(state);
    CornersFinding finding;
    if (state.wantsSure && measureCorners(*state.image, lines.first, lines.second, finding) != 0)
        state.NoteSure(Finding::kCorners, finding.sure);
    if (findCorners(type == kCutPage ? 1 : 0, *state.image, corners, lines.first, lines.second) ==
        0)
        return;
    state.found.corners = corners;
    state.found.ApplyTo(state.values);
}

int WarpPage(const RunState& state, std::int32_t type, CDibImage& image, int nearest,
             std::uint32_t color) {
    const PackedCorners corners = CornersOf(state);
    return type == kCutPage ? warpToRectangle(image, corners, nearest, state.Value(PARA_CRT_CROP),
                                              state.Value(PARA_CRT_SIZE), color)
                            : warpToBoundingBox(image, corners, nearest, color);
}

/// Eight points of the top curve, then eight below.
using CurvePointGroup = std::array<std::int32_t, 2 * dewarping::kCurvePoints>;

CurvePointGroup CurvesOf(const RunState& state) {
    CurvePointGroup points;
    for (std::size_t i = 0; i < points.size(); ++i)
        points[i] = state.Value(static_cast<ParaIndex>(PARA_CRT_DEWARPING_TOP_1 + i));
    return points;
}

/// Searches the curves where they are unset. 0 when memory was refused meanwhile: then nothing is
/// known of the page.
int FindPageCurves(RunState& state) {
    CurvePointGroup points = CurvesOf(state);
    std::int32_t *top = points.data(), *bottom = top + dewarping::kCurvePoints;
    if (dewarping::classifyCurves(top, bottom, dewarping::kCurvePoints) >= dewarping::kFlatCurves)
        return 1;
    if (dewarping::CurveFinding finding;
        state.wantsSure && MeasureCurves(*state.image, state.values, finding) != 0)
        state.NoteSure(Finding::kCurves, finding.sure);
    bool isOutOfMemory = false;
    {
        const StepContext search(CurrentCancel());
        dewarping::findCurves(state.Value(PARA_CRT_DEWARPING_TYPE), *state.image, top, bottom,
                              dewarping::kCurvePoints, state.Value(PARA_CRT_DEWARPING_ILLUM));
        isOutOfMemory = search.IsOutOfMemory();
        search.PassFailureOn();
    }
    if (isOutOfMemory) {
        NoteOutOfMemory();
        return 0;
    }
    state.found.curvePoints = points;
    state.found.ApplyTo(state.values);
    return 1;
}

int FlattenPage(const RunState& state, CDibImage& image, int mode, std::uint32_t color) {
    const CurvePointGroup points = CurvesOf(state);
    return dewarping::dewarp(mode, image, points.data(), points.data() + dewarping::kCurvePoints,
                             dewarping::kCurvePoints, color);
}

bool IsFastCorrection(const RunState& state) {
    return state.stop == kStopPageCorrectionFast || state.stop == kStopPageCorrection;
}

StepResult FlattenCurves(RunState& state, std::uint32_t fill) {
    const int mode = IsFastCorrection(state) ? dewarping::kNearestPixel : dewarping::kCubic;
    if (FindPageCurves(state) == 0 || FlattenPage(state, *state.image, mode, fill) == 0)
        return StepResult::kLeft;
    if (state.mask.IsValid())
        FlattenPage(state, state.mask, dewarping::kNearestPixel, 0);
    return StepResult::kRan;
}

bool IsQuickTurn(const RunState& state) {
    return state.stop == kStopContentBox || state.stop == kStopContentBoxLayout;
}

/// Hundredths of a degree; 0 when the page is not sure to be crooked.
std::int32_t FindAngle(RunState& state) {
    const std::int32_t mode = state.Value(PARA_DESKEW);
    if (mode == kDeskewManual)
        return state.Value(PARA_DESKEW_ANGLE);
    const SkewRegion region = SkewRegionOf(state.values);
    if (state.wantsSure) {
        SkewFinding finding;
        measureSkew(*state.image, region, mode, finding);
        state.NoteSure(Finding::kSkew, finding.sure);
        return turnOfSkew(finding.skew);
    }
    Skew skew;
    findSkew(*state.image, skew.angle, skew.confidence, region, mode);
    return turnOfSkew(skew);
}

double TurnOf(const RunState& state) {
    return -(state.pendingAngle / 100.0);
}

std::uint32_t FillColor(const RunState& state) {
    return static_cast<std::uint32_t>(state.Value(PARA_FILL_BLANK_COLOR));
}

ContentBoxRequest BoxRequest(const RunState& state) {
    return BoxRequestOf(state.values, state.image->GetWidth(), state.image->GetHeight());
}

void SearchBox(RunState& state, const CDibImage& image, const ContentBoxRequest& request,
               PageBox& box) {
    if (!state.wantsSure) {
        findContentBox(image, request, box);
        return;
    }
    BoxFinding finding;
    measureContentBox(image, request, finding);
    state.NoteSure(Finding::kBox, finding.sure);
    box = finding.box;
}

PageBox FindBox(RunState& state) {
    const ContentBoxRequest request = BoxRequest(state);
    PageBox box = request.searchRect;
    if (!state.deferRotation || state.pendingAngle == 0) {
        SearchBox(state, *state.image, request, box);
        return box;
    }
    {
        // The search is content with a quick turn; the page itself is turned once, carefully.
        CDibImage turned = *state.image;
        if (rotateKeepSize(turned, TurnOf(state), kNearest, kFillEdge, Background(state)) != 0)
            SearchBox(state, turned, request, box);
    }
    rotateKeepSize(*state.image, TurnOf(state), kCubic, kFillEdge, Background(state));
    return box;
}

/// 1 when anything was cut, which then stands in the layout.
int CutTo(const PageBox& box, RunState& state) {
    const int right = state.image->GetWidth() - box.right;
    const int bottom = state.image->GetHeight() - box.bottom;
    if (box.left == 0 && box.top == 0 && right == 0 && bottom == 0)
        return 0;
    if (trimImage(*state.image, box.left, box.top, right, bottom) == 0)
        return 0;
    if (state.mask.IsValid())
        trimImage(state.mask, box.left, box.top, right, bottom);
    state.layout.cutLeft = box.left;
    state.layout.cutTop = box.top;
    state.layout.cutRight = right;
    state.layout.cutBottom = bottom;
    return 1;
}

}  // namespace

StepResult SplitPage(RunState& state) {
    FindSplitLines(state);
    const LinePair lines = LinesOfSplit(state);
    if (state.stop == kStopSplitDrawn)
        return ResultOf(shadeOutsideLines(*state.image, lines.first, lines.second));
    const std::uint32_t fill = Background(state);
    if (keepBetweenLines(*state.image, lines.first, lines.second, fill) == 0)
        return StepResult::kLeft;
    return ResultOf(maskBetweenLines(*state.image, state.mask, lines.first, lines.second));
}

StepResult CorrectPage(RunState& state) {
    const std::int32_t type = state.Value(PARA_CRT_TYPE);
    if (type != kPlaceCorners && type != kCutPage && type != kFlattenCurves)
        return StepResult::kLeft;
    const std::uint32_t fill = Background(state);
    if (IsFastCorrection(state))
        state.mask.Destroy();
    else if (EnsureMask(state) == 0)
        return StepResult::kLeft;
    if (type == kFlattenCurves)
        return FlattenCurves(state, fill);
    FindPageCorners(state, type);
    const int nearest = state.stop != kStopWhole ? kNearest : kCubic;
    if (WarpPage(state, type, *state.image, nearest, fill) == 0)
        return StepResult::kLeft;
    if (state.mask.IsValid())
        WarpPage(state, type, state.mask, kNearest, 0);
    return StepResult::kRan;
}

StepResult DeskewPage(RunState& state) {
    state.pendingAngle = FindAngle(state);
    if (state.pendingAngle == 0 || EnsureMask(state) == 0)
        return StepResult::kLeft;
    const bool quick = IsQuickTurn(state);
    int ran = 1;
    if (state.Value(PARA_FIND_CNT_BOX) != 0 && state.Value(PARA_CBF_REMOVE_BLACK_EDGE) != 0) {
        const std::uint32_t dark = Background(state);
        if (quick)
            ran = rotateKeepSize(*state.image, TurnOf(state), kNearest, kFillEdge, dark);
        else
            state.deferRotation = true;
    } else {
        ran = rotateKeepSize(*state.image, TurnOf(state), quick ? kNearest : kCubic,
                             state.deskewEdge, FillColor(state));
    }
    if (ran != 0)
        rotateKeepSize(state.mask, TurnOf(state), kNearest, kFillEdge, 0);
    return ResultOf(ran);
}

StepResult CropPage(RunState& state) {
    const PageBox box =
        state.Value(PARA_FIND_CNT_BOX) != 0 ? FindBox(state) : BoxRequest(state).searchRect;
    int ran = CutTo(box, state);
    if (state.mask.IsValid())
        ran |= FillOutsideMask(*state.image, state.mask, FillColor(state));
    return ResultOf(ran);
}

void MeasureContent(RunState& state) {
    computeContentSize(state.layout);
}

StepResult ShowContent(RunState& state) {
    MeasureContent(state);
    const int width = state.layout.contentWidth, height = state.layout.contentHeight;
    if (!FitsItsPage(state))
        return StepResult::kLeft;
    if ((width != state.image->GetWidth() || height != state.image->GetHeight()) &&
        ResizeTo(*state.image, width, height) == 0)
        return StepResult::kLeft;
    return ResultOf(placeOnPage(*state.image, state.layout));
}

StepResult PlacePage(RunState& state) {
    return ResultOf(placeOnPage(*state.image, state.layout));
}

}  // namespace velloran
