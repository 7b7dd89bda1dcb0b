#pragma once

// One file of a batch run: read, judge its colours, enhance, name, save.

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "batch/BatchPlan.h"
#include "io/FileError.h"
#include "pipeline/Findings.h"

namespace velloran {

class RunSettings;
struct Settings;
class TargetFolders;

/// What all files of a run share.
struct ConvertRequest {
    const BatchPlan* plan = nullptr;
    TargetFolders* folders = nullptr;
    RunSettings* settings = nullptr;
    BatchTarget names;
    bool skipColor = false;
    bool strict = false;        // a damaged source fails
    bool strip = false;         // leaves profile, EXIF and XMP behind
    bool skipExisting = false;  // a page that would replace its own source stays as it is
    bool wantsSure = false;     // what is found is also judged
    bool isAlone = false;       // one file at a time: what a page takes in memory is not asked for
    const std::atomic<bool>* stop = nullptr;  // looked at between steps
    /// Told the stage of the file as it changes, on the thread that converts; may be empty.
    std::function<void(std::string_view source, std::u16string_view stage)> stage;
};

struct FileOutcome {
    enum class End { kConverted, kFailed, kStopped, kSkipped };
    End end = End::kStopped;
    std::filesystem::path failedPath;  // as the log names it: the source, or the target
    int logRow = 0;
    FileError error;
    bool writeFailed = false;
    std::string failedFolder;  // to which nothing can be written; empty where the file failed
    std::string evadedTo;      // the result's path, when its name turned out to be another source's
    FoundSure sure;            // of what was searched, where that is wanted
    std::string damage;        // why the source could be read in part only; empty for a whole one
    int pictures = 1;          // pages or frames in the source, of which the first was converted
    bool timesLost = false;    // the times could not be set
    std::int64_t bytesIn = 0, bytesOut = 0;
};

/// A file that was begun: what it takes in memory is known.
struct PageWork {
    std::int64_t need = 0;  // bytes
    std::function<FileOutcome()> run;
};

/// Whether the settings take a scan for two pages.
bool IsDoublePage(const Settings& settings);

/// Looks at a file; what it gives converts it. Neither throws. A failure leaves source and target
/// as they were. Request and file must outlive the work.
PageWork BeginFile(const ConvertRequest& request, const PlannedFile& file);

}  // namespace velloran
