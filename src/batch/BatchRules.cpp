#include "batch/BatchRules.h"

#include <algorithm>

#include "codecs/Formats.h"
#include "files/TargetNames.h"
#include "params/Settings.h"
#include "params/TargetRule.h"
#include "text/Labels.h"

namespace velloran {

namespace {

constexpr int kKeepColor = 2;  // the last depth that is no reduction

int PositionOf(TargetFormat format) {
    const auto choices = ExtensionChoices();
    return static_cast<int>(std::find(choices.begin(), choices.end(), format) - choices.begin());
}

}  // namespace

bool Is16BitColor(int color) {
    return color == kColorIndex565 || color == kColorIndex555;
}

BatchTarget ReadBatchTarget(const Settings& settings) {
    BatchTarget target;
    static_cast<PageTarget&>(target) = PageTargetOf(settings);
    target.packedRule = settings[PARA_TGT_FILES];
    const TargetRule rule = UnpackTargetRule(target.packedRule);
    target.extensionPosition = PositionOf(rule.extension);
    target.extension = TargetExtension(rule.extension);
    target.keepFileTime = settings[PARA_KEEP_FILE_TIME] != 0;
    if (target.extensionPosition == 0 && Is16BitColor(target.color))
        target.extension = TargetExtension(TargetFormat::kBmp);
    return target;
}

std::u16string_view RefuseTarget(const BatchTarget& target) {
    if (target.extensionPosition == 0 || target.color <= kKeepColor)
        return {};
    switch (RefuseColor("page" + DottedExtension(target.extension), target.color)) {
        case SaveRefusal::kWantsBmp:
            return labels::kBmpOnlyFor16Bit;
        case SaveRefusal::kWantsReducedTarget:
            return labels::kReducedOnlyPng;
        case SaveRefusal::kNone:
            break;
    }
    return {};
}

}  // namespace velloran
