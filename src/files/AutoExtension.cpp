#include "files/AutoExtension.h"

#include "codecs/Formats.h"
#include "core/DibImage.h"
#include "params/TargetRule.h"

namespace velloran {

namespace {

/// kAuto, which has no extension, where no field speaks of the depth.
TargetFormat FormatForDepth(const CDibImage& image, const TargetRule& rule) {
    switch (image.GetBpp()) {
        case 1:
            return image.IsBW() ? rule.blackWhite : rule.other;
        case 4:
            return rule.other;
        case 8:
            return image.IsGrayScale() ? rule.gray256 : rule.other;
        case 24:
            return rule.color24;
        default:
            return TargetFormat::kAuto;
    }
}

bool IsGrayOrTrueColor(const CDibImage& image) {
    return image.GetBpp() == 24 || (image.GetBpp() == 8 && image.IsGrayScale());
}

bool SuitsSourceType(const CDibImage& image, const std::filesystem::path& path) {
    const Format* format = FormatOfName(path.extension().native());
    if (format == nullptr)
        return false;
    const bool isGray = image.GetBpp() == 8 && image.IsGrayScale();
    return format->Has(image.GetBpp() == 24 ? Format::kHoldsColor
                       : isGray             ? Format::kHoldsGray
                                            : Format::kHoldsPalette);
}

}  // namespace

std::u16string_view PickAutoExtension(const CDibImage& image, int extensionPosition,
                                      std::int32_t packedRule) {
    const auto choices = ExtensionChoices();
    if (extensionPosition < 0 || extensionPosition >= static_cast<int>(choices.size()))
        return {};
    const TargetFormat chosen = choices[static_cast<std::size_t>(extensionPosition)];
    if (chosen != TargetFormat::kAuto)
        return TargetExtension(chosen);
    if (!image.IsValid())
        return {};
    return TargetExtension(FormatForDepth(image, UnpackTargetRule(packedRule)));
}

std::string SameAsSourceExtension(const CDibImage& image, const std::filesystem::path& sourcePath,
                                  bool gifFlag) {
    if (gifFlag && image.GetBpp() <= 8)
        return ".gif";
    if (SuitsSourceType(image, sourcePath))
        return sourcePath.extension().native();
    if (image.IsBW())
        return ".tif";
    return IsGrayOrTrueColor(image) ? ".jpg" : ".png";
}

}  // namespace velloran
