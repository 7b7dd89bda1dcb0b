#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string>

#include "cli/Arguments.h"
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
#include "text/Labels.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

constexpr std::array kStopCodes = {
    kStopNothing, kStopBeforeLevels,   kStopContentBox,      kStopPageCorrectionFast,
    kStopDeskew,  kStopBeforeVibrance, kStopSplitDrawn,      kStopWhole,
    kStopSplit,   kStopPageCorrection, kStopContentBoxLayout};

struct EnhanceOptions {
    std::string input, output;
    int stop = kStopWhole;
    bool preview = false, verbose = false, keepDpi = false;
    std::string saveSetting;
    std::shared_ptr<ParameterOptions> parameters;
};

int FailedStatus(const FileError& error) {
    return error.cause == FileError::Cause::kStorage ? kNotWritten : kFileFailed;
}

SaveRun RunOf(const EnhanceOptions& options) {
    SaveRun run;
    run.stop = options.stop;
    run.cancel = CancelToken(StopFlag());
    run.isPreview = options.preview;
    if (options.verbose)
        run.label = [](std::u16string_view label) { PrintNote(ToUtf8(label)); };
    return run;
}

/// The block as it stands after the run, what the run found included.
int WriteSetting(const SettingTarget& setting) {
    if (GlobalBlock().WriteToIni(ToUtf16(setting.section), setting.file))
        return kDone;
    PrintFailure(setting.file.native(), labels::kSaveFailed);
    return kNotWritten;
}

int Stopped() {
    PrintNote(ToUtf8(labels::kStoppedHalfway.Text().substr(1)));
    return StopStatus();
}

/// Warns of what is lost of the source; refuses to let that take the place of the source itself.
int JudgeSource(const LoadNotes& notes, const std::string& input, const std::string& output) {
    if (!notes.damaged && notes.pictures <= 1)
        return kDone;
    const auto from = FindFile(input), to = FindFile(output);
    if (from && to && from->identity == to->identity) {
        PrintFailure(output, notes.damaged ? labels::kInPlaceDamaged : labels::kInPlacePictures);
        return kFileFailed;
    }
    if (notes.damaged)
        PrintWarning(input + ": " + ToUtf8(labels::kDamagedSource) +
                     (notes.reason.empty() ? "" : " (" + notes.reason + ")"));
    if (notes.pictures > 1)
        PrintWarning(input + ": " + ToUtf8(labels::kPicturesBefore) +
                     std::to_string(notes.pictures) + ToUtf8(labels::kPicturesBehind));
    return kDone;
}

int EnhanceFile(const EnhanceOptions& options, const std::string& input,
                const std::string& output) {
    SetInnerThreads(CountProcessors());
    CParaBlock& block = GlobalBlock();
    LoadedPage page;
    FileError error;
    const LoadPageRequest load = LoadRequestFor(
        block.GetSettings(), [&](const CDibImage& image) { return KeepsAlpha(output, image); });
    if (!LoadPage(input, load, page, &error)) {
        PrintFailure(input, labels::kLoadFailed, options.verbose ? error.detail : "");
        return FailedStatus(error);
    }
    if (StopFlag().load())
        return Stopped();
    if (const int status = JudgeSource(page.notes, input, output); status != kDone)
        return status;
    SaveRun run = RunOf(options);
    run.ownDpi = options.keepDpi ? page.ownDpi : 0;
    const SaveResult saved = SaveDocument(output, page.image, block, run);
    switch (saved.outcome) {
        case SaveOutcome::kSaved:
            return kDone;
        case SaveOutcome::kStopped:
            return Stopped();
        case SaveOutcome::kRefused:
            PrintFailure(output, saved.message);
            return kFileFailed;
        case SaveOutcome::kFailed:
            break;
    }
    // The detail repeats the message where the rules refused the name.
    const bool repeats = saved.error.detail == ToUtf8(saved.message);
    PrintFailure(output, saved.message, options.verbose && !repeats ? saved.error.detail : "");
    return FailedStatus(saved.error);
}

int Enhance(const EnhanceOptions& options) {
    std::optional<SettingTarget> setting;
    if (!options.saveSetting.empty()) {
        setting = FindSettingTarget(Unguard(options.saveSetting));
        if (!setting) {
            PrintError(fmt::format("--save-setting: \"{}\" is not FILE#SECTION",
                                   Unguard(options.saveSetting)));
            return kWrongUsage;
        }
    }
    if (setting && !CanTakeSetting(setting->file)) {
        PrintError("--save-setting: " + setting->file.native() + ": " +
                   ToUtf8(labels::kIsNoSettingsFile));
        return kWrongUsage;
    }
    if (std::find(kStopCodes.begin(), kStopCodes.end(), options.stop) == kStopCodes.end()) {
        PrintError(fmt::format("--stop: there is no stop code {}", options.stop));
        return kWrongUsage;
    }
    if (!PrepareGlobalBlock(*options.parameters))
        return kWrongUsage;
    CatchStopSignals();
    const int status = EnhanceFile(options, Unguard(options.input), Unguard(options.output));
    if (status != kDone || !setting)
        return status;
    return WriteSetting(*setting);
}

}  // namespace

void AddEnhanceCommand(CLI::App& program, Work& chosen) {
    auto options = std::make_shared<EnhanceOptions>();
    CLI::App* command = program.add_subcommand("enhance", "Enhance one picture");
    command->add_option("INPUT", options->input, "The picture; its content decides the type")
        ->required();
    command->add_option("OUTPUT", options->output, "The result; its extension decides the type")
        ->required();
    command
        ->add_option("--stop", options->stop,
                     "Where the enhancement ends: 0, 14, 20, 74, 77, 91, 97, 134 to 137")
        ->type_name("CODE")
        ->capture_default_str();
    command->add_flag("--preview", options->preview, "Only make colours look reduced");
    command
        ->add_option("--save-setting", options->saveSetting,
                     "Write the parameters as they stand after the run, what it found included")
        ->type_name("FILE#SECTION");
    command->add_flag("--keep-dpi", options->keepDpi,
                      "Give the result the resolution of the source");
    command->add_flag("-v,--verbose", options->verbose, "Tell each step on standard error");
    options->parameters = AddParameterOptions(*command);
    command->callback([options, &chosen] { chosen = [options] { return Enhance(*options); }; });
}

}  // namespace velloran::cli
