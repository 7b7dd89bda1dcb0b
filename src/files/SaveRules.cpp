#include "files/SaveRules.h"

#include <algorithm>
#include <utility>

#include "codecs/Formats.h"
#include "core/DibImage.h"
#include "files/FileType.h"
#include "files/ImageFiles.h"
#include "io/Leftovers.h"
#include "params/ParaBlock.h"
#include "params/TargetRule.h"
#include "pipeline/Run.h"
#include "text/Labels.h"
#include "text/PathText.h"
#include "text/Text.h"

namespace velloran {

namespace {

constexpr int kLastUnreduced = 2;  // 0, 1 and 2 reduce nothing

SaveResult Refused(std::u16string_view message) {
    return {SaveOutcome::kRefused, message, {}};
}

constexpr int kOutOfMemory = 6, kConversionFailed = 25;  // positions in labels::kLogRows

RunReport RunForSave(CDibImage& image, CParaBlock& block, const SaveRun& run) {
    RunRequest request;
    request.image = &image;
    request.settings = block.GetSettings();
    request.mode = run.isPreview ? RunMode::kPreview : RunMode::kFull;
    request.stop = run.stop;
    request.cancel = run.cancel;
    if (!run.isPreview)
        request.label = run.label;
    request.deskewEdge = request.settings[PARA_DESKEW_EDGE];
    RunReport report = Run(request);
    report.found.ApplyTo(block);
    return report;
}

SaveResult OutOfMemory(std::string detail) {
    SaveResult result{SaveOutcome::kFailed, labels::kLogRows[kOutOfMemory], {}};
    FailStorage(&result.error, std::move(detail), FileReason::kNoMemory);
    return result;
}

/// What a run says that is not whole: nothing is written.
SaveResult Unfinished(const RunReport& report) {
    if (report.Worst() == StepResult::kNoMemory)
        return OutOfMemory(report.Detail());
    SaveResult result{SaveOutcome::kFailed, labels::kLogRows[kConversionFailed], {}};
    FailContent(&result.error, report.Detail());
    return result;
}

}  // namespace

int SaveDpi(const CParaBlock& block) {
    return std::clamp(block.GetPara(PARA_DPI), 0, 8000);
}

std::u16string_view RefusalOfDepth(const std::filesystem::path& target, int colourIndex) {
    if (colourIndex >= 0 && colourIndex <= kLastUnreduced)
        return {};
    if (colourIndex == kColorIndex565 || colourIndex == kColorIndex555) {
        const Format* format = FormatOfName(target.extension().native());
        return format != nullptr && format->Has(Format::kHolds16Bit)
                   ? std::u16string_view()
                   : labels::kBmpOnlyFor16Bit.Text();
    }
    return IsColourReducedTarget(target) ? std::u16string_view() : labels::kReducedTargets.Text();
}

std::u16string_view RefusalOfResult(const std::filesystem::path& target, const CDibImage& result) {
    const bool needsPalette = result.GetBpp() <= 8 && !result.IsGrayScale();
    return needsPalette && !IsColourReducedTarget(target) ? labels::kReducedTargets.Text()
                                                          : std::u16string_view();
}

SaveResult SaveDocument(const std::filesystem::path& target, const CDibImage& image,
                        CParaBlock& block, const SaveRun& run) {
    const int dpi = SaveDpi(block);
    const int colourIndex = block.GetPara(PARA_COLOR);
    if (const std::u16string_view message = RefusalOfDepth(target, colourIndex); !message.empty())
        return Refused(message);
    SaveResult failed{SaveOutcome::kFailed, labels::kSaveFailed.Text(), {}};
    CDibImage copy;
    if (image.IsValid()) {
        copy = image;
        if (!copy.IsValid())
            return OutOfMemory("out of memory");
        const RunReport report = RunForSave(copy, block, run);
        if (report.end == RunEnd::kCancelled || run.cancel.IsCancelled())
            return {SaveOutcome::kStopped, {}, {}};
        if (!report.IsWhole())
            return Unfinished(report);
        if (const std::u16string_view message = RefusalOfResult(target, copy); !message.empty())
            return Refused(message);
    }
    RemoveLeftovers(target.has_parent_path() ? target.parent_path() : ".");
    const bool cropGif = UnpackTargetRule(block.GetPara(PARA_TGT_FILES)).cropGif;
    if (SaveImageFile(target, copy, block.GetPara(PARA_QUALITY), dpi, colourIndex, cropGif, block,
                      &failed.error))
        return {SaveOutcome::kSaved, {}, {}};
    if (copy.IsValid() && !HasImageWriter(target))
        failed.message = labels::kUnwritableType;
    return failed;
}

bool CanKeepName(const std::filesystem::path& path) {
    return HasImageWriter(path);
}

std::filesystem::path JpegNameFor(const std::filesystem::path& path) {
    return std::filesystem::path(path.native() + ".jpg");
}

std::u16string_view FirstSaveExtension(int sourceType, int colourIndex) {
    const Format* format = FindFormat(sourceType);
    if (format != nullptr && !format->firstSave.empty() &&
        (format->Has(Format::kReducedTarget) || colourIndex <= kLastUnreduced))
        return format->firstSave;
    if (colourIndex == 7)  // black and white
        return u"tif";
    return colourIndex >= 3 && colourIndex <= 17 ? u"gif" : u"jpg";
}

std::u16string OpenRefusal(const std::filesystem::path& path) {
    std::error_code ignored;
    if (path.native().find('?') == std::string::npos && std::filesystem::exists(path, ignored))
        return {};
    return std::u16string(labels::kInvalidPath) + PathText(path);
}

}  // namespace velloran
