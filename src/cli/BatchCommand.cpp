#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "batch/BatchEngine.h"
#include "cli/Arguments.h"
#include "cli/ByteSize.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "cli/Json.h"
#include "cli/ParameterOptions.h"
#include "cli/ProcessUsage.h"
#include "cli/StopSignal.h"
#include "codecs/Formats.h"
#include "core/PixelMemory.h"
#include "params/ParaBlock.h"
#include "params/TargetRule.h"
#include "text/Labels.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

struct BatchOptions {
    std::string source, target, log;
    std::optional<std::string> extension, list, memory;
    std::optional<int> files;
    int jobs = 0;
    bool noRecurse = false, skipColor = false, keepTime = false, yes = false, nulSeparated = false,
         dryRun = false, json = false, progress = false, verbose = false, keepDpi = false,
         skipExisting = false, strict = false;
    std::shared_ptr<ParameterOptions> parameters;
};

int WrongUsage(const std::string& text) {
    PrintError(text);
    return kWrongUsage;
}

/// Options that stand for a parameter; without the option the block's value holds.
bool ApplyOptions(const BatchOptions& options, CParaBlock& block) {
    if (options.extension) {
        const std::optional<int> position = ExtensionPosition(*options.extension);
        if (!position)
            return false;
        TargetRule rule = UnpackTargetRule(block.GetPara(PARA_TGT_FILES));
        rule.extension = ExtensionChoices()[static_cast<std::size_t>(*position)];
        block.SetPara(PARA_TGT_FILES, PackTargetRule(rule));
    }
    if (options.files)
        block.SetPara(PARA_SRC_FILES, *options.files);
    if (options.noRecurse)
        block.SetPara(PARA_GO_SUB_DIR, 0);
    if (options.keepTime)
        block.SetPara(PARA_KEEP_FILE_TIME, 1);
    return true;
}

/// All bytes of a file, or of standard input for "-"; nothing with errno when it cannot be read.
std::optional<std::string> ReadListFile(const std::string& file) {
    const bool standardInput = file == "-";
    std::FILE* stream = standardInput ? stdin : std::fopen(file.c_str(), "rbe");
    if (stream == nullptr)
        return std::nullopt;
    std::string bytes;
    char chunk[1 << 16];
    errno = 0;
    for (std::size_t size = 1; size > 0;) {
        size = std::fread(chunk, 1, sizeof chunk, stream);
        bytes.append(chunk, size);
    }
    const bool failed = std::ferror(stream) != 0;
    if (!standardInput)
        std::fclose(stream);
    return failed ? std::nullopt : std::optional(std::move(bytes));
}

class BatchCommand {
 public:
    explicit BatchCommand(const BatchOptions& options)
        : options_(options), bar_(!options.dryRun && (options.progress || ErrorIsTerminal())) {}

    int Run() {
        if (!PrepareGlobalBlock(*options_.parameters))
            return kWrongUsage;
        if (!ApplyOptions(options_, GlobalBlock()))
            return WrongUsage(
                fmt::format("--ext: \"{}\" is none of auto, jpg, bmp, png, tif, jp2, "
                            "gif, webp",
                            Unguard(*options_.extension)));
        request_.source = Unguard(options_.source);
        request_.target = Unguard(options_.target);
        request_.settings = GlobalBlock().GetSettings();
        request_.skipColor = options_.skipColor;
        request_.jobs = options_.jobs;
        request_.log = Unguard(options_.log);
        request_.keepDpi = options_.keepDpi;
        request_.skipExisting = options_.skipExisting;
        request_.strict = options_.strict;
        if (options_.memory) {
            const std::optional<std::int64_t> bytes = ParseByteSize(*options_.memory);
            if (!bytes)
                return WrongUsage(fmt::format("--memory: \"{}\" is no size like 500M or 2G",
                                              Unguard(*options_.memory)));
            request_.memory = *bytes;
        }
        request_.stop = &StopFlag();
        if (options_.list && !ReadList(Unguard(*options_.list)))
            return kWrongUsage;
        CatchStopSignals();
        const BatchEvents events = Events();
        return FinishOutput(options_.dryRun ? Show(events) : Convert(events));
    }

 private:
    bool ReadList(const std::string& file) {
        const std::optional<std::string> bytes = ReadListFile(file);
        if (!bytes) {
            PrintError(fmt::format("{}: {}", file, std::generic_category().message(errno)));
            return false;
        }
        request_.useList = true;
        for (std::string& path : SplitPathList(*bytes, options_.nulSeparated))
            request_.list.emplace_back(std::move(path));
        return true;
    }

    BatchEvents Events() {
        BatchEvents events;
        events.warning = [](const std::string& text) { PrintWarning(text); };
        events.failed = [this](const BatchFailure& failure) {
            std::string detail = options_.verbose ? failure.detail : "";
            if (!failure.source.empty())
                detail = failure.source + (detail.empty() ? "" : "; ") + detail;
            PrintFailure(failure.path, failure.message, detail);
        };
        events.progress = [this](const BatchProgress& progress) {
            bar_.Show({progress.done, progress.total, progress.seconds, progress.path});
        };
        events.replaceSources = [this](const ReplaceQuestion& question) {
            return options_.yes || AskYesNo(question.text, [] { return StopFlag().load(); });
        };
        return events;
    }

    int Show(const BatchEvents& events) {
        const BatchResult result =
            PlanBatch(request_, events, [](const std::string& source, const std::string& target) {
                Print(source + "\t" + target + "\n");
            });
        return StatusBefore(result).value_or(result.failures.empty() ? kDone : kFileFailed);
    }

    int Convert(const BatchEvents& events) {
        const double cpuAtStart = CpuSeconds();
        KeepFreedMemory();
        const BatchResult result = RunBatch(request_, events);
        const std::optional<int> early = StatusBefore(result);
        if (early == kWrongUsage || (early && result.end == BatchResult::End::kDeclined))
            return *early;
        if (!result.log.empty())
            PrintNote(fmt::format("velloran: run log: {}", result.log.native()));
        if (options_.json)
            PrintJson(Report(result, CpuSeconds() - cpuAtStart));
        else if (result.end != BatchResult::End::kNothing && !result.message.empty())
            Print(ToUtf8(result.message) + "\n");
        if (result.otherTypes > 0)
            PrintNote(ToUtf8(labels::kOtherTypesLeftOut) + std::to_string(result.otherTypes));
        if (result.skipped > 0)
            PrintNote(ToUtf8(labels::kTargetsStand) + std::to_string(result.skipped));
        if (early)
            return *early;
        int status = kDone;
        for (const BatchFailure& failure : result.failures)
            status = failure.storage ? kNotWritten : std::max<int>(status, kFileFailed);
        return status == kNotWritten ? kNotWritten : StatusOf(result);
    }

    /// The status of a run that did not come to its end; nothing for one that did.
    std::optional<int> StatusBefore(const BatchResult& result) const {
        switch (result.end) {
            case BatchResult::End::kRefused:
                return WrongUsage((result.path.empty() ? "" : result.path + ": ") +
                                  ToUtf8(result.message));
            case BatchResult::End::kNothing:
                PrintFailure(options_.source, result.message);
                return kFileFailed;
            case BatchResult::End::kDeclined:
                if (StopStatus() != 0)
                    return StopStatus();
                if (InputIsTerminal())
                    return kDone;  // the user's own wish
                return WrongUsage(ToUtf8(result.question.text) + " (--yes)");
            case BatchResult::End::kStopped:
                return StopStatus();
            case BatchResult::End::kDone:
                break;
        }
        return std::nullopt;
    }

    static int StatusOf(const BatchResult& result) {
        for (const BatchFailure& failure : result.failures)
            if (failure.storage)
                return kNotWritten;
        return result.failures.empty() ? kDone : kFileFailed;
    }

    static Json Report(const BatchResult& result, double cpuSeconds) {
        Json failed = Json::array();
        for (const BatchFailure& failure : result.failures)
            failed.push_back({{"path", failure.path}, {"message", ToUtf8(failure.message)}});
        Json json;
        json["files"] = result.files;
        json["converted"] = result.converted;
        json["failed"] = failed;
        json["damaged"] = result.damaged;
        json["otherTypes"] = result.otherTypes;
        json["seconds"] = result.seconds;
        json["cpuSeconds"] = cpuSeconds;
        json["bytesIn"] = result.bytesIn;
        json["bytesOut"] = result.bytesOut;
        json["peakMemory"] = PeakMemory();
        return json;
    }

    const BatchOptions& options_;
    ProgressBar bar_;
    BatchRequest request_;
};

void AddFileOptions(CLI::App& command, BatchOptions& options) {
    command.add_option("SOURCE", options.source, "The folder of the pages")->required();
    command.add_option("TARGET", options.target, "The folder for the results")->required();
    command
        .add_option("--ext", options.extension,
                    "Type of the results: auto, jpg, bmp, png, tif, jp2, gif, webp")
        ->type_name("EXT");
    command
        .add_option("--files", options.files,
                    "Which sources: position in the list of file types, 0 for all")
        ->type_name("N")
        ->check(CLI::Range(0, SourceFilterCount() - 1));
    command.add_flag("--no-recurse", options.noRecurse, "Leave out subfolders");
    command.add_flag("--skip-colour,--skip-color", options.skipColor,
                     "Copy colour pages as they are");
    command.add_flag("--keep-time", options.keepTime, "Give results the times of their sources");
    CLI::Option* list = command
                            .add_option("--list", options.list,
                                        "Convert only the paths in a file; - reads them "
                                        "from standard input")
                            ->type_name("FILE");
    command.add_flag("-0,--null", options.nulSeparated, "Paths of the list end in NUL")
        ->needs(list);
}

void AddRunOptions(CLI::App& command, BatchOptions& options) {
    command.add_option("--jobs,-j", options.jobs, "Files in flight (default: the processors)")
        ->type_name("N")
        ->check(CLI::Range(1, 1 << 20));
    command
        .add_option("--memory", options.memory,
                    "What pages in flight may take together (default: what is free)")
        ->type_name("SIZE");
    command.add_flag("--skip-existing", options.skipExisting,
                     "Leave sources whose targets stand already and are not older");
    command.add_flag("--strict", options.strict, "Damaged sources count as failed");
    command.add_flag("--keep-dpi", options.keepDpi, "Give results the resolution of their sources");
    command.add_option("--log", options.log, "The run log")->type_name("FILE");
    command.add_flag("--yes,-y", options.yes, "Let results replace their sources");
    CLI::Option* dryRun = command.add_flag("--dry-run", options.dryRun,
                                           "Print each source and its target, write nothing");
    command.add_flag("--json", options.json, "End with one object instead of the message")
        ->excludes(dryRun);
    command.add_flag("--progress", options.progress, "Show the bar without a terminal too");
    command.add_flag("-v,--verbose", options.verbose, "Tell the reason of each failure");
}

}  // namespace

void AddBatchCommand(CLI::App& program, Work& chosen) {
    auto options = std::make_shared<BatchOptions>();
    CLI::App* command = program.add_subcommand("batch", "Enhance a folder tree");
    AddFileOptions(*command, *options);
    AddRunOptions(*command, *options);
    options->parameters = AddParameterOptions(*command);
    command->callback(
        [options, &chosen] { chosen = [options] { return BatchCommand(*options).Run(); }; });
}

}  // namespace velloran::cli
