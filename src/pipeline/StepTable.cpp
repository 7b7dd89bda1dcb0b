#include "pipeline/StepTable.h"

#include "pipeline/Describe.h"
#include "pipeline/FilterSteps.h"
#include "pipeline/GeometrySteps.h"
#include "pipeline/RunState.h"
#include "pipeline/Split.h"
#include "pipeline/Steps.h"
#include "pipeline/ToneSteps.h"
#include "text/Labels.h"

namespace velloran {
namespace {

bool Always(const GateInput&) {
    return true;
}

/// A gate of the parameter table for this step is open.
template <int kStep>
bool ByTable(const GateInput& input) {
    return HasOpenGate(kStep, input.values);
}

bool HasSplit(const GateInput& input) {
    return effectiveSplit(input.Value(PARA_PAGE_SPLIT_TYPE)) != kNoSplit;
}

/// The content is to become larger in both directions; smaller in both. A size that is larger in
/// one and smaller in the other is left to the placement on the page. Where no page is known the
/// percentage decides.
bool IsEnlarged(const GateInput& input) {
    if (!input.sizes)
        return HasOpenGate(13, input.values);
    return input.sizes->contentWidth > input.sizes->width &&
           input.sizes->contentHeight > input.sizes->height;
}

bool IsReduced(const GateInput& input) {
    if (!input.sizes)
        return HasOpenGate(25, input.values);
    return input.sizes->contentWidth < input.sizes->width &&
           input.sizes->contentHeight < input.sizes->height;
}

/// Any automatic levels, known or not, take the manual ones' place.
bool HasLevels(const GateInput& input) {
    if (input.Value(PARA_AUTO_LEVELS) != 0)
        return IsGateOpen(14, PARA_AUTO_LEVELS, input.Value(PARA_AUTO_LEVELS));
    return HasOpenGate(14, input.values);
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

using namespace labels;
using enum Told;
using enum Poll;

// clang-format off
constexpr Step kSteps[] = {
    // number, label, told, runs, run, describe, cancel polled behind it, stops, before, at a stop
    {1, kStepRotate, kAlways, ByTable<1>, RotatePage, DescribeRotate},
    {2, kStepSplit, kAlways, HasSplit, SplitPage, DescribeSplit,
        kAfter, {kStopSplitDrawn, kStopSplit}},
    {3, kStepCorrection, kWhenRun, ByTable<3>, CorrectPage, DescribeCorrection,
        kAfter, {kStopPageCorrectionFast, kStopPageCorrection}},
    {4, kStepDeskew, kWhenRun, ByTable<4>, DeskewPage, DescribeDeskew,
        kAfter, {kStopDeskew}, StartLayout},
    {5, kStepCrop, kWhenRun, ByTable<5>, CropPage, DescribeCrop,
        kAfter, {kStopContentBox, kStopContentBoxLayout}, nullptr, DescribeLayout, ShowContent},
    {6, kStepReplaceColor, kWhenRun, ByTable<6>, ReplaceOneColor,
        DescribeReplaceColor},
    {7, kStepSwapChannel, kWhenRun, ByTable<7>, ExchangeChannels,
        DescribeSwapChannel},
    {8, kStepNegate, kWhenRun, ByTable<8>, NegatePage, DescribeNegate},
    {9, kStepCombineChannel, kWhenRun, ByTable<9>, MixChannels,
        DescribeCombineChannel},
    {10, kStepIllumination, kWhenRun, ByTable<10>, CorrectIllumination,
        DescribeIllumination},
    {11, kStepUnshadow, kWhenRun, ByTable<11>, RemoveShadow,
        DescribeUnshadow, kNone},
    {12, kStepWhiteBalance, kWhenRun, ByTable<12>, BalanceWhite,
        DescribeWhiteBalance},
    {13, kStepEnlarge, kWhenRun, IsEnlarged, ResizeToContent, DescribeEnlarge,
        kAfter, {kStopBeforeLevels}, MeasureContent},
    {14, LevelsLabel, kAlways, HasLevels, AdjustLevels, DescribeLevelsStep,
        kAfter, {kStopBeforeVibrance}},
    {15, kStepVibrance, kWhenRun, ByTable<15>, AdjustVibrance, DescribeVibrance},
    {16, kStepPixelMapping, kAlways, HasPixelMapping, MapPixels, DescribePixelMapping},
    {17, kStepLight, kWhenRun, ByTable<17>, AdjustPageLight,
        DescribeLight},
    {18, kStepMultiScale, kWhenRun, ByTable<18>, EnhanceDetail,
        DescribeMultiScale},
    {19, kStepAutoLevelsPost, kWhenRun, ByTable<19>, AdjustLevelsPost,
        DescribeAutoLevelsPost},
    {20, kStepEqualize, kWhenRun, ByTable<20>, EqualizeTones, DescribeEqualize},
    {21, MorphologyLabel, kWhenRun, ByTable<21>, ChangeStrokes, DescribeErode},
    {22, kStepBlur, kWhenRun, ByTable<22>, BlurByLevel, DescribeBlur},
    {23, kStepGaussian, kWhenRun, ByTable<23>, BlurByRadius,
        DescribeGaussian},
    {24, kStepSurfaceBlur, kWhenRun, ByTable<24>, BlurSurfaces,
        DescribeSurfaceBlur},
    {25, kStepReduceSize, kWhenRun, IsReduced, ResizeToContent, DescribeReduceSize, kNone},
    {26, kStepSharpen, kWhenRun, ByTable<26>, SharpenByLevel, DescribeSharpen},
    {27, kStepAdjustSharpen, kWhenRun, ByTable<27>, SharpenAdjusted,
        DescribeAdjustSharpen},
    {28, kStepUsm, kWhenRun, ByTable<28>, SharpenByMask, DescribeUsm},
    {29, kStepColorReduction, kAlways, Always, ReduceColors, DescribeColorReduction},
    {30, kStepPlaceOnPage, kAlways, Always, PlacePage, DescribeNothing,
        kAfter, {}, nullptr, DescribeOutput},
};
// clang-format on
static_assert(std::size(kSteps) == 30);

}  // namespace

std::span<const Step> Steps() {
    return kSteps;
}

}  // namespace velloran
