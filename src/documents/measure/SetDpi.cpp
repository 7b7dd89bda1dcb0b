#include "documents/measure/SetDpi.h"

#include <sys/stat.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "batch/RunLog.h"
#include "codecs/ResolutionMark.h"
#include "documents/Asker.h"
#include "files/FileCopy.h"
#include "files/FileType.h"
#include "files/ReplaceRules.h"
#include "io/AtomicFile.h"
#include "io/FileSource.h"
#include "text/Labels.h"
#include "text/NumberText.h"
#include "text/Phrase.h"

namespace velloran {

namespace {

namespace fs = std::filesystem;

constexpr int kLogNoJfif = 26;

class DpiRun {
 public:
    DpiRun(const DpiRequest& request, Asker& asker)
        : request_(request), asker_(asker), log_(request.log) {}

    DpiOutcome Run() {
        log_.Reset();
        const WalkEnd end =
            WalkFiles(request_.walk, asker_, [this](const fs::path& file) { Change(file); });
        outcome_.wasStopped = end.wasStopped;
        if (!outcome_.wasStopped)
            asker_.TellEnd({.text = std::u16string(labels::kDpiDone),
                            .logQuestion = std::u16string(labels::kDpiSeeLogAsk),
                            .log = log_.HasLogLines() ? log_.File() : fs::path()});
        return std::move(outcome_);
    }

 private:
    void Change(const fs::path& file) {
        ++outcome_.files;
        asker_.ShowProgress({.path = file.native()});
        const int type = DetectFileType(file, /*sniff=*/1);
        if (!CanMarkResolution(type))
            return;
        FileError error;
        const MarkResult result = Rewrite(file, type, error);
        if (result == MarkResult::kDone)
            ++outcome_.changed;
        else
            Fail(file, result == MarkResult::kNotJfif ? kLogNoJfif : kLogConversionFailed, error);
    }

    MarkResult Rewrite(const fs::path& file, int type, FileError& error) const {
        FileSource source;
        const std::optional<struct stat> status = ReadFileStatus(file);
        if (!source.Open(file, &error))
            return MarkResult::kUnfit;
        AtomicFile changed(file);
        if (!changed.Open(&error))
            return MarkResult::kNotCopied;
        const int dpi = std::clamp(request_.dpi, 0, kMostDpi);
        const MarkResult result = CopyWithResolution(source, type, dpi, changed, &error);
        if (result != MarkResult::kDone)
            return result;
        if (!changed.Commit(&error))
            return MarkResult::kNotCopied;
        if (request_.keepTimes && status && !SetFileTimes(file, *status))
            asker_.Warn(Phrase(labels::kTimesNotCopied, {file.native()}));
        return MarkResult::kDone;
    }

    void Fail(const fs::path& file, int row, const FileError& error) {
        const std::u16string_view message = labels::kLogRows[row];
        const bool isStorage = error.cause == FileError::Cause::kStorage;
        outcome_.failures.push_back({file.native(), message, isStorage});
        asker_.TellFailure({.path = file.native(),
                            .message = message,
                            .detail = error.detail,
                            .storage = isStorage,
                            .reason = error.reason});
        FileError logError;
        if (!log_.LogFailure(file, row, &logError) && !std::exchange(logLost_, true))
            asker_.Warn(Phrase(labels::kLogNotWritten, {log_.File().native()}));
    }

    const DpiRequest& request_;
    Asker& asker_;
    RunLog log_;
    bool logLost_ = false;
    DpiOutcome outcome_;
};

}  // namespace

std::u16string RefuseDpi(int dpi) {
    if (dpi <= kMostDpi)
        return {};
    return std::u16string(labels::kDpiLimitBefore) + DecimalText(kMostDpi) +
           std::u16string(labels::kDpiLimitBehind);
}

DpiOutcome SetFolderDpi(const DpiRequest& request, Asker& asker) {
    DpiOutcome outcome;
    outcome.refusal = RefuseDpi(request.dpi);
    if (outcome.refusal.empty())
        outcome.refusal = RefuseWalk(request.walk);
    if (outcome.refusal.empty() && !CanBeLog(request.log))
        outcome.refusal = labels::kIsNoLog;
    if (!outcome.refusal.empty())
        return outcome;
    return DpiRun(request, asker).Run();
}

}  // namespace velloran
