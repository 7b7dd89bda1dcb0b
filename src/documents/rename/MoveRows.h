#pragma once

// The moves of a record, forward or back. Where each file is just now is looked up by its mark, so
// that the same work begins, goes on behind a kill, and turns back.

#include <cstddef>
#include <functional>

#include "documents/rename/RenameJournal.h"

namespace velloran {

class Asker;

/// How one row ended.
enum class RowEnd {
    kMoved,
    kAlready,  // it was there
    kMissing,  // its file is gone
    kChanged,  // a file of the name is there, and is another
    kTaken,    // another file has the name; the row's file is where it was
    kFailed,
    kStranded,  // neither name could be had: it waits under its temporary one
};

struct RowResult {
    std::size_t row = 0;
    RowEnd end = RowEnd::kMoved;
    FileError error;
};

struct MoveOptions {
    bool back = false;  // to the sources; else to the targets
    std::function<bool()> isStopped;
    std::function<void(std::size_t done, const JournalRow& row)> progress;
    std::function<void()> tidying;  // temporary names are about to be given up
};

/// Moves all rows of a renaming or a move; each row comes to `told` once, but for those that a stop
/// left where they were. False after a stop.
bool MoveRows(const RenameJournal& journal, const MoveOptions& options,
              const std::function<void(const RowResult&)>& told);

/// Whether a row changes nothing: the same name, ignoring case, in one folder.
bool IsIdle(const RenameJournal& journal, const JournalRow& row);

}  // namespace velloran
