#include <array>

#include "params/ParaBlock.h"
#include "text/Labels.h"
#include "text/NumberText.h"

namespace velloran {

namespace {

void AppendItem(std::u16string_view item, std::u16string& summary) {
    if (!summary.empty())
        summary += u", ";
    summary += item;
}

void AppendMargin(std::u16string_view side, std::int32_t tenths, std::u16string& summary) {
    if (tenths != 0)
        AppendItem(std::u16string(side) + TenthsText(tenths) + u"%", summary);
}

}  // namespace

std::u16string CParaBlock::CropSummary() const {
    const auto [left, top, right, bottom, findBox, deskew] =
        GetGroup(std::array{PARA_CROPPING_P_LEFT, PARA_CROPPING_P_TOP, PARA_CROPPING_P_RIGHT,
                            PARA_CROPPING_P_BOTTOM, PARA_FIND_CNT_BOX, PARA_DESKEW});
    constexpr std::array kDeskews = {labels::kSummaryDeskewRows, labels::kSummaryDeskewColumns,
                                     labels::kSummaryDeskewBoth, labels::kSummaryDeskewManual};
    std::u16string summary;
    AppendMargin(labels::kSummaryLeft, left, summary);
    AppendMargin(labels::kSummaryTop, top, summary);
    AppendMargin(labels::kSummaryRight, right, summary);
    AppendMargin(labels::kSummaryBottom, bottom, summary);
    if (findBox != 0)
        AppendItem(labels::kSummaryFindBox, summary);
    if (deskew >= 1 && deskew <= static_cast<std::int32_t>(kDeskews.size()))
        AppendItem(kDeskews[static_cast<std::size_t>(deskew) - 1], summary);
    return summary;
}

}  // namespace velloran
