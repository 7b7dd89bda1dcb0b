#include "batch/BatchEngine.h"

#include <chrono>
#include <deque>
#include <iterator>
#include <memory>
#include <mutex>
#include <system_error>
#include <unordered_set>
#include <utility>

#include "batch/BatchPlan.h"
#include "batch/BatchRules.h"
#include "batch/BatchWorkers.h"
#include "batch/ConvertFile.h"
#include "batch/ReviewList.h"
#include "batch/RunLog.h"
#include "batch/RunSettings.h"
#include "batch/TargetFolders.h"
#include "codecs/Formats.h"
#include "core/FreeMemory.h"
#include "core/ProcessorCount.h"
#include "files/ProgramPlaces.h"
#include "files/ReplaceRules.h"
#include "files/TargetNames.h"
#include "text/Labels.h"
#include "text/Phrase.h"
#include "text/Text.h"

namespace velloran {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

std::u16string Decimal(std::size_t number) {
    return ToUtf16(std::to_string(number));
}

/// Stages as the workers tell them, kept for the caller's thread; only the last of each file
/// matters.
class StageBoard {
 public:
    struct Stage {
        std::string path;
        std::u16string text;
    };

    void Tell(std::string_view path, std::u16string_view text) {
        const std::lock_guard hold(lock_);
        if (stages_.empty() || stages_.back().path != path)
            stages_.push_back({std::string(path), {}});
        stages_.back().text = text;
    }

    std::deque<Stage> Take() {
        const std::lock_guard hold(lock_);
        return std::exchange(stages_, {});
    }

 private:
    std::mutex lock_;
    std::deque<Stage> stages_;
};

class BatchRun {
 public:
    BatchRun(const BatchRequest& request, const BatchEvents& events)
        : request_(request),
          events_(events),
          settings_(request.settings, request.eachPage || request.bothHalves) {}

    BatchResult Convert() {
        const Clock::time_point start = Clock::now();
        if (Check() && Plan() && CheckLog() && CheckReview() && AskToReplace())
            ConvertAll();
        result_.seconds = SecondsSince(start);
        result_.settings = settings_.Get();
        result_.settings.Set(PARA_DPI, names_.dpi);
        return std::move(result_);
    }

    BatchResult Show(const std::function<void(const std::string&, const std::string&)>& planned) {
        if (!Check() || !Plan())
            return std::move(result_);
        const std::string extension =
            names_.extension.empty() ? ".*" : DottedExtension(names_.extension);
        for (std::size_t i = 0; i < plan_.Size() && !IsStopped(); ++i) {
            const PlannedFile& file = plan_.At(i);
            planned(file.source, plan_.TargetWithoutExtension(file) + extension);
        }
        if (IsStopped())
            result_.end = BatchResult::End::kStopped;
        return std::move(result_);
    }

 private:
    bool End(BatchResult::End end, std::u16string_view message) {
        result_.end = end;
        result_.message = message;
        return false;
    }

    bool IsStopped() {
        if (events_.poll && events_.poll())
            Stop().store(true);
        return Stop().load();
    }
    std::atomic<bool>& Stop() { return request_.stop != nullptr ? *request_.stop : ownStop_; }

    void Status(std::u16string_view text) {
        if (events_.status)
            events_.status(text);
    }
    void Warn(const std::string& text) {
        if (events_.warning)
            events_.warning(text);
    }

    /// What must be right before a file is looked at.
    bool Check() {
        source_ = request_.source;
        if (source_.empty() && request_.useList && !request_.list.empty()) {
            source_ = request_.list.front().parent_path();
            if (source_.empty())
                source_ = ".";
        }
        if (source_.empty())
            return End(BatchResult::End::kRefused, labels::kNoSourceFolder);
        if (request_.target.empty())
            return End(BatchResult::End::kRefused, labels::kNoTargetFolder);
        names_ = ReadBatchTarget(request_.settings);
        names_.keepDpi = request_.keepDpi;
        if (const std::u16string_view refusal = RefuseTarget(names_); !refusal.empty())
            return End(BatchResult::End::kRefused, refusal);
        return true;
    }

    /// The user's own files are no logs.
    bool CheckLog() {
        if (request_.log.empty() || (CanBeLog(request_.log) && !plan_.IsSource(request_.log)))
            return true;
        result_.path = request_.log.native();
        return End(BatchResult::End::kRefused, labels::kIsNoLog);
    }

    bool CheckReview() {
        const fs::path& review = request_.review;
        if (review.empty() || (CanBeReview(review) && !plan_.IsSource(review)))
            return true;
        result_.path = review.native();
        return End(BatchResult::End::kRefused, labels::kIsNoReview);
    }

    bool AskToReplace() {
        ReplaceQuestion question;
        question.isSameFolder = plan_.IsSameFolder();
        question.replaced = plan_.CountReplaced();
        question.newNames = plan_.CountNewNames();
        question.isExact = !names_.extension.empty() && !request_.skipColor;
        if (!question.isSameFolder && question.replaced == 0)
            return true;
        question.text = QuestionText(question);
        if (events_.replaceSources && events_.replaceSources(question))
            return true;
        result_.question = std::move(question);
        return End(BatchResult::End::kDeclined, {});
    }

    static std::u16string QuestionText(const ReplaceQuestion& question) {
        std::u16string text;
        if (question.isSameFolder)
            text = labels::kSameFolderAsk;
        else
            text.append(Decimal(question.replaced)).append(labels::kReplacesSourcesAsk);
        if (question.newNames > 0)
            text.append(question.isExact ? labels::kNewNamesBefore : labels::kNewNamesAtMostBefore)
                .append(Decimal(question.newNames))
                .append(labels::kNewNamesBehind);
        return text;
    }

    bool Plan() {
        Status(labels::kCountingFiles);
        PlanRequest plan;
        plan.source = source_;
        plan.target = request_.target;
        plan.list = request_.list;
        plan.useList = request_.useList;
        plan.filter = SourceFilter(request_.settings[PARA_SRC_FILES]);
        plan.recursive = request_.settings[PARA_GO_SUB_DIR] != 0;
        plan.skipColor = request_.skipColor;
        plan.skipExisting = request_.skipExisting;
        plan.bothHalves = request_.bothHalves && IsDoublePage(request_.settings);
        plan.allPages = request_.allPages;
        plan.names = names_;
        BatchPlan::Listener listener;
        listener.isStopped = [this] { return IsStopped(); };
        listener.renamed = [this](const std::string& later, const std::string& earlier,
                                  const std::string& name) {
            Warn(Phrase(labels::kSharesTargetName, {later, earlier, name}));
        };
        listener.unreadable = [this](const fs::path& folder, const std::error_code& reason) {
            NoteUnreadable(folder, reason);
        };
        const bool made = plan_.Make(plan, listener);
        result_.files = plan_.Size();
        result_.skipped = plan_.CountSkipped();
        result_.otherTypes = plan_.CountOtherTypes();
        Status({});
        if (!made)
            return End(BatchResult::End::kStopped, {});
        if (plan_.Size() == 0 && result_.skipped > 0) {
            TellCounts();
            return false;
        }
        if (plan_.Size() == 0)
            return End(BatchResult::End::kNothing, labels::kNothingToConvert);
        return true;
    }

    void NoteUnreadable(const fs::path& folder, const std::error_code& reason) {
        if (reason == std::errc::too_many_symbolic_link_levels) {
            Warn(Phrase(labels::kEnteredTooOften, {folder.native()}));
            return;
        }
        constexpr int kOpenFailed = 1;
        Fail({folder.native(),
              {},
              labels::kLogRows[kOpenFailed],
              reason.message(),
              false,
              ReasonOfErrno(reason.value())},
             /*isTold=*/true);
    }

    void Fail(BatchFailure failure, bool isTold) {
        if (isTold && events_.failed)
            events_.failed(failure);
        result_.failures.push_back(std::move(failure));
    }

    void ConvertAll() {
        const fs::path ownLog = FindProgramPlaces().log;
        log_ = std::make_unique<RunLog>(request_.log.empty() ? ownLog : request_.log);
        ownLog_ = request_.log.empty();
        log_->Reset();

        TargetFolders folders(plan_.TargetRoot());
        ConvertRequest convert;
        convert.plan = &plan_;
        convert.folders = &folders;
        convert.settings = &settings_;
        convert.strict = request_.strict;
        convert.strip = request_.strip;
        convert.names = names_;
        convert.skipColor = request_.skipColor;
        convert.skipExisting = request_.skipExisting;
        convert.wantsSure = !request_.review.empty();
        convert.stop = &Stop();
        convert.stage = [this](std::string_view path, std::u16string_view stage) {
            stages_.Tell(path, stage);
        };
        const int processors = CountProcessors();
        const WorkShares shares = ShareProcessors(
            plan_.Size(), request_.jobs > 0 ? request_.jobs : processors, processors);
        WorkerRequest workers;
        workers.count = plan_.Size();
        workers.workers = shares.workers;
        workers.innerThreads = shares.innerThreads;
        workers.aloneThreads = shares.aloneThreads;
        workers.stop = &Stop();
        workers.memory = request_.memory > 0 ? request_.memory : FreeMemory();
        convert.isAlone = shares.workers == 1;
        workers.begin = [&](std::size_t i) { return BeginFile(convert, plan_.At(i)); };
        workers.needsAlone = [this] { return settings_.HasValuesToFind(); };
        workers.deliver = [this](std::size_t i, FileOutcome outcome) {
            Take(plan_.At(i), std::move(outcome));
        };
        workers.poll = [this] { return TellStages(); };
        start_ = Clock::now();
        RunWorkers(workers);
        Finish();
    }

    /// Hands on what the workers told; the answer of the caller's poll.
    bool TellStages() {
        for (const StageBoard::Stage& stage : stages_.Take())
            TellProgress(stage.path, stage.text);
        return events_.poll && events_.poll();
    }

    void TellProgress(std::string_view path, std::u16string_view stage) {
        if (events_.progress)
            events_.progress({done_, plan_.Size(), path, stage, SecondsSince(start_)});
    }

    void Take(const PlannedFile& file, FileOutcome outcome) {
        if (outcome.end == FileOutcome::End::kStopped)
            return;
        ++done_;
        if (outcome.end == FileOutcome::End::kSkipped) {
            ++result_.skipped;
            --result_.files;
            TellProgress(file.source, {});
            return;
        }
        if (file.half != 2)  // one source
            result_.bytesIn += outcome.bytesIn;
        result_.bytesOut += outcome.bytesOut;
        if (file.half != 2)
            TellOfSource(file, outcome);
        if (!outcome.evadedTo.empty())
            Warn(Phrase(labels::kEvadesSource, {file.source, outcome.evadedTo}));
        if (outcome.timesLost)
            Warn(Phrase(labels::kTimesNotCopied, {file.source}));
        review_.Add(file.source, outcome.sure);
        if (outcome.end == FileOutcome::End::kConverted)
            ++result_.converted;
        else
            LogAndFail(file, outcome);
        TellProgress(file.source, {});
    }

    /// What was lost of a source that was converted in part.
    void TellOfSource(const PlannedFile& file, const FileOutcome& outcome) {
        const bool isConverted = outcome.end == FileOutcome::End::kConverted;
        if (!outcome.damage.empty()) {
            result_.damaged.push_back(file.source);
            if (isConverted)
                Warn(file.source + ": " + ToUtf8(labels::kDamagedSource) + " (" + outcome.damage +
                     ")");
        }
        if (outcome.pictures > 1 && isConverted)
            Warn(file.source + ": " + ToUtf8(labels::kPicturesBefore) +
                 std::to_string(outcome.pictures) + ToUtf8(labels::kPicturesBehind));
    }

    /// A folder to which nothing can be written is told once; its files are counted.
    void LogAndFail(const PlannedFile& file, const FileOutcome& outcome) {
        BatchFailure failure;
        failure.path = outcome.failedPath.native();
        failure.message = labels::kLogRows[outcome.logRow];
        failure.detail = outcome.error.detail;
        failure.reason = outcome.error.reason;
        failure.storage = outcome.writeFailed && outcome.error.cause == FileError::Cause::kStorage;
        const std::string& folder = outcome.failedFolder;
        if (folder.empty()) {
            Log(outcome.failedPath, outcome.logRow);
        } else if (toldFolders_.insert(folder).second) {
            Log(folder, outcome.logRow);
            BatchFailure whole = failure;
            whole.path = folder;
            if (events_.failed)
                events_.failed(whole);
        }
        if (failure.path != file.source)
            failure.source = file.source;
        Fail(std::move(failure), /*isTold=*/folder.empty());
    }

    void Log(const fs::path& path, int row) {
        if (ownLog_)
            MakeFolderOf(log_->File());
        FileError error;
        if (!log_->LogFailure(path, row, &error) && !std::exchange(logLost_, true))
            Warn(Phrase(labels::kLogNotWritten, {log_->File().native()}));
    }

    void TellCounts() {
        result_.message = Decimal(result_.files);
        result_.message += labels::kFilesToConvert;
        result_.message += Decimal(result_.converted);
        result_.message += labels::kFilesConverted;
    }

    /// Also of a run that was stopped: what was done is judged.
    void WriteReview() {
        FileError error;
        if (request_.review.empty() || review_.Write(request_.review, &error))
            return;
        Fail({request_.review.native(),
              {},
              labels::kSaveFailed,
              error.detail,
              error.cause == FileError::Cause::kStorage,
              error.reason},
             /*isTold=*/true);
    }

    void Finish() {
        WriteReview();
        // A stop that came behind the last file changes nothing.
        const bool stopped = Stop().load() && done_ < plan_.Size();
        result_.end = stopped ? BatchResult::End::kStopped : BatchResult::End::kDone;
        TellCounts();
        if (stopped)
            result_.message += labels::kStoppedHalfway;
        else
            result_.offersLog = result_.files != result_.converted;
        if (log_->HasLogLines())
            result_.log = log_->File();
    }

    const BatchRequest& request_;
    const BatchEvents& events_;
    RunSettings settings_;
    std::atomic<bool> ownStop_{false};
    fs::path source_;
    BatchTarget names_;
    BatchPlan plan_;
    StageBoard stages_;
    std::unique_ptr<RunLog> log_;
    ReviewList review_;
    bool ownLog_ = false, logLost_ = false;
    std::unordered_set<std::string> toldFolders_;
    std::size_t done_ = 0;
    Clock::time_point start_ = Clock::now();
    BatchResult result_;
};

}  // namespace

BatchResult RunBatch(const BatchRequest& request, const BatchEvents& events) {
    return BatchRun(request, events).Convert();
}

BatchResult PlanBatch(const BatchRequest& request, const BatchEvents& events,
                      const std::function<void(const std::string&, const std::string&)>& planned) {
    return BatchRun(request, events).Show(planned);
}

}  // namespace velloran
