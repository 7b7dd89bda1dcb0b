#pragma once

// A renaming. The whole plan is judged before anything moves; a record of it is written first, so
// that a run that is killed can be finished or taken back; no move takes the place of a file
// unasked. One run works on a folder at a time.

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "documents/rename/RenameList.h"
#include "io/FileError.h"

namespace velloran {

class Asker;

struct RenameRequest {
    std::filesystem::path source, target;  // folders; an empty target is the source
    std::vector<RenameRow> rows;
    bool move = false;       // into another folder: the sources are deleted
    bool overwrite = false;  // targets that are files outside the list are replaced
    std::filesystem::path log;
};

struct RenameFailure {
    std::string path;
    std::u16string_view message;
    bool storage = false;  // another try may help
};

struct RenameOutcome {
    enum class End {
        kDone,
        kRefused,   // `message` says why; nothing was touched
        kDeclined,  // by the user
        kNotBegun,  // the record could not be written: `error`; nothing was touched
        kStopped,
    };
    End end = End::kDone;
    std::string message;  // UTF-8
    FileError error;
    std::size_t renamed = 0;
    std::vector<RenameFailure> failures;
};

/// What is wrong with the plan, of the first row at fault: two rows with one target, a name that
/// is none, a target that is a folder or, without `overwrite`, a file outside the list. Empty
/// where nothing is. An empty target is told first.
std::string JudgePlan(const RenameRequest& request);

/// The run: judges, asks, records, moves. Sources that have gone are logged and passed over.
RenameOutcome RunRename(const RenameRequest& request, Asker& asker);

/// Whether the last run in the folder, or the taking back of one, was killed before its end.
bool HasUnfinishedRename(const std::filesystem::path& folder);

/// Asks what is to become of an unfinished run, and finishes it or takes it back.
RenameOutcome ResumeRename(const std::filesystem::path& folder, const std::filesystem::path& log,
                           Asker& asker);

/// Asks, then takes the last run of the folder back: files that are still as it left them get
/// their former names, unchanged copies are deleted. What cannot be taken back is told and stays
/// in the record.
RenameOutcome UndoRename(const std::filesystem::path& folder, const std::filesystem::path& log,
                         Asker& asker);

}  // namespace velloran
