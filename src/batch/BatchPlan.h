#pragma once

// What a run is going to convert, fixed before the first file is written: the sources in the order
// of the walk, and a name for each result that no other source's result takes. A result never
// takes the place of another source either, by whatever links it would get there, so that a run
// over one folder reads every source as the user left it.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_map>
#include <vector>

#include "batch/BatchRules.h"
#include "files/FileIdentity.h"

namespace velloran {

struct PlannedFile {
    std::string source;            // path as the walk or the list gave it
    std::uint32_t relativeAt = 0;  // where in `source` the part begins that the target repeats
    std::int32_t number = 1;       // of the target's name; 1 is none
    std::int32_t page = 0;         // of those in the source; 0: the only one, its name tells none
    std::int32_t spareNumber = 0;  // taken when the name turns out to be another source's; 0: none
    std::int8_t half = 0;          // of a double page, in reading order: 1 or 2; 0 is the whole
    /// Bits by the place of an extension among those that results may take: names that are another
    /// source's, and the one that is the source itself.
    std::uint16_t meetsOther = 0, meetsItself = 0;
};

struct PlanRequest {
    std::filesystem::path source, target;
    std::vector<std::filesystem::path> list;  // chosen files; else the walk of `source` finds them
    bool useList = false;
    std::u16string_view filter;
    bool recursive = true;
    bool skipColor = false;     // colour pages keep their own extension
    bool skipExisting = false;  // leaves sources whose targets stand already and are not older
    bool bothHalves = false;    // each source becomes two files: NAME_1 and NAME_2
    bool allPages = false;      // a result for each page of a source, numbered
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

    /// Sources that were left because their targets stand already.
    std::size_t CountSkipped() const { return skipped_; }
    /// Files of the walk that the filter left out.
    std::size_t CountOtherTypes() const { return otherTypes_; }
    /// Sources that their own results replace, or may replace where extensions are automatic.
    std::size_t CountReplaced() const;
    /// Results in a source's own folder that take, or may take, another name than the source's.
    std::size_t CountNewNames() const { return newNames_; }

    /// Whether the path leads to one of the files that were found.
    bool IsSource(const std::filesystem::path& path) const;

    /// The folder and name of a file's result without its extension.
    std::string TargetWithoutExtension(const PlannedFile& file) const;

    /// The folder of a file's result, with a slash behind it.
    std::string TargetFolder(const PlannedFile& file) const;
    const std::string& TargetRoot() const { return target_; }

    /// Whether the result with this extension takes the place of its own source.
    bool IsItself(const PlannedFile& file, std::string_view extension) const;

    /// The path of a file's result; `extension` comes with its dot, or is empty. Evades another
    /// source of the run by the spare number, which `evaded` then tells.
    std::filesystem::path TargetPath(const PlannedFile& file, std::string_view extension,
                                     bool* evaded = nullptr) const;

 private:
    class Namer;
    class Skipper;
    friend class Namer;
    friend class Skipper;

    bool FindSources(const PlanRequest& request, const Listener& listener);
    bool SplitIntoPages(const Listener& listener);
    void FindExtensions(const PlanRequest& request);
    void DoubleFiles();
    void NoteSources();
    bool HasBit(unsigned bits, const PlannedFile& file, std::string_view extension) const;
    void CountNames();
    std::string_view ExtensionAt(const PlannedFile& file, std::size_t place) const;
    std::size_t CountPlaces() const { return extensions_.size() + (skipColor_ ? 1 : 0); }
    static std::string TargetName(const PlannedFile& file, int number);
    std::string TargetStemPath(const PlannedFile& file, int number) const;

    static constexpr std::size_t kNobody = static_cast<std::size_t>(-1);

    std::vector<PlannedFile> files_;
    std::string target_;
    bool sameFolder_ = false, skipColor_ = false;
    std::vector<std::string> extensions_;  // with dots, that results may take
    std::size_t likely_ = 0;               // bits of those that the rule names
    std::size_t skipped_ = 0, otherTypes_ = 0, newNames_ = 0;
    std::unordered_map<FileIdentity, std::size_t> sources_;  // the first that leads there
};

/// Whether two folders are the same: equal names, ignoring case, or one folder by two ways.
bool IsSameFolder(const std::filesystem::path& a, const std::filesystem::path& b);

}  // namespace velloran
