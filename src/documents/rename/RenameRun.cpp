#include "documents/rename/RenameRun.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <memory>
#include <optional>
#include <random>
#include <system_error>
#include <unordered_map>
#include <utility>

#include "batch/BatchPlan.h"
#include "batch/RunLog.h"
#include "documents/Asker.h"
#include "documents/FolderLock.h"
#include "documents/rename/MoveFile.h"
#include "documents/rename/MoveRows.h"
#include "documents/rename/RenameJournal.h"
#include "files/FileCopy.h"
#include "files/ReplaceRules.h"
#include "io/Leftovers.h"
#include "text/Labels.h"
#include "text/Phrase.h"
#include "text/Text.h"

namespace velloran {

namespace {

namespace fs = std::filesystem;
using End = RenameOutcome::End;
using State = RenameJournal::State;
using Mode = RenameJournal::Mode;

constexpr int kLogNoFile = 12, kLogRenameFailed = 27;
constexpr std::size_t kLongestName = 255;  // bytes, on the file systems of the day

RenameOutcome Refused(std::string message) {
    RenameOutcome outcome;
    outcome.end = End::kRefused;
    outcome.message = std::move(message);
    return outcome;
}

RenameOutcome Ended(End end) {
    RenameOutcome outcome;
    outcome.end = end;
    return outcome;
}

fs::path TargetFolderOf(const RenameRequest& request) {
    return request.target.empty() ? request.source : request.target;
}

bool IsInPlace(const RenameRequest& request) {
    return request.target.empty() || IsSameFolder(request.source, request.target);
}

bool CanBeName(const std::string& name) {
    return !name.empty() && name.size() <= kLongestName && name != "." && name != ".." &&
           name != kRenameJournalName &&
           name.find_first_of(std::string_view("/\0", 2)) == std::string::npos;
}

bool StaysAsItIs(const RenameRow& row, bool inPlace) {
    return inPlace && EqualIgnoringCase(ToUtf16(row.source), ToUtf16(row.target));
}

/// What a row's target meets on the disk; empty where it may go there.
std::string JudgeTarget(const RenameRequest& request, const RenameRow& row, bool isInList) {
    struct stat status {};
    if (isInList || ::lstat((TargetFolderOf(request) / row.target).c_str(), &status) != 0)
        return {};
    if (S_ISDIR(status.st_mode))
        return Phrase(labels::kRenameFolderTarget, {row.source, row.target});
    return request.overwrite ? std::string()
                             : Phrase(labels::kRenameTakenTarget, {row.source, row.target});
}

/// The plan as a record, with the marks that the files have now.
RenameJournal PlanJournal(const RenameRequest& request, bool inPlace) {
    RenameJournal journal;
    journal.mode = inPlace ? Mode::kRename : request.move ? Mode::kMove : Mode::kCopy;
    journal.sourceFolder = fs::absolute(request.source);
    journal.targetFolder = inPlace ? journal.sourceFolder : fs::absolute(request.target);
    std::random_device random;
    const std::uint32_t nonce = random();
    std::unordered_map<std::string, bool> sources;
    for (const RenameRow& row : request.rows)
        sources.emplace(row.source, true);
    for (std::size_t i = 0; i < request.rows.size(); ++i) {
        const RenameRow& row = request.rows[i];
        if (StaysAsItIs(row, inPlace))
            continue;
        JournalRow entry{
            row.source, fmt::format("vlp{:08x}-{}.tmp", nonce, i), row.target, {}, false};
        entry.mark = MarkOf(journal.SourceOf(entry)).value_or(FileMark{});
        const bool isInList = inPlace && sources.contains(row.target);
        entry.targetStood = !isInList && MarkOf(journal.TargetOf(entry)).has_value();
        journal.rows.push_back(std::move(entry));
    }
    return journal;
}

/// Where the record of a run stands: with the sources, or with the targets where the sources'
/// folder takes no files.
fs::path JournalFolder(const RenameJournal& journal) {
    const bool canWrite = ::access(journal.sourceFolder.c_str(), W_OK | X_OK) == 0;
    return canWrite || journal.mode == Mode::kRename ? journal.sourceFolder : journal.targetFolder;
}

/// A record with its moves under way.
class JournalRun {
 public:
    JournalRun(RenameJournal journal, fs::path folder, const fs::path& log, Asker& asker)
        : journal_(std::move(journal)), folder_(std::move(folder)), log_(log), asker_(asker) {}

    /// The moves to the targets.
    RenameOutcome Forward(const Label& done) {
        if (!Begin(State::kRunning))
            return std::move(outcome_);
        const bool finished = journal_.mode == Mode::kCopy ? CopyForward() : MoveAll(false);
        Keep(/*back=*/false);
        Finish(finished, done, labels::kRenameDoneWithErrors);
        return std::move(outcome_);
    }

    /// The moves back to the sources.
    RenameOutcome Back() {
        wasRunning_ = journal_.state == State::kRunning;
        // Copies are known again by the state of the run that made them.
        if (journal_.mode != Mode::kCopy && !Begin(State::kUndoing))
            return std::move(outcome_);
        log_.Reset();
        const bool finished = journal_.mode == Mode::kCopy ? CopyBack() : MoveAll(true);
        Keep(/*back=*/true);
        Finish(finished, labels::kRenameUndone, labels::kRenameUndoneInPart);
        return std::move(outcome_);
    }

 private:
    bool Begin(State state) {
        RemoveLeftovers(folder_);  // of a record that a killed run was writing
        journal_.state = state;
        ends_.assign(journal_.rows.size(), std::nullopt);
        if (WriteJournal(journal_, folder_, &outcome_.error)) {
            log_.Reset();
            return true;
        }
        outcome_.end = End::kNotBegun;
        outcome_.message = (folder_ / kRenameJournalName).native();
        return false;
    }

    bool MoveAll(bool back) {
        MoveOptions options;
        options.back = back;
        options.isStopped = [this] { return asker_.IsStopped(); };
        options.progress = [this](std::size_t done, const JournalRow& row) { Show(done, row); };
        options.tidying = [this] { asker_.Tell(labels::kRenameTidy); };
        return MoveRows(journal_, options,
                        [this, back](const RowResult& result) { Take(result, back); });
    }

    bool CopyForward() {
        for (std::size_t i = 0; i < journal_.rows.size(); ++i) {
            if (asker_.IsStopped())
                return false;
            Show(i, journal_.rows[i]);
            Take(CopyRow(i), /*back=*/false);
        }
        return true;
    }

    RowResult CopyRow(std::size_t index) {
        const JournalRow& row = journal_.rows[index];
        const fs::path from = journal_.SourceOf(row), to = journal_.TargetOf(row);
        RowResult result{index, RowEnd::kMoved, {}};
        const std::optional<struct stat> status = ReadFileStatus(from);
        if (!status)
            result.end = RowEnd::kMissing;
        else if (MarkOf(to) && !row.targetStood)
            result.end = HaveSameBytes(from, to) ? RowEnd::kAlready : RowEnd::kTaken;
        else if (!CopyFileWhole(from, to, &result.error))
            result.end = RowEnd::kFailed;
        else if (!SetFileTimes(to, *status))
            asker_.Warn(Phrase(labels::kTimesNotCopied, {from.native()}));
        return result;
    }

    /// Deletes the copies that are still as they were made.
    bool CopyBack() {
        ends_.assign(journal_.rows.size(), std::nullopt);
        for (std::size_t i = 0; i < journal_.rows.size(); ++i) {
            if (asker_.IsStopped())
                return false;
            const JournalRow& row = journal_.rows[i];
            const fs::path copy = journal_.TargetOf(row);
            const std::optional<FileMark> mark = MarkOf(copy);
            RowResult result{i, RowEnd::kMoved, {}};
            const bool isOurs = wasRunning_ ? !row.targetStood && mark &&
                                                  HaveSameBytes(journal_.SourceOf(row), copy)
                                            : mark == row.mark;
            if (!mark)
                result.end = wasRunning_ ? RowEnd::kAlready : RowEnd::kMissing;
            else if (!isOurs)
                result.end = RowEnd::kChanged;
            else if (::unlink(copy.c_str()) != 0)
                result.end =
                    FailErrno(&result.error, copy.native()) ? RowEnd::kMoved : RowEnd::kFailed;
            Take(result, /*back=*/true);
        }
        return true;
    }

    void Show(std::size_t done, const JournalRow& row) {
        const std::string path = journal_.SourceOf(row).native();
        const std::chrono::duration<double> since = std::chrono::steady_clock::now() - start_;
        asker_.ShowProgress({done + 1, journal_.rows.size(), path, {}, since.count()});
    }

    void Take(const RowResult& result, bool back) {
        ends_[result.row] = result.end;
        if (result.end == RowEnd::kMoved || result.end == RowEnd::kAlready) {
            ++outcome_.renamed;
            return;
        }
        const JournalRow& row = journal_.rows[result.row];
        fs::path path = back ? journal_.TargetOf(row) : journal_.SourceOf(row);
        if (result.end == RowEnd::kStranded)
            path = journal_.TemporaryOf(row);
        const int logRow = result.end == RowEnd::kMissing ? kLogNoFile : kLogRenameFailed;
        std::u16string_view message = labels::kLogRows[logRow];
        if (back && result.end == RowEnd::kChanged)
            message = labels::kRenameChanged;
        else if (back && result.end == RowEnd::kTaken)
            message = labels::kRenameNameTaken;
        const bool storage = result.error.cause == FileError::Cause::kStorage;
        outcome_.failures.push_back({path.native(), message, storage});
        asker_.TellFailure({.path = path.native(),
                            .message = message,
                            .detail = result.error.detail,
                            .storage = storage,
                            .reason = result.error.reason});
        FileError error;
        if (!log_.LogFailure(path, logRow, &error))
            asker_.Warn(Phrase(labels::kLogNotWritten, {log_.File().native()}));
    }

    static bool IsThere(const std::optional<RowEnd>& end) {
        return end == RowEnd::kMoved || end == RowEnd::kAlready;
    }

    /// The record of what can be taken back from here on.
    void Keep(bool back) {
        RenameJournal kept = journal_;
        kept.rows.clear();
        kept.state = back && journal_.mode == Mode::kCopy ? journal_.state : State::kDone;
        for (std::size_t i = 0; i < journal_.rows.size(); ++i) {
            // Back: what stays under its new name. Forward: what has it now.
            const bool isGone = ends_[i] == RowEnd::kMissing;
            if (back ? IsThere(ends_[i]) || isGone : !IsThere(ends_[i]))
                continue;
            JournalRow row = journal_.rows[i];
            if (!back)
                row.mark = MarkOf(journal_.TargetOf(row)).value_or(row.mark);
            kept.rows.push_back(std::move(row));
        }
        FileError error;
        if (kept.rows.empty())
            RemoveJournal(folder_);
        else if (!WriteJournal(kept, folder_, &error))
            asker_.Warn((folder_ / kRenameJournalName).native() + ": " + error.detail);
    }

    void Finish(bool finished, const Label& done, const Label& withErrors) {
        if (!finished) {
            outcome_.end = End::kStopped;
            return;
        }
        EndMessage message;
        message.text = log_.HasLogLines() ? withErrors : done;
        message.logQuestion = labels::kRenameSeeLogAsk;
        if (log_.HasLogLines())
            message.log = log_.File();
        asker_.TellEnd(message);
    }

    RenameJournal journal_;
    fs::path folder_;
    RunLog log_;
    Asker& asker_;
    bool wasRunning_ = false;
    std::vector<std::optional<RowEnd>> ends_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    RenameOutcome outcome_;
};

/// The record in a folder. A folder that has another name or place since still is the one that the
/// record speaks of.
JournalFound FindJournal(const fs::path& folder, RenameJournal& journal) {
    const JournalFound found = ReadJournal(folder, journal);
    if (found != JournalFound::kRead)
        return found;
    const fs::path here = fs::absolute(folder);
    std::error_code ignored;
    if (journal.mode == Mode::kRename)
        journal.sourceFolder = journal.targetFolder = here;
    else if (!fs::equivalent(journal.sourceFolder, here, ignored) &&
             !fs::equivalent(journal.targetFolder, here, ignored))
        return JournalFound::kBroken;
    return found;
}

/// What keeps the work on a record from beginning; nothing where it can.
std::optional<RenameOutcome> RefuseJournal(const fs::path& folder, JournalFound found,
                                           const fs::path& log, FolderLock& lock) {
    if (found == JournalFound::kNone)
        return Refused(Phrase(labels::kRenameNoRun, {folder.native()}));
    if (found == JournalFound::kBroken)
        return Refused(Phrase(labels::kRenameBadJournal, {(folder / kRenameJournalName).native()}));
    if (!CanBeLog(log))
        return Refused(ToUtf8(labels::kIsNoLog));
    if (!lock.Take(folder))
        return Refused(Phrase(labels::kFolderInUse, {folder.native()}));
    return std::nullopt;
}

}  // namespace

std::string JudgePlan(const RenameRequest& request) {
    const bool inPlace = IsInPlace(request);
    std::unordered_map<std::string, std::size_t> sources, targets;
    for (std::size_t i = 0; i < request.rows.size(); ++i) {
        if (request.rows[i].target.empty())
            return ToUtf8(labels::kRenameEmptyTarget);
        const auto [other, isNew] = sources.emplace(request.rows[i].source, i);
        if (!isNew)
            return Phrase(labels::kRenameTwoSources,
                          {request.rows[other->second].source, request.rows[i].source,
                           request.rows[i].target});
    }
    for (std::size_t i = 0; i < request.rows.size(); ++i) {
        const RenameRow& row = request.rows[i];
        const bool stays = StaysAsItIs(row, inPlace);
        if (!stays && !CanBeName(row.target))
            return Phrase(labels::kRenameBadName, {row.source, row.target});
        // A row that stays keeps its name from the others.
        const auto [other, isNew] = targets.emplace(stays ? row.source : row.target, i);
        if (!isNew)
            return Phrase(labels::kRenameTwoSources,
                          {request.rows[other->second].source, row.source, row.target});
    }
    for (const RenameRow& row : request.rows) {
        const bool isInList = inPlace && sources.contains(row.target);
        if (StaysAsItIs(row, inPlace))
            continue;
        if (std::string fault = JudgeTarget(request, row, isInList); !fault.empty())
            return fault;
    }
    return {};
}

RenameOutcome RunRename(const RenameRequest& request, Asker& asker) {
    if (request.rows.empty())
        return {};
    if (std::string fault = JudgePlan(request); !fault.empty())
        return Refused(std::move(fault));
    if (!CanBeLog(request.log))
        return Refused(ToUtf8(labels::kIsNoLog));
    FolderLock lock;
    if (!lock.Take(request.source))
        return Refused(Phrase(labels::kFolderInUse, {request.source.native()}));
    if (!asker.AskYesNo(labels::kRenameAsk))
        return Ended(End::kDeclined);
    const bool inPlace = IsInPlace(request);
    RenameOutcome outcome;
    if (!inPlace) {
        std::error_code reason;
        fs::create_directories(request.target, reason);
        if (reason) {
            errno = reason.value();
            FailErrno(&outcome.error, request.target.native());
            outcome.end = End::kNotBegun;
            outcome.message = request.target.native();
            return outcome;
        }
    }
    RenameJournal journal = PlanJournal(request, inPlace);
    const fs::path folder = JournalFolder(journal);
    return JournalRun(std::move(journal), folder, request.log, asker).Forward(labels::kRenameDone);
}

bool HasUnfinishedRename(const fs::path& folder) {
    RenameJournal journal;
    return FindJournal(folder, journal) == JournalFound::kRead && journal.state != State::kDone;
}

RenameOutcome ResumeRename(const fs::path& folder, const fs::path& log, Asker& asker) {
    RenameJournal journal;
    FolderLock lock;
    const JournalFound found = FindJournal(folder, journal);
    if (std::optional<RenameOutcome> refused = RefuseJournal(folder, found, log, lock))
        return std::move(*refused);
    static constexpr Label kChoices[] = {labels::kRenameFinish, labels::kRenameTakeBack,
                                         labels::kRenameLeave};
    constexpr std::size_t kFinish = 0, kLeave = 2;
    const std::size_t choice =
        asker.Choose({.text = ToUtf16(Phrase(labels::kRenameUnfinishedAsk, {folder.native()})),
                      .choices = kChoices,
                      .safe = kLeave});
    if (choice == kLeave)
        return Ended(End::kDeclined);
    const bool wasUndoing = journal.state == State::kUndoing;
    JournalRun run(std::move(journal), folder, log, asker);
    return (choice == kFinish) != wasUndoing ? run.Forward(labels::kRenameFinished) : run.Back();
}

RenameOutcome UndoRename(const fs::path& folder, const fs::path& log, Asker& asker) {
    RenameJournal journal;
    FolderLock lock;
    const JournalFound found = FindJournal(folder, journal);
    if (std::optional<RenameOutcome> refused = RefuseJournal(folder, found, log, lock))
        return std::move(*refused);
    if (!asker.AskYesNo(labels::kRenameUndoAsk))
        return Ended(End::kDeclined);
    return JournalRun(std::move(journal), folder, log, asker).Back();
}

}  // namespace velloran
