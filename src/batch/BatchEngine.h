#pragma once

// Batch conversion without its window: the enhancement over a source folder tree into a target
// folder tree, or over chosen files. The windows and the command line drive this engine.
//
// All callbacks come on the thread that called RunBatch. The engine shows and asks nothing itself.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "io/FileError.h"
#include "params/Settings.h"

namespace velloran {

struct BatchRequest {
    std::filesystem::path source, target;
    /// With `useList` the chosen files, of whatever type. Without a source folder that of the
    /// first file is taken; the result of a file from outside it goes into the target folder.
    std::vector<std::filesystem::path> list;
    bool useList = false;
    Settings settings;             // what to do with each page, which files, and their names
    bool skipColor = false;        // colour pages are copied
    bool keepDpi = false;          // results take the resolution of their sources
    bool skipExisting = false;     // leaves sources whose targets stand and are not older
    bool strict = false;           // damaged sources count as failed
    bool eachPage = false;         // what is found on a page is used for that page alone
    bool bothHalves = false;       // double pages become two files; implies eachPage
    bool strip = false;            // results carry no profile, EXIF or XMP
    bool allPages = false;         // a result for each page of a source, NAME_0001 and so on
    int jobs = 0;                  // files in flight; 0: the number of processors
    std::int64_t memory = 0;       // bytes that pages in flight may take; 0: what is free
    std::filesystem::path log;     // empty: the program's own
    std::filesystem::path review;  // list of findings, least sure first (ReviewList.h); or empty
    std::atomic<bool>* stop = nullptr;  // may be set by anyone at any time; null for none
};

struct BatchFailure {
    std::string path = {};             // as the bytes of the disk: a source, a target or a folder
    std::string source = {};           // of a target that could not be written; else empty
    std::u16string_view message = {};  // of the run log
    std::string detail = {};           // English, from the library or the system; may be empty
    bool storage = false;              // a result that could not be written; another try may help
    FileReason reason = FileReason::kUnknown;
};

struct BatchProgress {
    std::size_t done = 0, total = 0;  // files behind the run, converted or not
    std::string_view path = {};       // of the file that changed last
    std::u16string_view stage = {};   // "读取", a step of the enhancement, "存盘"
    double seconds = 0;               // since the first file began
};

/// What a run asks before it begins: sources are going to be replaced.
struct ReplaceQuestion {
    bool isSameFolder = false;
    std::size_t replaced = 0;  // sources that their results replace, at most
    std::size_t newNames = 0;  // results that come beside the sources under other names
    bool isExact = true;       // false: the types of the results, and so `newNames`, are at most
    std::u16string text;       // in the system's words
};

struct BatchEvents {
    std::function<bool(const ReplaceQuestion&)> replaceSources;  // true: the run goes on
    std::function<void(std::u16string_view)> status;             // "统计文件数", and empty
    std::function<void(const BatchProgress&)> progress;
    std::function<void(const BatchFailure&)> failed;  // in the order of the walk; a folder once
    std::function<void(const std::string&)> warning;  // English
    std::function<bool()> poll;                       // true asks for a stop
};

struct BatchResult {
    enum class End {
        kDone,
        kRefused,   // `message` says why, `path` of what; nothing was read or written
        kNothing,   // no files: `message` says so
        kDeclined,  // the user did not want to replace the sources
        kStopped,
    };
    End end = End::kDone;
    std::u16string message;     // the system's own; at the end with the two counts
    std::string path;           // of a refusal, where one file is the cause
    ReplaceQuestion question;   // of kDeclined
    bool offersLog = false;     // a window asks labels::kSeeLogAsk behind the message
    Settings settings;          // as they stand after the run: limited, and with what it found
    std::filesystem::path log;  // of this run, where something was logged
    std::size_t files = 0, converted = 0;
    std::size_t skipped = 0;           // sources left because their targets stand already
    std::size_t otherTypes = 0;        // files that the filter left out
    std::vector<std::string> damaged;  // sources that could be read in part
    std::vector<BatchFailure> failures;
    std::int64_t bytesIn = 0, bytesOut = 0;
    double seconds = 0;
};

/// A whole run.
BatchResult RunBatch(const BatchRequest& request, const BatchEvents& events);

/// What RunBatch would convert: `planned` is told each source and its target, whose extension is
/// ".*" where it is chosen for each file. Writes and asks nothing.
BatchResult PlanBatch(
    const BatchRequest& request, const BatchEvents& events,
    const std::function<void(const std::string& source, const std::string& target)>& planned);

}  // namespace velloran
