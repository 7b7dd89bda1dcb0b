#include "pipeline/Layout.h"

#include <cstdint>

namespace velloran {
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

}  // namespace velloran
