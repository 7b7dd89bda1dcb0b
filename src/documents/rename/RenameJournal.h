#pragma once

// The record of a renaming, beside the files that it renames: written before the first file moves,
// so that a run that was killed can be finished or taken back, and kept behind it, so that it can
// be taken back later. Files are known again by their number on the disk, their size and the time
// of their last change, which a move leaves alone.

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "io/FileError.h"

namespace velloran {

inline constexpr std::string_view kRenameJournalName = ".velloran-rename";

struct FileMark {
    std::uint64_t device = 0, number = 0, size = 0;
    std::int64_t changed = 0;  // nanoseconds since 1970
    bool operator==(const FileMark&) const = default;
};

/// Of the file itself, links not followed; nothing where there is none.
std::optional<FileMark> MarkOf(const std::filesystem::path& file);

struct JournalRow {
    std::string source, temporary, target;  // names in their folders
    FileMark mark;                          // of the file; of the copy, once a copying run is done
    bool targetStood = false;  // another file had the target's name, and the user gave it up
};

struct RenameJournal {
    enum class State { kRunning, kDone, kUndoing };
    enum class Mode { kRename, kMove, kCopy };
    State state = State::kRunning;
    Mode mode = Mode::kRename;
    std::filesystem::path sourceFolder, targetFolder;  // absolute
    std::vector<JournalRow> rows;

    std::filesystem::path SourceOf(const JournalRow& row) const {
        return sourceFolder / row.source;
    }
    std::filesystem::path TargetOf(const JournalRow& row) const {
        return targetFolder / row.target;
    }
    /// Where a file waits for its target's name: in the target folder, so that the last move of a
    /// run is one within a folder.
    std::filesystem::path TemporaryOf(const JournalRow& row) const {
        return targetFolder / row.temporary;
    }
};

std::string JournalText(const RenameJournal& journal);
/// Nothing for what is no whole record.
std::optional<RenameJournal> ParseJournal(std::string_view text);

bool WriteJournal(const RenameJournal& journal, const std::filesystem::path& folder,
                  FileError* error);

enum class JournalFound { kNone, kBroken, kRead };
JournalFound ReadJournal(const std::filesystem::path& folder, RenameJournal& journal);
void RemoveJournal(const std::filesystem::path& folder);

}  // namespace velloran
