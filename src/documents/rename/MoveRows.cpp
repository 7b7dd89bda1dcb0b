#include "documents/rename/MoveRows.h"

#include <unistd.h>

#include <utility>
#include <vector>

#include "documents/rename/MoveFile.h"
#include "text/Text.h"

namespace velloran {

namespace {

namespace fs = std::filesystem;

class RowMover {
 public:
    RowMover(const RenameJournal& journal, const MoveOptions& options,
             const std::function<void(const RowResult&)>& told)
        : journal_(journal), options_(options), told_(told) {}

    bool Run() {
        const std::size_t count = journal_.rows.size();
        bool stopped = false;
        for (std::size_t i = 0; i < count && !stopped; ++i) {
            stopped = options_.isStopped && options_.isStopped();
            // Back goes from the end, so that a chain unwinds as it was wound.
            if (!stopped)
                Move(options_.back ? count - 1 - i : i, i);
        }
        Tidy();
        return !stopped;
    }

 private:
    fs::path FromOf(const JournalRow& row) const {
        return options_.back ? journal_.TargetOf(row) : journal_.SourceOf(row);
    }
    fs::path ToOf(const JournalRow& row) const {
        return options_.back ? journal_.SourceOf(row) : journal_.TargetOf(row);
    }
    static bool Is(const fs::path& file, const FileMark& mark) { return MarkOf(file) == mark; }

    void Tell(std::size_t row, RowEnd end, FileError error = {}) {
        told_({row, end, std::move(error)});
    }

    void Move(std::size_t index, std::size_t done) {
        const JournalRow& row = journal_.rows[index];
        if (options_.progress)
            options_.progress(done, row);
        const fs::path from = FromOf(row), to = ToOf(row), temporary = journal_.TemporaryOf(row);
        if (Is(temporary, row.mark))
            waiting_.push_back(index);
        else if (Is(from, row.mark))
            Start(index, from, to, temporary);
        else if (Is(to, row.mark) || IsMovedCopy(from, to, row.mark))
            Tell(index, RowEnd::kAlready);
        else
            Tell(index, MarkOf(from) ? RowEnd::kChanged : RowEnd::kMissing);
    }

    void Start(std::size_t index, const fs::path& from, const fs::path& to,
               const fs::path& temporary) {
        FileError error;
        MoveResult result = MoveOneFile(from, to, /*replace=*/false, &error);
        if (result == MoveResult::kTaken && IsCopiedAlready(from, to))
            result = ::unlink(from.c_str()) == 0 ? MoveResult::kMoved : MoveResult::kFailed;
        else if (result == MoveResult::kTaken && MayReplace(journal_.rows[index]))
            result = MoveOneFile(from, to, /*replace=*/true, &error);
        if (result == MoveResult::kTaken) {
            // A later row may move that file away.
            result = MoveOneFile(from, temporary, /*replace=*/false, &error);
            if (result == MoveResult::kMoved) {
                waiting_.push_back(index);
                return;
            }
        }
        Tell(index, result == MoveResult::kMoved ? RowEnd::kMoved : RowEnd::kFailed,
             std::move(error));
    }

    /// A move between disks that was killed between the copy and the removal of the source.
    bool IsCopiedAlready(const fs::path& from, const fs::path& to) const {
        return journal_.mode == RenameJournal::Mode::kMove && HaveSameBytes(from, to);
    }
    /// The same, killed behind the removal: the copy has another number on its disk.
    bool IsMovedCopy(const fs::path& from, const fs::path& to, const FileMark& mark) const {
        const std::optional<FileMark> copy = MarkOf(to);
        return journal_.mode == RenameJournal::Mode::kMove && copy && !MarkOf(from) &&
               copy->size == mark.size && copy->changed == mark.changed;
    }

    void Tidy() {
        if (!waiting_.empty() && options_.tidying)
            options_.tidying();
        for (const std::size_t index : waiting_)
            GiveName(index);
    }

    /// The row's file from its temporary name to its own; where that is taken, back to the old one.
    void GiveName(std::size_t index) {
        const JournalRow& row = journal_.rows[index];
        const fs::path temporary = journal_.TemporaryOf(row);
        FileError error;
        const MoveResult result = MoveOneFile(temporary, ToOf(row), MayReplace(row), &error);
        if (result == MoveResult::kMoved) {
            Tell(index, RowEnd::kMoved);
            return;
        }
        FileError ignored;
        const bool isBack =
            MoveOneFile(temporary, FromOf(row), /*replace=*/false, &ignored) == MoveResult::kMoved;
        Tell(index,
             !isBack                        ? RowEnd::kStranded
             : result == MoveResult::kTaken ? RowEnd::kTaken
                                            : RowEnd::kFailed,
             std::move(error));
    }

    /// A file outside the list that the user gave up; never one of the list, which a failed row
    /// may have left there.
    bool MayReplace(const JournalRow& row) const {
        if (options_.back || !row.targetStood)
            return false;
        const std::optional<FileMark> standing = MarkOf(journal_.TargetOf(row));
        if (!standing)
            return false;
        for (const JournalRow& other : journal_.rows)
            if (other.mark == *standing)
                return false;
        return true;
    }

    const RenameJournal& journal_;
    const MoveOptions& options_;
    const std::function<void(const RowResult&)>& told_;
    std::vector<std::size_t> waiting_;
};

}  // namespace

bool MoveRows(const RenameJournal& journal, const MoveOptions& options,
              const std::function<void(const RowResult&)>& told) {
    return RowMover(journal, options, told).Run();
}

bool IsIdle(const RenameJournal& journal, const JournalRow& row) {
    return journal.mode == RenameJournal::Mode::kRename &&
           EqualIgnoringCase(ToUtf16(row.source), ToUtf16(row.target));
}

}  // namespace velloran
