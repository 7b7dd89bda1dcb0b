#include "batch/BatchRules.h"

#include <algorithm>
#include <array>

#include "params/ParaBlock.h"
#include "params/TargetRule.h"
#include "text/Labels.h"

namespace velloran {

namespace {

constexpr std::array<std::u16string_view, kSourceFilterCount> kSourceFilters = {
    u"*.jpg;*.jpeg;*.gif;*.ufo;*.bmp;*.png;*.tif;*.tiff;*.wmf;*.jpf;*.jpx;*.jp2;*.j2k;*.jpc;"
    u"*.j2c;*.webp;*.nef;*.crw;*.cr2;*.dng",
    u"*.jpg;*.jpeg",
    u"*.gif",
    u"*.ufo",
    u"*.bmp;*.dib",
    u"*.png",
    u"*.tif;*.tiff",
    u"*.wmf;*.emf",
    u"*.jpf;*.jpx;*.jp2;*.j2k;*.jpc;*.j2c;",
    u"*.webp",
    u"*.nef;*.crw;*.cr2;*.dng",
};

constexpr std::array<std::u16string_view, 5> kReducedExtensions = {u"png", u"gif", u"webp", u"bmp",
                                                                   u"tif"};
constexpr int kKeepColor = 2;  // the last depth that is no reduction
constexpr int kMaxDpi = 8000;

int PositionOf(TargetFormat format) {
    const auto choices = ExtensionChoices();
    return static_cast<int>(std::find(choices.begin(), choices.end(), format) - choices.begin());
}

}  // namespace

std::u16string_view SourceFilter(int position) {
    if (position < 0 || position >= kSourceFilterCount)
        return {};
    return kSourceFilters[static_cast<std::size_t>(position)];
}

bool Is16BitColor(int color) {
    return color == 18 || color == 19;
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
    const bool takesReduced = std::find(kReducedExtensions.begin(), kReducedExtensions.end(),
                                        target.extension) != kReducedExtensions.end();
    if (target.color > kKeepColor && !takesReduced)
        return labels::kReducedOnlyPng;
    return {};
}

}  // namespace velloran
