#pragma once

// The run of a book: every row to a page in the target folder, several at once; results and log are
// those of a serial run. What a page's run found stays with its row.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "batch/BatchEngine.h"
#include "documents/book/BookProject.h"

namespace velloran {

class Asker;

struct BookConvertRequest {
    int jobs = 0;  // pages in flight; 0: the number of processors
    std::filesystem::path log = {};
    std::filesystem::path review = {};  // list of findings, least sure first; or empty
};

struct BookConvertOutcome {
    enum class End {
        kDone,
        kNothing,   // no rows
        kRefused,   // `message`, and `path` where one thing is at fault; nothing was touched
        kNoTarget,  // the target folder could not be made or emptied
        kDeclined,  // the user did not want the target emptied
        kStopped,
    };
    End end = End::kDone;
    std::u16string message;
    std::string path;
    FileError error;
    std::size_t files = 0, converted = 0;
    std::vector<BatchFailure> failures;
    std::vector<std::string> damaged;
    std::int64_t bytesIn = 0, bytesOut = 0;
    double seconds = 0;
    bool hasFound = false;  // rows took values that their runs found: the project wants saving
};

/// Judges, asks, empties the target folder of its files (never of folders, never through a link),
/// converts, and copies the side files of the book.
BookConvertOutcome ConvertAll(BookProject& project, const BookConvertRequest& request,
                              Asker& asker);

/// Why the project's target folder cannot be used; empty where it can. One that is the source, lies
/// above or in it, or holds a file of the list would lose what it holds.
std::u16string RefuseTargetFolder(const BookProject& project);

/// Why prefix or suffix cannot be part of names; empty where they can.
std::u16string RefuseNameParts(const BookProject& project);

}  // namespace velloran
