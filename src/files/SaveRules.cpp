#include "files/SaveRules.h"

#include <algorithm>
#include <utility>

#include "codecs/Formats.h"
#include "core/DibImage.h"
#include "files/EnhancePage.h"
#include "files/FileType.h"
#include "files/ImageFiles.h"
#include "files/SavePage.h"
#include "files/Transparency.h"
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

RunRequest RequestOf(const Settings& settings, const SaveRun& run) {
    RunRequest request;
    request.settings = settings;
    request.mode = run.isPreview ? RunMode::kPreview : RunMode::kFull;
    request.stop = run.stop;
    request.cancel = run.cancel;
    if (!run.isPreview)
        request.label = run.label;
    request.deskewEdge = settings[PARA_DESKEW_EDGE];
    return request;
}

/// The words of documents.
std::u16string_view TextOf(SaveRefusal refusal) {
    switch (refusal) {
        case SaveRefusal::kWantsBmp:
            return labels::kBmpOnlyFor16Bit;
        case SaveRefusal::kWantsReducedTarget:
            return labels::kReducedTargets;
        case SaveRefusal::kNone:
            break;
    }
    return {};
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
    return PageTargetOf(block.GetSettings()).dpi;
}

std::u16string_view RefusalOfDepth(const std::filesystem::path& target, int colourIndex) {
    return TextOf(RefuseColor(target, colourIndex));
}

std::u16string_view RefusalOfResult(const std::filesystem::path& target, const CDibImage& result) {
    return TextOf(RefuseResult(target, result));
}

SaveResult SaveDocument(const std::filesystem::path& target, const CDibImage& image,
                        CParaBlock& block, const SaveRun& run) {
    const Settings settings = block.GetSettings();
    PageTarget how = PageTargetOf(settings);
    how.keepDpi = run.ownDpi > 0;
    if (const std::u16string_view message = RefusalOfDepth(target, how.color); !message.empty())
        return Refused(message);
    SaveResult failed{SaveOutcome::kFailed, labels::kSaveFailed.Text(), {}};
    LoadedPage page;
    page.ownDpi = run.ownDpi;
    if (image.IsValid()) {
        page.image = image;
        page.isTransparent = HasTransparency(image);
        const LoadPageRequest load = LoadRequestFor(
            settings, [&](const CDibImage& result) { return KeepsAlpha(target, result); });
        if (!page.image.IsValid() || !SettleTransparency(load, page))
            return OutOfMemory("out of memory");
        const RunReport report = EnhancePage(load, page, RequestOf(settings, run));
        report.found.ApplyTo(block);
        if (report.end == RunEnd::kCancelled || run.cancel.IsCancelled())
            return {SaveOutcome::kStopped, {}, {}};
        if (!report.IsWhole())
            return Unfinished(report);
        if (const std::u16string_view message = RefusalOfResult(target, page.image);
            !message.empty())
            return Refused(message);
    }
    RemoveLeftovers(target.has_parent_path() ? target.parent_path() : ".");
    if (SavePage(target, how, page, settings, &failed.error))
        return {SaveOutcome::kSaved, {}, {}};
    if (page.image.IsValid() && !HasImageWriter(target))
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
