#include "batch/BatchRules.h"

#include <algorithm>

#include "codecs/Formats.h"
#include "params/ParaBlock.h"
#include "params/TargetRule.h"
#include "text/Labels.h"

namespace velloran {

namespace {

constexpr int kKeepColor = 2;  // the last depth that is no reduction
constexpr int kMaxDpi = 8000;

int PositionOf(TargetFormat format) {
    const auto choices = ExtensionChoices();
    return static_cast<int>(std::find(choices.begin(), choices.end(), format) - choices.begin());
}

}  // namespace

bool Is16BitColor(int color) {
    return color == kColorIndex565 || color == kColorIndex555;
}

BatchTarget ReadBatchTarget(const CParaBlock& block) {
    BatchTarget target;
    target.packedRule = block.GetPara(PARA_TGT_FILES);
    const TargetRule rule = UnpackTargetRule(target.packedRule);
    target.extensionPosition = PositionOf(rule.extension);
    target.extension = TargetExtension(rule.extension);
    target.cropGif = rule.cropGif;
    target.color = block.GetPara(PARA_COLOR);
    target.quality = block.GetPara(PARA_QUALITY);
    target.dpi = std::clamp(block.GetPara(PARA_DPI), 0, kMaxDpi);
    target.keepFileTime = block.GetPara(PARA_KEEP_FILE_TIME) != 0;
    if (target.extensionPosition == 0 && Is16BitColor(target.color))
        target.extension = TargetExtension(TargetFormat::kBmp);
    return target;
}

std::u16string_view RefuseTarget(const BatchTarget& target) {
    if (target.extensionPosition == 0)
        return {};
    if (Is16BitColor(target.color) && target.extension != TargetExtension(TargetFormat::kBmp))
        return labels::kBmpOnlyFor16Bit;
    const Format* format =
        FormatOfTarget(ExtensionChoices()[static_cast<std::size_t>(target.extensionPosition)]);
    if (target.color > kKeepColor && !(format != nullptr && format->Has(Format::kReducedTarget)))
        return labels::kReducedOnlyPng;
    return {};
}

}  // namespace velloran
