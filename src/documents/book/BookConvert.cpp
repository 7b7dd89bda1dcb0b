#include "documents/book/BookConvert.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <deque>
#include <mutex>
#include <set>
#include <system_error>
#include <utility>

#include "batch/BatchWorkers.h"
#include "batch/ReviewList.h"
#include "batch/RunLog.h"
#include "core/FreeMemory.h"
#include "core/ProcessorCount.h"
#include "documents/Asker.h"
#include "documents/book/BookPage.h"
#include "documents/book/RowName.h"
#include "files/FileCopy.h"
#include "files/NaturalOrder.h"
#include "files/ReplaceRules.h"
#include "io/Leftovers.h"
#include "text/Labels.h"
#include "text/NumberText.h"
#include "text/Phrase.h"
#include "text/Text.h"

namespace velloran {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using End = BookConvertOutcome::End;

/// A path without links and dots, as far as it leads to what is there.
fs::path Canonical(const fs::path& path) {
    std::error_code failure;
    fs::path canonical = fs::weakly_canonical(fs::absolute(path), failure);
    if (failure)
        return fs::absolute(path).lexically_normal();
    return canonical.has_filename() ? canonical : canonical.parent_path();
}

bool IsSameOrAbove(const fs::path& above, const fs::path& below) {
    const auto [a, b] = std::mismatch(above.begin(), above.end(), below.begin(), below.end());
    return a == above.end();
}

/// Letters of drives and shares of another system.
bool IsForeign(std::u16string_view target) {
    const auto isLetter = [](char16_t unit) {
        return (unit | 0x20) >= u'a' && (unit | 0x20) <= u'z';
    };
    return target.starts_with(u"\\\\") ||
           (target.size() > 2 && isLetter(target[0]) && target[1] == u':' &&
            (target[2] == u'\\' || target[2] == u'/'));
}

/// The files of a folder, its own alone, in natural order; nothing of its subfolders. Links are
/// entries like files.
std::vector<fs::path> EntriesOf(const fs::path& folder, std::error_code& failure) {
    std::vector<fs::path> files;
    fs::directory_iterator entries(folder, failure);
    for (; !failure && entries != fs::directory_iterator(); entries.increment(failure)) {
        std::error_code ignored;
        if (entries->symlink_status(ignored).type() != fs::file_type::directory)
            files.push_back(entries->path());
    }
    std::ranges::sort(files, NaturalLess());
    return files;
}

class BookRun {
 public:
    BookRun(BookProject& project, const BookConvertRequest& request, Asker& asker)
        : project_(project), request_(request), asker_(asker), log_(request.log) {}

    BookConvertOutcome Run() {
        if (Check() && EmptyTarget())
            Convert();
        outcome_.seconds = Since(start_);
        return std::move(outcome_);
    }

 private:
    static double Since(Clock::time_point start) {
        return std::chrono::duration<double>(Clock::now() - start).count();
    }
    bool Stop(End end, std::u16string message, std::string path = {}) {
        outcome_.end = end;
        outcome_.message = std::move(message);
        outcome_.path = std::move(path);
        return false;
    }

    bool Check() {
        std::error_code ignored;
        if (project_.rows.empty())
            return Stop(End::kNothing, std::u16string(labels::kBookNothing));
        if (project_.source.empty())
            return Stop(End::kRefused, std::u16string(labels::kBookNoSource));
        if (!fs::is_directory(project_.source, ignored))
            return Stop(End::kRefused, std::u16string(labels::kBookSourceGone));
        if (std::u16string refusal = RefuseTargetFolder(project_); !refusal.empty())
            return Stop(End::kRefused, std::move(refusal));
        if (std::u16string refusal = RefuseNameParts(project_); !refusal.empty())
            return Stop(End::kRefused, std::move(refusal));
        std::string source;
        if (std::u16string refusal = RefuseColors(project_, source); !refusal.empty())
            return Stop(End::kRefused, std::move(refusal), std::move(source));
        if (!CanBeLog(request_.log))
            return Stop(End::kRefused, std::u16string(labels::kIsNoLog), request_.log.native());
        if (!request_.review.empty() && !CanBeReview(request_.review))
            return Stop(End::kRefused, std::u16string(labels::kIsNoReview),
                        request_.review.native());
        return true;
    }

    bool NoTarget(const std::error_code& reason, const fs::path& path) {
        errno = reason.value();
        FailErrno(&outcome_.error, path.native());
        return Stop(End::kNoTarget, std::u16string(labels::kBookTargetFailed), path.native());
    }

    bool EmptyTarget() {
        target_ = NameOfText(project_.target);
        std::error_code failure;
        if (!fs::is_directory(target_, failure)) {
            fs::create_directories(target_, failure);
            return !failure || NoTarget(failure, target_);
        }
        RemoveLeftovers(target_);
        const std::vector<fs::path> files = EntriesOf(target_, failure);
        if (failure)
            return NoTarget(failure, target_);
        if (files.empty())
            return true;
        if (!asker_.AskYesNo(labels::kBookEmptyAsk))
            return Stop(End::kDeclined, {});
        for (const fs::path& file : files)
            if (::unlink(file.c_str()) != 0 && errno != ENOENT)
                return NoTarget(std::error_code(errno, std::generic_category()), file);
        return true;
    }

    void Convert() {
        log_.Reset();
        const std::size_t count = project_.rows.size();
        outcome_.files = count;
        found_.resize(count);
        const int processors = CountProcessors();
        const WorkShares shares =
            ShareProcessors(count, request_.jobs > 0 ? request_.jobs : processors, processors);
        BookPageRequest page;
        page.project = &project_;
        page.target = target_;
        page.stop = &stop_;
        page.isAlone = shares.workers == 1;
        page.wantsSure = !request_.review.empty();
        page.stage = [this](std::string_view source, std::u16string_view stage) {
            const std::lock_guard hold(stageLock_);
            stages_.emplace_back(source, stage);
        };
        WorkerRequest work;
        work.count = count;
        work.workers = shares.workers;
        work.innerThreads = shares.innerThreads;
        work.aloneThreads = shares.aloneThreads;
        work.stop = &stop_;
        work.memory = FreeMemory();
        work.begin = [&](std::size_t row) { return BeginBookPage(page, row, found_[row]); };
        work.deliver = [this](std::size_t row, FileOutcome outcome) {
            Take(row, std::move(outcome));
        };
        work.poll = [this] { return Poll(); };
        start_ = Clock::now();
        RunWorkers(work);
        KeepFound();
        Finish(stop_.load() && done_ < count);
    }

    bool Poll() {
        std::deque<std::pair<std::string, std::u16string>> stages;
        {
            const std::lock_guard hold(stageLock_);
            stages.swap(stages_);
        }
        for (const auto& [path, stage] : stages)
            asker_.ShowProgress({done_, outcome_.files, path, stage, Since(start_)});
        return asker_.IsStopped();
    }

    void Take(std::size_t row, FileOutcome outcome) {
        if (outcome.end == FileOutcome::End::kStopped)
            return;
        ++done_;
        delivered_.push_back(row);
        const std::string source = (project_.source / project_.rows[row].source).native();
        outcome_.bytesIn += outcome.bytesIn;
        outcome_.bytesOut += outcome.bytesOut;
        review_.Add(source, outcome.sure);
        const bool isConverted = outcome.end == FileOutcome::End::kConverted;
        if (!outcome.damage.empty()) {
            outcome_.damaged.push_back(source);
            if (isConverted)
                asker_.Warn(source + ": " + ToUtf8(labels::kDamagedSource) + " (" + outcome.damage +
                            ")");
        }
        if (outcome.pictures > 1 && isConverted)
            asker_.Warn(source + ": " + ToUtf8(labels::kPicturesBefore) +
                        std::to_string(outcome.pictures) + ToUtf8(labels::kPicturesBehind));
        if (isConverted)
            ++outcome_.converted;
        else
            Fail(source, outcome);
        asker_.ShowProgress({done_, outcome_.files, source, {}, Since(start_)});
    }

    void Fail(const std::string& source, const FileOutcome& outcome) {
        BatchFailure failure;
        failure.path = outcome.failedPath.native();
        failure.message = labels::kLogRows[outcome.logRow];
        failure.detail = outcome.error.detail;
        failure.reason = outcome.error.reason;
        failure.storage = outcome.writeFailed && outcome.error.cause == FileError::Cause::kStorage;
        if (failure.path != source)
            failure.source = source;
        asker_.TellFailure(failure);
        outcome_.failures.push_back(std::move(failure));
        FileError error;
        if (!log_.LogFailure(outcome.failedPath, outcome.logRow, &error) &&
            !std::exchange(logLost_, true))
            asker_.Warn(Phrase(labels::kLogNotWritten, {log_.File().native()}));
    }

    /// Lines, corners and curves that a run found stay with its row, also behind a stop.
    void KeepFound() {
        for (const std::size_t row : delivered_) {
            const ParaValues before = project_.rows[row].values;
            found_[row].ApplyTo(project_.rows[row].values);
            outcome_.hasFound = outcome_.hasFound || before != project_.rows[row].values;
        }
    }

    void CopySideFiles() {
        constexpr std::array<std::string_view, 5> kExtensions = {".txt", ".dat", ".itf", ".xml",
                                                                 ".opf"};
        std::error_code failure;
        for (const fs::path& file : EntriesOf(project_.source, failure)) {
            const std::string extension = file.extension().native();
            const bool isSide = std::ranges::any_of(kExtensions, [&](std::string_view side) {
                return EqualIgnoringCase(side, extension);
            });
            if (!isSide || Canonical(file) == Canonical(log_.File()))
                continue;
            FileError error;
            if (!CopyFileWhole(file, target_ / file.filename(), &error))
                asker_.Warn(Phrase(labels::kBookSideFile, {file.native()}));
        }
    }

    /// Also of a run that was stopped: what was done is judged.
    void WriteReview() {
        FileError error;
        if (request_.review.empty() || review_.Write(request_.review, &error))
            return;
        BatchFailure failure{.path = request_.review.native(),
                             .message = labels::kSaveFailed,
                             .detail = error.detail,
                             .storage = error.cause == FileError::Cause::kStorage,
                             .reason = error.reason};
        asker_.TellFailure(failure);
        outcome_.failures.push_back(std::move(failure));
    }

    void Finish(bool stopped) {
        WriteReview();
        if (stopped) {
            outcome_.end = End::kStopped;
            return;
        }
        CopySideFiles();
        EndMessage message;
        message.text = DecimalText(static_cast<std::int64_t>(outcome_.files));
        message.text += labels::kFilesToConvert;
        message.text += DecimalText(static_cast<std::int64_t>(outcome_.converted));
        message.text += labels::kFilesConverted;
        message.logQuestion = labels::kSeeLogAsk;
        if (log_.HasLogLines())
            message.log = log_.File();
        outcome_.message = message.text;
        asker_.TellEnd(message);
    }

    BookProject& project_;
    const BookConvertRequest& request_;
    Asker& asker_;
    RunLog log_;
    ReviewList review_;
    bool logLost_ = false;
    fs::path target_;
    std::atomic<bool> stop_{false};
    std::mutex stageLock_;
    std::deque<std::pair<std::string, std::u16string>> stages_;
    std::vector<FoundValues> found_;
    std::vector<std::size_t> delivered_;
    std::size_t done_ = 0;
    Clock::time_point start_ = Clock::now();
    BookConvertOutcome outcome_;
};

}  // namespace

std::u16string RefuseTargetFolder(const BookProject& project) {
    if (project.target.empty())
        return std::u16string(labels::kBookNoTarget);
    if (IsForeign(project.target) || !IsOneLine(project.target))
        return ToUtf16(Phrase(labels::kBookTargetForeign, {NameOfText(project.target)}));
    const fs::path target = Canonical(NameOfText(project.target));
    const fs::path source = Canonical(project.source);
    bool isRefused = IsSameOrAbove(target, source) || IsSameOrAbove(source, target);
    std::set<fs::path> folders;  // each looked at once
    for (const BookRow& row : project.rows) {
        if (isRefused)
            break;
        const fs::path file = project.source / row.source;
        std::error_code ignored;
        if (folders.insert(file.parent_path()).second)
            isRefused = Canonical(file.parent_path()) == target;
        if (fs::is_symlink(file, ignored))
            isRefused = isRefused || Canonical(file).parent_path() == target;
    }
    return isRefused ? std::u16string(labels::kBookTargetIsSource) : std::u16string();
}

std::u16string RefuseNameParts(const BookProject& project) {
    for (const std::u16string* part : {&project.prefix, &project.postfix})
        if (!IsOneLine(*part) || part->find_first_of(u"/\\") != std::u16string::npos)
            return ToUtf16(Phrase(labels::kBookBadName, {NameOfText(*part)}));
    return {};
}

BookConvertOutcome ConvertAll(BookProject& project, const BookConvertRequest& request,
                              Asker& asker) {
    return BookRun(project, request, asker).Run();
}

}  // namespace velloran
