#include <array>

#include "params/ParaLists.h"
#include "pipeline/Describe.h"
#include "pipeline/DescribeText.h"
#include "text/Labels.h"
#include "text/NumberText.h"

namespace velloran {

namespace {

constexpr std::int32_t kSecondSide = 0x100;  // of PARA_PAGE_SPLIT_TYPE

std::int32_t SizeField(std::size_t position, std::int32_t size) {
    return ParaRowOf(PARA_CRT_SIZE).fields[position].Of(size);
}

/// The size that the user gave for the cut rectangle: by the mode a width, a height or both.
std::u16string GivenSize(std::int32_t crop, std::int32_t size) {
    const std::u16string width = u"w=" + DecimalText(SizeField(0, size));
    const std::u16string height = u"h=" + DecimalText(SizeField(1, size));
    switch (ParaRowOf(PARA_CRT_CROP).fields[0].Of(crop)) {
        case 2:
        case 4:
            return u", " + width;
        case 3:
        case 5:
            return u", " + height;
        case 6:
            return u", " + width + u" " + height;
        default:
            return {};
    }
}

std::u16string Corners(const ParaValues& values) {
    const auto [lt, rt, rb, lb] =
        GroupOf(values, std::array{PARA_CRT_PT_LT, PARA_CRT_PT_RT, PARA_CRT_PT_RB, PARA_CRT_PT_LB});
    return u"LT=" + HexText(lt) + u" RT=" + HexText(rt) + u" RB=" + HexText(rb) + u" LP=" +
           HexText(lb);
}

}  // namespace

void DescribeRotate(const ParaValues& values, std::u16string& text) {
    AppendComboText(values, PARA_ROATE, text);
}

void DescribeSplit(const ParaValues& values, std::u16string& text) {
    const auto [type, left, right, mid] =
        GroupOf(values, std::array{PARA_PAGE_SPLIT_TYPE, PARA_PAGE_SPLIT_LEFT,
                                   PARA_PAGE_SPLIT_RIGHT, PARA_PAGE_SPLIT_MID});
    const auto kind = static_cast<std::size_t>(type & (kSecondSide - 1));
    if (kind == 0 || kind >= std::size(lists::kSplitKind))
        return;
    text += LabelAndValue(labels::kSplit, lists::kSplitKind[kind]);
    text += u": left=" + HexText(left) + u" right=" + HexText(right);
    if (kind != 1)
        text += u" center=" + HexText(mid);
    text += kLineEnd;
}

void DescribeCorrection(const ParaValues& values, std::u16string& text) {
    const auto [type, crop, size, method] = GroupOf(
        values, std::array{PARA_CRT_TYPE, PARA_CRT_CROP, PARA_CRT_SIZE, PARA_CRT_DEWARPING_TYPE});
    if (type == 0)
        return;
    text += ListOrNumber(PARA_CRT_TYPE, type);
    if (type == 1 || type == 2)
        text += u": " + Corners(values);
    if (type == 2)
        text += GivenSize(crop, size);
    if (type == 3)
        text += u": " +
                LabelAndValue(labels::kDewarpMethod, ListOrNumber(PARA_CRT_DEWARPING_TYPE, method));
    text += kLineEnd;
}

void DescribeDeskew(const ParaValues& values, std::u16string& text) {
    const auto [mode, angle, edge] =
        GroupOf(values, std::array{PARA_DESKEW, PARA_DESKEW_ANGLE, PARA_DESKEW_EDGE});
    if (mode < 1)
        return;
    text += LabelAndValue(labels::kDeskew, ListOrNumber(PARA_DESKEW, mode));
    if (mode == 4)
        text.append(u", ").append(ShownText(PARA_DESKEW_ANGLE, angle)).append(labels::kDegrees);
    text.append(u", ").append(ListOrNumber(PARA_DESKEW_EDGE, edge)).append(kLineEnd);
}

void DescribeEnlarge(const ParaValues& values, std::u16string& text) {
    const std::int32_t percent = values[PARA_RESIZE];
    if (percent > 100)
        text += LabelAndValue(CParaBlock::GetParaLabel(ParaGroup::kResize),
                              DecimalText(percent) + u"%\r\n");
}

void DescribeReduceSize(const ParaValues& values, std::u16string& text) {
    const std::int32_t percent = values[PARA_RESIZE];
    if (percent < 100)
        text += LabelAndValue(CParaBlock::GetParaLabel(ParaGroup::kResize),
                              DecimalText(percent) + u"%\r\n");
}

}  // namespace velloran
