#include "pipeline/ReduceRequest.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "core/DibImage.h"
#include "core/Rounding.h"
#include "reduce/ReducePlan.h"

namespace velloran {
namespace {

bool IsCut(const LayoutRequest& layout) {
    return layout.cutLeft != 0 || layout.cutRight != 0 || layout.cutTop != 0 ||
           layout.cutBottom != 0;
}

std::uint32_t ProtectedColor(const ParaValues& values, const CDibImage& image,
                             LayoutRequest& layout) {
    if (!IsCut(layout))
        return DecreaseBppRequest::kNoReservedColor;
    const auto fill = static_cast<std::uint32_t>(values[PARA_FILL_BLANK_COLOR]);
    const std::uint32_t red = fill & 255, green = fill >> 8 & 255, blue = fill >> 16 & 255;
    if (red == green && green == blue)
        return fill;
    if (image.GetBpp() != 8 && !IsGrayDepth(values[PARA_COLOR]))
        return fill;
    const std::uint32_t gray = LumaOf(blue, green, red);
    layout.fillColor = gray | gray << 8 | gray << 16;
    return layout.fillColor;
}

/// List position 0 is a window of 10 pixels; no position overflows.
std::int32_t WindowPixels(std::int32_t position) {
    const std::int64_t pixels = (std::int64_t{position} + 1) * 10;
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(pixels, std::numeric_limits<std::int32_t>::min(),
                                 std::numeric_limits<std::int32_t>::max()));
}

}  // namespace

DecreaseBppRequest MakeReduceRequest(const ParaValues& values, const CDibImage& image,
                                     LayoutRequest& layout) {
    DecreaseBppRequest request;
    request.color = values[PARA_COLOR];
    request.sourceBpp = static_cast<std::int32_t>(image.Source().sourceColours);
    request.dither = values[PARA_DECREASE_BPP_DITHER];
    request.quantize = values[PARA_DECREASE_BPP_QUANTIZE];
    request.transparent = values[PARA_DECREASE_TRANSPARENT];
    request.thresholdMethod = values[PARA_DECREASE_THRESHOLD_METHOD];
    request.windowSize = WindowPixels(values[PARA_DECREASE_WINDOW_SIZE]);
    request.balance = 0.5F;
    request.despeckleSize = values[PARA_DECREASE_DESPECKLE_SIZE];
    request.bwDitherMethod = values[PARA_DECREASE_BW_DITHER_METHOD];
    request.blockWidth = values[PARA_DECREASE_BLOCK_WIDTH];
    request.blockHeight = values[PARA_DECREASE_BLOCK_HEIGHT];
    request.blockWidthCondition = values[PARA_DECREASE_BLOCK_WIDTH_CONDITION];
    request.blockHeightCondition = values[PARA_DECREASE_BLOCK_HEIGHT_CONDITION];
    request.deBlack = values[PARA_DECREASE_DE_BLACK];
    request.deSmooth = values[PARA_DECREASE_DE_SMOOTH];
    request.reservedColor = ProtectedColor(values, image, layout);
    return request;
}

}  // namespace velloran
