#include "pipeline/Steps.h"

#include "core/Rounding.h"
#include "filters/AdjustSharpen.h"
#include "filters/MultiScaleDetail.h"
#include "filters/SurfaceBlur.h"
#include "pipeline/Layout.h"
#include "pipeline/ReduceRequest.h"
#include "pipeline/RunState.h"
#include "reduce/DecreaseBpp.h"
#include "tone/AutoLevels.h"
#include "tone/Levels.h"
#include "tone/PixelMap.h"

namespace velloran {
namespace {

/// Positions in the list of PARA_ROATE.
enum Rotation : int { kLeft = 1, kRight, kHalfTurn, kMirrored, kFlipped };

/// Non-zero when a stage changed the map. The order of the stages is fixed: each works on what the
/// one before it left.
int ComposePixelMap(const GateInput& input, PixelMap& map) {
    int changed = 0;
    changed |= MapHighlight(input.Value(PARA_HIGHLIGHT), input.Value(PARA_THRESHOLD), map);
    changed |= MapBrightness(input.Value(PARA_BRIGHTNESS), map);
    changed |= MapParabola(input.Value(PARA_CURVE_DIV), input.Value(PARA_CURVE_OFFSET), map);
    changed |= MapContrast(input.Value(PARA_CONTRAST), map);
    changed |= MapBezierCurve(input.Value(PARA_CURVE), input.Value(PARA_CURVE_1),
                              input.Value(PARA_CURVE_2), input.Value(PARA_CURVE_3), map);
    changed |= MapGamma(input.Value(PARA_GAMMA), map);
    return changed;
}

/// value * factor + offset, limited to what an int holds.
int Scaled(std::int32_t value, int factor, int offset) {
    return TruncToInt(static_cast<double>(value) * factor + offset);
}

}  // namespace

StepResult RotatePage(RunState& state) {
    switch (state.Value(PARA_ROATE)) {
        case kLeft:
            return ResultOf(state.image->Rotate90(/*left=*/true));
        case kRight:
            return ResultOf(state.image->Rotate90(/*left=*/false));
        case kHalfTurn:
            return ResultOf(state.image->Flip(FlipMode::kUpsideDown));
        case kMirrored:
            return ResultOf(state.image->Flip(FlipMode::kMirror));
        case kFlipped:
            return ResultOf(state.image->Flip(FlipMode::kFlip));
        default:
            return StepResult::kLeft;
    }
}

void StartLayout(RunState& state) {
    state.layout =
        MakeLayoutRequest(state.values, state.image->GetWidth(), state.image->GetHeight());
}

StepResult AdjustLevels(RunState& state) {
    if (state.Value(PARA_AUTO_LEVELS) != 0)
        return ResultOf(AutoLevels(*state.image, state.Value(PARA_AUTO_LEVELS)));
    return ResultOf(ApplyLevels(*state.image,
                                static_cast<std::uint32_t>(state.Value(PARA_LEVELS_SHADOW)),
                                static_cast<std::uint32_t>(state.Value(PARA_LEVELS_LIGHT))));
}

bool HasPixelMapping(const GateInput& input) {
    PixelMap map = IdentityPixelMap();
    return ComposePixelMap(input, map) != 0;
}

StepResult MapPixels(RunState& state) {
    PixelMap map = IdentityPixelMap();
    ComposePixelMap(state.Known(), map);
    return ResultOf(ApplyPixelMap(map, *state.image));
}

StepResult EnhanceDetail(RunState& state) {
    return ResultOf(MultiScaleDetail(*state.image, state.Value(PARA_ADJUST_MULTI_SCALE_R)));
}

StepResult AdjustLevelsPost(RunState& state) {
    return ResultOf(AutoLevels(*state.image, state.Value(PARA_AUTO_LEVELS_POST)));
}

StepResult BlurSurfaces(RunState& state) {
    const int radius = Scaled(state.Value(PARA_SURFACE_BLUR_RADIUS), 1, 1);
    const int threshold = Scaled(state.Value(PARA_SURFACE_BLUR_THRESHOLD), 1, 2);
    return ResultOf(SurfaceBlur(*state.image, radius, threshold,
                                state.Value(PARA_SURFACE_BLUR_TIMES),
                                state.Value(PARA_SURFACE_BLUR_ALGRITHOM)));
}

StepResult SharpenAdjusted(RunState& state) {
    return ResultOf(AdjustSharpen(*state.image, state.Value(PARA_ADJUST_SHARPEN_PERCENT),
                                  Scaled(state.Value(PARA_ADJUST_SHARPEN_SIZE), 2, 7)));
}

StepResult ReduceColors(RunState& state) {
    state.reduce = MakeReduceRequest(state.values, *state.image, state.layout);
    return ResultOf(DecreaseBpp(*state.image, state.isPreview, state.reduce));
}

}  // namespace velloran
