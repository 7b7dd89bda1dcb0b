#include <cerrno>
#include <cstdio>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "batch/BatchEngine.h"
#include "cli/BlockSource.h"
#include "cli/Causes.h"
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
#include "text/CommandLabels.h"
#include "text/Labels.h"
#include "text/Phrase.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

int WrongUsage(const std::string& text) {
    PrintError(text);
    return kWrongUsage;
}

/// Options that stand for a parameter; without the option the block's value holds.
void ApplyOptions(const ParsedWords& words, CParaBlock& block) {
    if (const std::optional<std::string> extension = words.Text(Option::kExt)) {
        TargetRule rule = UnpackTargetRule(block.GetPara(PARA_TGT_FILES));
        rule.extension = FormatOfExtension(*extension).value_or(TargetFormat::kAuto);
        block.SetPara(PARA_TGT_FILES, PackTargetRule(rule));
    }
    if (const std::optional<int> files = words.Number(Option::kFiles))
        block.SetPara(PARA_SRC_FILES, *files);
    if (words.Has(Option::kNoRecurse))
        block.SetPara(PARA_GO_SUB_DIR, 0);
    if (words.Has(Option::kKeepTime))
        block.SetPara(PARA_KEEP_FILE_TIME, 1);
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
    explicit BatchCommand(const ParsedWords& words)
        : words_(words),
          bar_(!words.Has(Option::kDryRun) && (words.Has(Option::kProgress) || ErrorIsTerminal())) {
    }

    int Run() {
        if (!PrepareGlobalBlock(words_))
            return kWrongUsage;
        ApplyOptions(words_, GlobalBlock());
        FillRequest();
        const std::optional<std::string> list = words_.Text(Option::kList);
        if (list && !ReadList(*list))
            return kWrongUsage;
        CatchStopSignals();
        const BatchEvents events = Events();
        return FinishOutput(words_.Has(Option::kDryRun) ? Show(events) : Convert(events));
    }

 private:
    void FillRequest() {
        request_.source = words_.operands[0];
        request_.target = words_.operands[1];
        request_.settings = GlobalBlock().GetSettings();
        request_.skipColor = words_.Has(Option::kSkipColor);
        request_.jobs = words_.Number(Option::kJobs).value_or(0);
        request_.log = words_.Text(Option::kLog).value_or("");
        request_.review = words_.Text(Option::kReview).value_or("");
        request_.keepDpi = words_.Has(Option::kKeepDpi);
        request_.skipExisting = words_.Has(Option::kSkipExisting);
        request_.allPages = words_.Has(Option::kAllPages);
        request_.strip = words_.Has(Option::kStrip);
        request_.strict = words_.Has(Option::kStrict);
        request_.eachPage = words_.Has(Option::kEachPage);
        request_.bothHalves = words_.Has(Option::kBothHalves);
        request_.memory = words_.Bytes(Option::kMemory).value_or(0);
        request_.stop = &StopFlag();
    }

    bool ReadList(const std::string& file) {
        const std::optional<std::string> bytes = ReadListFile(file);
        if (!bytes) {
            const int code = errno;
            PrintFailure({.path = file,
                          .message = labels::kLoadFailed,
                          .cause = CauseOfErrno(code),
                          .detail = std::generic_category().message(code)});
            return false;
        }
        request_.useList = true;
        for (std::string& path : SplitPathList(*bytes, words_.Has(Option::kNull)))
            request_.list.emplace_back(std::move(path));
        return true;
    }

    BatchEvents Events() {
        BatchEvents events;
        events.warning = [](const std::string& text) { PrintWarning(text); };
        events.failed = [](const BatchFailure& failure) {
            PrintFailure({.path = failure.path,
                          .message = failure.message,
                          .cause = CauseText(failure.reason),
                          .source = failure.source,
                          .detail = failure.detail});
        };
        events.progress = [this](const BatchProgress& progress) {
            bar_.Show({progress.done, progress.total, progress.seconds, progress.path});
        };
        events.replaceSources = [this](const ReplaceQuestion& question) {
            return words_.Has(Option::kYes) ||
                   AskYesNo(question.text, [] { return StopFlag().load(); });
        };
        return events;
    }

    int Show(const BatchEvents& events) {
        const BatchResult result =
            PlanBatch(request_, events, [](const std::string& source, const std::string& target) {
                Print(OutputName(source) + "\t" + OutputName(target) + "\n");
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
            PrintNote("velloran: " + Phrase(labels::kRunLogAt, {OutputName(result.log.native())}));
        if (words_.Has(Option::kJsonBatch))
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
                PrintFailure({.path = words_.operands[0], .message = result.message});
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
        Json failed = Json::Array();
        for (const BatchFailure& failure : result.failures)
            failed.Append(Json::Object().AddPath(failure.path).Add("message", failure.message));
        Json damaged = Json::Array();
        for (const std::string& path : result.damaged)
            damaged.Append(path);
        Json json = Json::Object();
        json.Add("files", result.files);
        json.Add("converted", result.converted);
        json.Add("failed", failed);
        json.Add("damaged", damaged);
        json.Add("otherTypes", result.otherTypes);
        json.Add("seconds", result.seconds);
        json.Add("cpuSeconds", cpuSeconds);
        json.Add("bytesIn", result.bytesIn);
        json.Add("bytesOut", result.bytesOut);
        json.Add("peakMemory", PeakMemory());
        return json;
    }

    const ParsedWords& words_;
    ProgressBar bar_;
    BatchRequest request_;
};

}  // namespace

int RunBatchCommand(const ParsedWords& words) {
    return BatchCommand(words).Run();
}

}  // namespace velloran::cli
