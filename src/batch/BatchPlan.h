#pragma once

// What a run is going to convert, fixed before the first file is written: the sources in the order
// of the walk, and a name for each result that no other source's result takes. A result never
// takes the place of another source either, so that a run over one folder reads every source as
// the user left it.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_set>
#include <vector>

#include "batch/BatchRules.h"

namespace velloran {

struct PlannedFile {
    std::string source;            // path as the walk or the list gave it
    std::uint32_t relativeAt = 0;  // where in `source` the part begins that the target repeats
    std::int32_t number = 1;       // of the target's name; 1 is none
    std::int32_t spareNumber = 0;  // taken when the name turns out to be another source's; 0: none
};

struct PlanRequest {
    std::filesystem::path source, target;
    std::vector<std::filesystem::path> list;  // chosen files; else the walk of `source` finds them
    bool useList = false;
    std::u16string_view filter;
    bool recursive = true;
    bool skipColor = false;  // colour pages keep their own extension
    BatchTarget names;
};

class BatchPlan {
 public:
    struct Listener {
        std::function<bool()> isStopped;  // polled for each file found
        /// A later source whose name was taken by an earlier one; all three as paths.
        std::function<void(const std::string& later, const std::string& earlier,
                           const std::string& name)>
            renamed;
        std::function<void(const std::filesystem::path& folder, const std::error_code& reason)>
            unreadable;
    };

    /// Finds the files and names their targets. False when stopped; the plan is then empty.
    bool Make(const PlanRequest& request, const Listener& listener);

    std::size_t Size() const { return files_.size(); }
    const PlannedFile& At(std::size_t index) const { return files_[index]; }
    bool IsSameFolder() const { return sameFolder_; }

    /// The folder and name of a file's result without its extension.
    std::string TargetWithoutExtension(const PlannedFile& file) const;

    /// The path of a file's result; `extension` comes with its dot, or is empty. Evades another
    /// source of the run by the spare number, which `evaded` then tells.
    std::filesystem::path TargetPath(const PlannedFile& file, std::string_view extension,
                                     bool* evaded = nullptr) const;

 private:
    class Namer;
    friend class Namer;

    std::string TargetFolder(const PlannedFile& file) const;
    std::string TargetStemPath(const PlannedFile& file, int number) const;
    /// Whether the path names a source of the run other than `file`.
    bool IsAnotherSource(const PlannedFile& file, const std::string& path) const;
    void NoteSources(const std::filesystem::path& source);

    std::vector<PlannedFile> files_;
    std::string target_;
    bool sameFolder_ = false;
    // Sources by resolved folder and name; empty where no result can meet a source.
    std::unordered_set<std::string> sources_;
};

/// Whether two folders are the same: equal names, ignoring case, or one folder by two ways.
bool IsSameFolder(const std::filesystem::path& a, const std::filesystem::path& b);

}  // namespace velloran
