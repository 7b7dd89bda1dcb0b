#include "pipeline/Layout.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace velloran {
namespace {

std::int32_t Percent(std::int64_t size, std::int32_t percent) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(size * percent / 100, Limits::min(), Limits::max()));
}

}  // namespace

LayoutRequest MakeLayoutRequest(const ParaValues& values, int imageWidth, int imageHeight) {
    LayoutRequest request;
    request.pageSize = values[PARA_PAGE_SIZE];
    request.unit = values[PARA_PAGE_SIZE_UNIT];
    request.dpi = values[PARA_DPI];
    request.pageWidth = values[PARA_PAGE_WIDTH];
    request.pageHeight = values[PARA_PAGE_HEIGHT];
    request.marginLeft = values[PARA_MARGIN_LEFT];
    request.marginRight = values[PARA_MARGIN_RIGHT];
    request.marginTop = values[PARA_MARGIN_TOP];
    request.marginBottom = values[PARA_MARGIN_BOTTOM];
    request.smallRule = values[PARA_SMALL_CNT_BOX];
    request.bigRule = values[PARA_BIG_CNT_BOX];
    request.imageWidth = imageWidth;
    request.imageHeight = imageHeight;
    request.resizePercent = values[PARA_RESIZE];
    request.alignH = values[PARA_ALIGN_H];
    request.alignV = values[PARA_ALIGN_V];
    request.fillColor = static_cast<std::uint32_t>(values[PARA_FILL_BLANK_COLOR]);
    return request;
}

void ScaleContent(LayoutRequest& request) {
    request.contentWidth = request.contentHeight = 0;
    if (request.imageWidth < 1 || request.imageHeight < 1)
        return;
    const std::int64_t width =
        std::int64_t{request.imageWidth} - request.cutLeft - request.cutRight;
    const std::int64_t height =
        std::int64_t{request.imageHeight} - request.cutTop - request.cutBottom;
    request.contentWidth = Percent(width, request.resizePercent);
    request.contentHeight = Percent(height, request.resizePercent);
}

}  // namespace velloran
