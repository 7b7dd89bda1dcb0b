#include <algorithm>
#include <array>

#include "pipeline/Describe.h"
#include "pipeline/DescribeText.h"
#include "text/Labels.h"
#include "text/NumberText.h"

namespace velloran {

namespace {

// Positions in the list of colour depths.
constexpr std::int32_t kTrueColor = 0, kGray256 = 1, kBlackWhite = 7;
constexpr std::int32_t kFirstReduced = 3, kHighColor565 = 18, kLast = 19;
constexpr std::int32_t kGrayPalettes[] = {4, 5, 6, 15, 16, 17};

/// A line of colour reduction under construction: the options that apply, behind the depth.
class OptionLine {
 public:
    OptionLine(const ParaValues& values, std::u16string& text)
        : values_(values), text_(text), start_(text.size()) {}

    std::int32_t Value(ParaIndex index) const { return values_[index]; }
    void Add(std::u16string_view item) { AppendItem(item, start_, text_); }
    void AddFlag(ParaIndex index) {
        if (Value(index) != 0)
            Add(ParaRowOf(index).label);
    }
    void AddList(ParaIndex index) {
        Add(LabelAndValue(ParaRowOf(index).label, ListOrNumber(index, Value(index))));
    }

 private:
    const ParaValues& values_;
    std::u16string& text_;
    std::size_t start_;
};

bool IsReduced(std::int32_t color) {
    return color >= kFirstReduced && color <= kLast;
}

/// Whether the choice of palette maker has a say: none is made for the 16-bit depths, dithered
/// greys always take an even ramp, and black and white is cut at a palette only by the first
/// threshold method.
bool QuantizerApplies(std::int32_t color, bool dither, std::int32_t thresholdMethod) {
    if (!IsReduced(color) || color >= kHighColor565)
        return false;
    if (color == kBlackWhite)
        return !dither && thresholdMethod == 0;
    return !dither || std::ranges::find(kGrayPalettes, color) == std::end(kGrayPalettes);
}

void AddBlockFilter(OptionLine& line) {
    const std::int32_t width = line.Value(PARA_DECREASE_BLOCK_WIDTH);
    const std::int32_t height = line.Value(PARA_DECREASE_BLOCK_HEIGHT);
    if (width == 0 || height == 0)  // the filter needs both
        return;
    const auto condition = [&](ParaIndex index, std::int32_t size) {
        return std::u16string(ParaRowOf(index).label) + ListOrNumber(index, line.Value(index)) +
               DecimalText(size);
    };
    line.Add(
        LabelAndValue(labels::kBlockFilter, condition(PARA_DECREASE_BLOCK_WIDTH_CONDITION, width)));
    line.Add(condition(PARA_DECREASE_BLOCK_HEIGHT_CONDITION, height));
}

void AddBinarization(OptionLine& line) {
    line.AddList(PARA_DECREASE_THRESHOLD_METHOD);
    const std::int32_t method = line.Value(PARA_DECREASE_THRESHOLD_METHOD);
    if (method == 2 || method == 3) {
        line.Add(LabelAndValue(
            labels::kWindowSize,
            ShownText(PARA_DECREASE_WINDOW_SIZE, line.Value(PARA_DECREASE_WINDOW_SIZE))));
    }
    if (const std::int32_t speck = line.Value(PARA_DECREASE_DESPECKLE_SIZE); speck != 0)
        line.Add(LabelAndValue(labels::kDespeckle, DecimalText(speck)));
    AddBlockFilter(line);
    line.AddFlag(PARA_DECREASE_DE_BLACK);
    line.AddFlag(PARA_DECREASE_DE_SMOOTH);
}

void AppendJpegDetails(const ParaValues& values, std::u16string& text) {
    const std::size_t start = text.size();
    for (const ParaIndex index : {JPG_RESAMPLE_TYPE, JPG_RESAMPLE_H, JPG_RESAMPLE_V, JPG_SRC_SAMPLE,
                                  JPG_SRC_QUALITY, JPG_SRC_CODE, JPG_OPTIMIZE, JPG_PROGRESSIVE}) {
        const ParaRow& row = ParaRowOf(index);
        const std::int32_t value = values[index];
        if (value == row.defaultValue)
            continue;
        if (row.kind == ParaKind::kList)
            AppendItem(LabelAndValue(row.label, ListOrNumber(index, value)), start, text);
        else
            AppendItem(value == 0 ? LabelEquals(row.label, u"FALSE") : std::u16string(row.label),
                       start, text);
    }
    if (text.size() > start)
        text += kLineEnd;
}

void AppendGroupValue(const ParaValues& values, ParaGroup group, ParaIndex index,
                      std::u16string& text) {
    const std::int32_t value = values[index];
    if (value != ParaRowOf(index).defaultValue)
        text.append(LabelAndValue(CParaBlock::GetParaLabel(group), DecimalText(value)))
            .append(kLineEnd);
}

}  // namespace

void DescribeGrayTest(const ParaValues& values, std::u16string& text) {
    const std::int32_t value = values[PARA_DECREASE_CHECK_GRAY];
    if (value != ParaRowOf(PARA_DECREASE_CHECK_GRAY).defaultValue)
        text.append(
                LabelAndValue(labels::kCheckGray, ListOrNumber(PARA_DECREASE_CHECK_GRAY, value)))
            .append(kLineEnd);
}

void DescribeCmyk(const ParaValues& values, std::u16string& text) {
    if (values[PARA_REVERSE_CMYK] != 0)
        text.append(labels::kReverseCmyk).append(kLineEnd);
}

void DescribeColorReduction(const ParaValues& values, std::u16string& text) {
    const auto [color, ditherFlag, thresholdMethod] = GroupOf(
        values, std::array{PARA_COLOR, PARA_DECREASE_BPP_DITHER, PARA_DECREASE_THRESHOLD_METHOD});
    const bool dither = ditherFlag != 0;
    OptionLine line(values, text);
    line.AddList(PARA_COLOR);
    if (IsReduced(color))
        line.AddFlag(PARA_DECREASE_BPP_DITHER);
    if (QuantizerApplies(color, dither, thresholdMethod))
        line.AddList(PARA_DECREASE_BPP_QUANTIZE);
    if (color != kTrueColor && color != kGray256 && color < kHighColor565)
        line.AddFlag(PARA_DECREASE_TRANSPARENT);
    if (color == kBlackWhite && dither)
        line.AddList(PARA_DECREASE_BW_DITHER_METHOD);
    if (color == kBlackWhite && !dither)
        AddBinarization(line);
    text += kLineEnd;
}

void DescribeNothing(const ParaValues&, std::u16string&) {}

void DescribeOutput(const ParaValues& values, std::u16string& text) {
    AppendGroupValue(values, ParaGroup::kJpegQuality, PARA_QUALITY, text);
    AppendJpegDetails(values, text);
    AppendGroupValue(values, ParaGroup::kJp2Rate, PARA_JP2_RATE, text);
}

}  // namespace velloran
