#include <cerrno>
#include <optional>
#include <string>

#include "cli/BlockSource.h"
#include "cli/Causes.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "cli/StopSignal.h"
#include "core/DibImage.h"
#include "core/ProcessorCount.h"
#include "files/FileIdentity.h"
#include "files/LoadPage.h"
#include "files/ReplaceRules.h"
#include "files/SavePage.h"
#include "files/SaveRules.h"
#include "params/ParaBlock.h"
#include "text/CommandLabels.h"
#include "text/Labels.h"
#include "text/Phrase.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

int FailedStatus(const FileError& error) {
    return error.cause == FileError::Cause::kStorage ? kNotWritten : kFileFailed;
}

SaveRun RunOf(const ParsedWords& words) {
    SaveRun run;
    run.stop = words.Number(Option::kStop).value_or(kStopWhole);
    run.cancel = CancelToken(StopFlag());
    run.isPreview = words.Has(Option::kPreview);
    if (TalkInUse().verbose && !TalkInUse().quiet)
        run.label = [](std::u16string_view label) { PrintNote(ToUtf8(label)); };
    return run;
}

/// The block as it stands after the run, what the run found included.
int WriteSetting(const SettingTarget& setting) {
    errno = 0;
    if (GlobalBlock().WriteToIni(ToUtf16(setting.section), setting.file))
        return kDone;
    const std::string path = setting.file.native();
    PrintFailure({.path = path, .message = labels::kSaveFailed, .cause = CauseOfErrno(errno)});
    return kNotWritten;
}

int Stopped() {
    PrintNote(ToUtf8(labels::kStoppedHalfway.Text().substr(1)));
    return StopStatus();
}

/// Warns of what is lost of the source; refuses to let that take the place of the source itself.
int JudgeSource(const LoadNotes& notes, const std::string& input, const std::string& output,
                bool isPageChosen) {
    if (!notes.damaged && notes.pictures <= 1)
        return kDone;
    const auto from = FindFile(input), to = FindFile(output);
    if (from && to && from->identity == to->identity) {
        PrintFailure({.path = output,
                      .message = notes.damaged ? labels::kInPlaceDamaged.Text()
                                               : labels::kInPlacePictures.Text()});
        return kFileFailed;
    }
    if (notes.damaged)
        PrintWarning(input + ": " + ToUtf8(labels::kDamagedSource) +
                     (notes.reason.empty() ? "" : " (" + notes.reason + ")"));
    if (notes.pictures > 1 && !isPageChosen)
        PrintWarning(input + ": " + ToUtf8(labels::kPicturesBefore) +
                     std::to_string(notes.pictures) + ToUtf8(labels::kPicturesBehind));
    return kDone;
}

int EnhanceFile(const ParsedWords& words) {
    const std::string& input = words.operands[0];
    const std::string& output = words.operands[1];
    SetInnerThreads(CountProcessors());
    CParaBlock& block = GlobalBlock();
    LoadedPage page;
    FileError error;
    LoadPageRequest load = LoadRequestFor(
        block.GetSettings(), [&](const CDibImage& image) { return KeepsAlpha(output, image); });
    load.strip = words.Has(Option::kStrip);
    load.page = words.Number(Option::kPageNumber).value_or(1);
    if (!LoadPage(input, load, page, &error)) {
        PrintFailure({.path = input,
                      .message = labels::kLoadFailed,
                      .cause = CauseText(error.reason),
                      .detail = error.detail});
        return FailedStatus(error);
    }
    if (StopFlag().load())
        return Stopped();
    if (const int status = JudgeSource(page.notes, input, output, words.Has(Option::kPageNumber));
        status != kDone)
        return status;
    SaveRun run = RunOf(words);
    run.ownDpi = words.Has(Option::kKeepDpi) ? page.ownDpi : 0;
    const SaveResult saved = SaveDocument(output, page.image, block, run);
    switch (saved.outcome) {
        case SaveOutcome::kSaved:
            return kDone;
        case SaveOutcome::kStopped:
            return Stopped();
        case SaveOutcome::kRefused:
            PrintFailure({.path = output, .message = saved.message});
            return kFileFailed;
        case SaveOutcome::kFailed:
            break;
    }
    // The detail repeats the message where the rules refused the name.
    const bool repeats = saved.error.detail == ToUtf8(saved.message);
    PrintFailure({.path = output,
                  .message = saved.message,
                  .cause = repeats ? std::string() : CauseText(saved.error.reason),
                  .source = repeats ? std::string() : input,
                  .detail = repeats ? std::string() : saved.error.detail});
    return FailedStatus(saved.error);
}

}  // namespace

int RunEnhance(const ParsedWords& words) {
    std::optional<SettingTarget> setting;
    if (const std::optional<std::string> text = words.Text(Option::kSaveSetting)) {
        const std::string_view name = RowOf(Option::kSaveSetting).name;
        setting = FindSettingTarget(*text);
        if (!setting) {
            PrintError(Phrase(labels::kNotFileAndSection, {name, *text}));
            return kWrongUsage;
        }
        if (!CanTakeSetting(setting->file)) {
            PrintError(setting->file.native() + ": " + Phrase(labels::kIsNoSettingsFile));
            return kWrongUsage;
        }
    }
    if (!PrepareGlobalBlock(words))
        return kWrongUsage;
    CatchStopSignals();
    const int status = EnhanceFile(words);
    if (status != kDone || !setting)
        return status;
    return WriteSetting(*setting);
}

}  // namespace velloran::cli
