#include "files/SavePage.h"

#include <algorithm>

#include "codecs/Formats.h"
#include "files/FileType.h"
#include "files/ImageFiles.h"
#include "params/ParaBlock.h"
#include "params/TargetRule.h"

namespace velloran {

namespace {

constexpr int kLastUnreduced = 2;  // 0, 1 and 2 reduce nothing
constexpr int kMaxDpi = 8000;

}  // namespace

SaveRefusal RefuseColor(const std::filesystem::path& target, int color) {
    if (color >= 0 && color <= kLastUnreduced)
        return SaveRefusal::kNone;
    if (color == kColorIndex565 || color == kColorIndex555) {
        const Format* format = FormatOfName(target.extension().native());
        return format != nullptr && format->Has(Format::kHolds16Bit) ? SaveRefusal::kNone
                                                                     : SaveRefusal::kWantsBmp;
    }
    return IsColourReducedTarget(target) ? SaveRefusal::kNone : SaveRefusal::kWantsReducedTarget;
}

SaveRefusal RefuseResult(const std::filesystem::path& target, const CDibImage& result) {
    const bool needsPalette = result.GetBpp() <= 8 && !result.IsGrayScale();
    return needsPalette && !IsColourReducedTarget(target) ? SaveRefusal::kWantsReducedTarget
                                                          : SaveRefusal::kNone;
}

bool KeepsAlpha(const std::filesystem::path& target, const CDibImage& image) {
    const int type = FileTypeOfExtension(target);
    const Format* format = FindFormat(type);
    // TIFF files of two levels have no room for it.
    constexpr unsigned kAnyKind = Format::kHoldsAlpha | Format::kHoldsTransparent;
    return format != nullptr && (format->traits & kAnyKind) != 0 &&
           (type != kTypeTiff || image.GetBpp() >= 8);
}

PageTarget PageTargetOf(const Settings& settings) {
    PageTarget target;
    target.quality = settings[PARA_QUALITY];
    target.dpi = std::clamp(settings[PARA_DPI], 0, kMaxDpi);
    target.color = settings[PARA_COLOR];
    target.cropGif = UnpackTargetRule(settings[PARA_TGT_FILES]).cropGif;
    return target;
}

bool SavePage(const std::filesystem::path& file, const PageTarget& target, LoadedPage& page,
              const Settings& settings, FileError* error) {
    CParaBlock block;
    block.AssignValues(settings.values);
    SaveOptions options;
    options.quality = target.quality;
    options.dpi = target.keepDpi && page.ownDpi > 0 ? page.ownDpi : target.dpi;
    options.colorIndex = target.color;
    options.cropGif = target.cropGif;
    options.transparentWhite = settings[PARA_DECREASE_TRANSPARENT] != 0;
    options.jp2Rate = GlobalBlock().GetPara(PARA_JP2_RATE);  // whichever block is saved with
    options.jpeg = JpegRulesOf(block);
    return SaveImageAs(file, page.image, options, error);
}

}  // namespace velloran
