#include <algorithm>
#include <array>

#include "pipeline/Describe.h"
#include "pipeline/DescribeText.h"
#include "text/Labels.h"
#include "text/NumberText.h"

namespace velloran {

namespace {

struct Side {
    Label label;
    ParaIndex crop, margin;
};

constexpr Side kSides[] = {
    {labels::kTop, PARA_CROPPING_P_TOP, PARA_MARGIN_TOP},
    {labels::kBottom, PARA_CROPPING_P_BOTTOM, PARA_MARGIN_BOTTOM},
    {labels::kLeft, PARA_CROPPING_P_LEFT, PARA_MARGIN_LEFT},
    {labels::kRight, PARA_CROPPING_P_RIGHT, PARA_MARGIN_RIGHT},
};

constexpr ParaIndex kPageParameters[] = {
    PARA_PAGE_SIZE,   PARA_PAGE_SIZE_UNIT, PARA_PAGE_WIDTH,  PARA_PAGE_HEIGHT,
    PARA_MARGIN_LEFT, PARA_MARGIN_RIGHT,   PARA_MARGIN_TOP,  PARA_MARGIN_BOTTOM,
    PARA_ALIGN_H,     PARA_ALIGN_V,        PARA_BIG_CNT_BOX, PARA_SMALL_CNT_BOX,
};

constexpr std::int32_t kPageByWidth = 3, kPageByHeight = 4, kPageByBoth = 5;

bool Differs(const ParaValues& values, ParaIndex index) {
    return values[index] != ParaRowOf(index).defaultValue;
}

void AppendSearch(const ParaValues& values, std::u16string& text) {
    text += labels::kFindContentBox;
    if (values[PARA_CBF_REMOVE_BLACK_EDGE] != 0)
        text.append(u", ").append(labels::kIgnoreBlackEdge);
    if (values[PARA_CBF_BK_MORE] != 0)
        text.append(u", ").append(labels::kStrongBackground);
    if (const std::int32_t speckle = values[PARA_CBF_SPECKLE_SIZE]; speckle != 0)
        text.append(u", ").append(LabelAndValue(labels::kIgnoreSpeckles, DecimalText(speckle)));
    if (values[PARA_CBF_SPECKLE_COMPENSATION] != 0)
        text.append(u", ").append(labels::kSpeckleCompensation);
}

/// Each margin of the cut has its ", " behind it, also the last one.
std::u16string Measure(const ParaValues& values, ParaIndex index) {
    const std::int32_t value = values[index];
    const bool pixels = values[PARA_PAGE_SIZE_UNIT] == 1;
    return pixels ? DecimalText(value) : ShownText(index, value);
}

void AppendPageSizeLine(const ParaValues& values, std::u16string& text) {
    const std::int32_t size = values[PARA_PAGE_SIZE];
    text += LabelAndValue(labels::kPageSize, ListOrNumber(PARA_PAGE_SIZE, size));
    text.append(u", ").append(ListOrNumber(PARA_PAGE_SIZE_UNIT, values[PARA_PAGE_SIZE_UNIT]));
    if (size == kPageByWidth || size == kPageByBoth)
        text.append(u", ").append(LabelEquals(labels::kWidth, Measure(values, PARA_PAGE_WIDTH)));
    if (size == kPageByHeight || size == kPageByBoth)
        text.append(u", ").append(LabelEquals(labels::kHeight, Measure(values, PARA_PAGE_HEIGHT)));
    text += kLineEnd;
}

void AppendMarginLine(const ParaValues& values, std::u16string& text) {
    if (std::ranges::none_of(kSides, [&](const Side& side) { return values[side.margin] != 0; }))
        return;
    std::u16string margins;
    for (const Side& side : kSides)
        AppendItem(LabelEquals(side.label, Measure(values, side.margin)), 0, margins);
    text.append(LabelAndValue(labels::kPageMargins, margins)).append(kLineEnd);
}

/// Two lists, each behind its label, on one line.
void AppendListLine(const ParaValues& values, ParaIndex first, ParaIndex second,
                    std::u16string& text) {
    const std::size_t lineStart = text.size();
    for (const ParaIndex index : {first, second})
        AppendItem(LabelAndValue(ParaRowOf(index).label, ListOrNumber(index, values[index])),
                   lineStart, text);
    text += kLineEnd;
}

}  // namespace

void DescribeCrop(const ParaValues& values, std::u16string& text) {
    const std::size_t lineStart = text.size();
    for (const Side& side : kSides) {
        if (const std::int32_t perMille = values[side.crop]; perMille != 0)
            text += LabelEquals(side.label, ShownText(side.crop, perMille) + u"%, ");
    }
    if (values[PARA_FIND_CNT_BOX] != 0)
        AppendSearch(values, text);
    if (text.size() > lineStart)
        text += kLineEnd;
}

void DescribeLayout(const ParaValues& values, std::u16string& text) {
    if (Differs(values, PARA_DPI))
        text += u"DPI=" + DecimalText(values[PARA_DPI]) + u"\r\n";
    if (std::ranges::none_of(kPageParameters,
                             [&](ParaIndex index) { return Differs(values, index); }))
        return;
    AppendPageSizeLine(values, text);
    AppendMarginLine(values, text);
    AppendListLine(values, PARA_ALIGN_H, PARA_ALIGN_V, text);
    AppendListLine(values, PARA_BIG_CNT_BOX, PARA_SMALL_CNT_BOX, text);
}

}  // namespace velloran
