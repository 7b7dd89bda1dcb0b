#pragma once

// The project file of a folder: made, read and written. Who writes it holds the folder's lock.

#include <filesystem>
#include <string>
#include <string_view>

#include "documents/book/BookProject.h"
#include "io/FileError.h"

namespace velloran {

class Asker;

inline constexpr std::string_view kProjectFileName = "VelloranPro.prj";

enum class BookEnd {
    kDone,
    kNoFolder,    // the source is none
    kNoProject,   // there is no project file
    kUnreadable,  // there is one, and it cannot be read; it stays as it is
    kFailed,      // could not be written; the file of before stands
};

struct BookOutcome {
    BookEnd end = BookEnd::kDone;
    std::u16string message;  // in the system's words; empty where done
    FileError error;
};

/// Reads the project of a folder and names its rows. Rows whose pictures are not there are left out
/// and stand in `missing`.
BookOutcome LoadProject(const std::filesystem::path& folder, BookProject& project);

/// The project, or a fresh list of the folder's pictures where there is none.
BookOutcome OpenSourceFolder(const std::filesystem::path& folder, BookProject& project);

/// Writes the project, whole or not at all; the file of before stays beside it with "~" behind its
/// name. An empty list writes nothing, unless `evenEmpty`. The asker is told of rows that the file
/// loses because their pictures are away; after that they count as gone.
BookOutcome SaveProject(BookProject& project, bool evenEmpty, Asker& asker);

std::filesystem::path ProjectFileOf(const std::filesystem::path& folder);

}  // namespace velloran
