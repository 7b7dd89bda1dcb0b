#pragma once

// What crosses floors when a page runs through the enhancement: stop codes, the callbacks of a run
// and the request records that one step fills and another reads. CParaBlock::RunPipeline is
// declared in params/ParaBlock.h and defined in src/pipeline/.

#include <cstdint>
#include <functional>
#include <string_view>

namespace velloran {

/// Where a run ends. The numbers are fixed; those below 134 are indexes of parameters.
enum StopCode : int {
    kStopNothing = 0,              // nothing at all happens
    kStopBeforeLevels = 14,        // after the enlargement
    kStopContentBox = 20,          // after the content box, layout applied
    kStopPageCorrectionFast = 74,  // after the page correction, in its fast form
    kStopDeskew = 77,              // after the deskew
    kStopBeforeVibrance = 91,      // after levels
    kStopSplitDrawn = 97,          // after the split, which is drawn instead of cut
    kStopWhole = 134,              // the whole pipeline
    kStopSplit = 135,              // after the split
    kStopPageCorrection = 136,     // after the page correction
    kStopContentBoxLayout = 137,   // the same as 20
};

/// Polled between steps; non-zero abandons the run. `context` is passed on as it stands.
using CancelFunction = int (*)(void* context);

/// Told the name of each step as it starts; empty for none, which is a run without progress
/// display (a preview).
using LabelFunction = std::function<void(std::u16string_view)>;

/// Placement of the content on its page. Lengths in unit 0 are hundredths of a centimetre.
struct LayoutRequest {
    std::int32_t pageSize = 0, unit = 0, dpi = 0;
    std::int32_t pageWidth = 0, pageHeight = 0;
    std::int32_t marginLeft = 0, marginRight = 0, marginTop = 0, marginBottom = 0;
    std::int32_t innerWidth = 0, innerHeight = 0;  // type area in pixels; -1 is free
    std::int32_t smallRule = 0, bigRule = 0;
    std::int32_t imageWidth = 0, imageHeight = 0;  // before the box was cut
    std::int32_t resizePercent = 100;
    std::int32_t cutLeft = 0, cutRight = 0, cutTop = 0, cutBottom = 0;  // pixels
    std::int32_t contentWidth = 0, contentHeight = 0;
    std::int32_t alignH = 0, alignV = 0;
    std::uint32_t fillColor = 0xFFFFFF;  // 0x00BBGGRR
};

/// What the colour reduction is asked for.
struct DecreaseBppRequest {
    static constexpr std::uint32_t kNoReservedColor = 0xFFFFFFFF;

    std::int32_t color = 2;  // position in the list of colour depths
    std::int32_t sourceBpp = 0;
    std::int32_t dither = 0, quantize = 2, transparent = 0, thresholdMethod = 1;
    std::int32_t windowSize = 50;  // pixels
    float balance = 0.5F;
    std::int32_t despeckleSize = 0, bwDitherMethod = 0;
    std::int32_t blockWidth = 0, blockHeight = 0;
    std::int32_t blockWidthCondition = 0, blockHeightCondition = 0;
    std::int32_t deBlack = 0, deSmooth = 0;
    std::uint32_t reservedColor = kNoReservedColor;  // 0x00BBGGRR
};

}  // namespace velloran
