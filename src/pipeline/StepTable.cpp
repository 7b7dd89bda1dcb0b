#include "pipeline/StepTable.h"

#include "pipeline/Describe.h"
#include "pipeline/FilterSteps.h"
#include "pipeline/RunState.h"
#include "pipeline/Split.h"
#include "pipeline/Steps.h"
#include "pipeline/ToneSteps.h"
#include "text/Labels.h"

namespace velloran {
namespace {

bool Always(const RunState&) {
    return true;
}

template <ParaIndex... kIndexes>
bool AnySet(const RunState& state) {
    return ((state.Value(kIndexes) != 0) || ...);
}

template <ParaIndex kIndex, int kLow, int kHigh>
bool IsWithin(const RunState& state) {
    return state.Value(kIndex) >= kLow && state.Value(kIndex) <= kHigh;
}

bool HasSplit(const RunState& state) {
    return effectiveSplit(state.Value(PARA_PAGE_SPLIT_TYPE)) != kNoSplit;
}

/// The content is to become larger in both directions; smaller in both. A size that is larger in
/// one and smaller in the other is left to the placement on the page, and so is one not known.
bool IsEnlarged(const RunState& state) {
    return state.image != nullptr && state.layout.contentWidth > state.image->GetWidth() &&
           state.layout.contentHeight > state.image->GetHeight();
}

bool IsReduced(const RunState& state) {
    return state.image != nullptr && state.layout.contentWidth > 0 &&
           state.layout.contentHeight > 0 && state.layout.contentWidth < state.image->GetWidth() &&
           state.layout.contentHeight < state.image->GetHeight();
}

std::u16string_view LevelsLabel(const ParaValues& values) {
    return values[PARA_AUTO_LEVELS] != 0 ? labels::kStepAutoLevels : labels::kStepLevels;
}

/// Four strengths each, from 1 on.
std::u16string_view MorphologyLabel(const ParaValues& values) {
    constexpr Label kByGroup[] = {labels::kStepEmbolden, labels::kStepThin, labels::kStepOpen,
                                  labels::kStepClose};
    return kByGroup[(values[PARA_ERODE] - 1) / 4 & 3];
}

constexpr auto kHasMargins =
    AnySet<PARA_CROPPING_P_LEFT, PARA_CROPPING_P_TOP, PARA_CROPPING_P_RIGHT, PARA_CROPPING_P_BOTTOM,
           PARA_FIND_CNT_BOX>;

using namespace labels;
using enum Told;
using enum Poll;

// A step whose work is PassOn has its place and its label, and leaves the image as it is.
// clang-format off
constexpr Step kSteps[] = {
    // number, label, told, runs, run, describe, cancel polled behind it, stops, before, at a stop
    {1, kStepRotate, kAlways, IsWithin<PARA_ROATE, 1, 5>, RotatePage, DescribeRotate},
    {2, kStepSplit, kAlways, HasSplit, PassOn, DescribeSplit,
        kAfter, {kStopSplitDrawn, kStopSplit}},
    {3, kStepCorrection, kWhenRun, AnySet<PARA_CRT_TYPE>, PassOn, DescribeCorrection,
        kAfter, {kStopPageCorrectionFast, kStopPageCorrection}},
    {4, kStepDeskew, kWhenRun, IsWithin<PARA_DESKEW, 1, 4>, PassOn, DescribeDeskew,
        kAfter, {kStopDeskew}, StartLayout},
    {5, kStepCrop, kWhenRun, kHasMargins, CropPage, DescribeCropAndLayout,
        kAfter, {kStopContentBox, kStopContentBoxLayout}, nullptr, ShowContent},
    {6, kStepReplaceColor, kWhenRun, AnySet<PARA_REPLACE_COLOR_TYPE>, ReplaceOneColor,
        DescribeReplaceColor},
    {7, kStepSwapChannel, kWhenRun, AnySet<PARA_SWAP_CHANNEL>, ExchangeChannels,
        DescribeSwapChannel},
    {8, kStepNegate, kWhenRun, AnySet<PARA_NEGATE>, NegatePage, DescribeNegate},
    {9, kStepCombineChannel, kWhenRun, AnySet<PARA_COMBINE_CHANNEL>, MixChannels,
        DescribeCombineChannel},
    {10, kStepIllumination, kWhenRun, AnySet<PARA_LUM_CORRECT>, CorrectIllumination,
        DescribeIllumination},
    {11, kStepUnshadow, kWhenRun, AnySet<PARA_ADJUST_UNSHADOW>, RemoveShadow,
        DescribeUnshadow, kNone},
    {12, kStepWhiteBalance, kWhenRun, AnySet<PARA_WHITE_BALANCE>, BalanceWhite,
        DescribeWhiteBalance},
    {13, kStepEnlarge, kWhenRun, IsEnlarged, ResizeToContent, DescribeEnlarge,
        kAfter, {kStopBeforeLevels}, MeasureContent},
    {14, LevelsLabel, kAlways, Always, AdjustLevels, DescribeLevelsStep,
        kAfter, {kStopBeforeVibrance}},
    {15, kStepVibrance, kWhenRun, AnySet<PARA_ADJUST_VIBRANCE>, AdjustVibrance, DescribeVibrance},
    {16, kStepPixelMapping, kAlways, HasPixelMapping, MapPixels, DescribePixelMapping},
    {17, kStepLight, kWhenRun, AnySet<PARA_LIGHT_LOW, PARA_LIGHT_HIGH>, AdjustPageLight,
        DescribeLight},
    {18, kStepMultiScale, kWhenRun, AnySet<PARA_ADJUST_MULTI_SCALE_R>, EnhanceDetail,
        DescribeMultiScale},
    {19, kStepAutoLevelsPost, kWhenRun, AnySet<PARA_AUTO_LEVELS_POST>, AdjustLevelsPost,
        DescribeAutoLevelsPost},
    {20, kStepEqualize, kWhenRun, AnySet<PARA_HIST_EQUALIZE>, EqualizeTones, DescribeEqualize},
    {21, MorphologyLabel, kWhenRun, IsWithin<PARA_ERODE, 1, 16>, ChangeStrokes, DescribeErode},
    {22, kStepBlur, kWhenRun, AnySet<PARA_BLUR>, BlurByLevel, DescribeBlur},
    {23, kStepGaussian, kWhenRun, AnySet<PARA_ADJUST_BLUR_RADIUS>, BlurByRadius,
        DescribeGaussian},
    {24, kStepSurfaceBlur, kWhenRun, AnySet<PARA_SURFACE_BLUR_TIMES>, BlurSurfaces,
        DescribeSurfaceBlur},
    {25, kStepReduceSize, kWhenRun, IsReduced, ResizeToContent, DescribeReduceSize, kNone},
    {26, kStepSharpen, kWhenRun, AnySet<PARA_SHARPEN>, SharpenByLevel, DescribeSharpen},
    {27, kStepAdjustSharpen, kWhenRun, AnySet<PARA_ADJUST_SHARPEN_PERCENT>, SharpenAdjusted,
        DescribeAdjustSharpen},
    {28, kStepUsm, kWhenRun, AnySet<PARA_USM_TIMES>, SharpenByMask, DescribeUsm},
    {29, kStepColorReduction, kAlways, Always, ReduceColors, DescribeColorReduction},
    {30, kStepPlaceOnPage, kAlways, Always, PassOn, DescribeNothing},
};
// clang-format on
static_assert(std::size(kSteps) == 30);

}  // namespace

std::span<const Step> Steps() {
    return kSteps;
}

}  // namespace velloran
