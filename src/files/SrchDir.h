#pragma once

// Walking a folder tree: what all tools share that do something to each file of a tree. A tool
// derives from CSrchDir and says what to do with a file that is found. All files of a folder come
// before its subfolders, both in natural order, so that a walk is the same on every disk. Links
// are followed; a loop of links ends. Names that are no text are paths like others.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace velloran {

/// What the walk found of an entry.
using FindData = std::filesystem::directory_entry;

/// The dialog or program that a walk works for.
class WalkOwner {
 public:
    virtual ~WalkOwner() = default;
    /// The user's stop flag.
    virtual bool IsStopRequested() const { return false; }
    /// The test that CGetFiles applies.
    virtual bool AcceptsFile(const std::filesystem::path&) { return true; }
};

class CSrchDir {
 public:
    /// Filters are cut at this length, in UTF-16 units.
    static constexpr std::size_t kFilterLength = 260;
    /// How often one walk enters the same folder through links.
    static constexpr int kMaxVisits = 16;

    CSrchDir() = default;
    virtual ~CSrchDir() = default;
    CSrchDir(const CSrchDir&) = delete;
    CSrchDir& operator=(const CSrchDir&) = delete;

    /// `filter` is cut at each ";" and "*", so that "*.jpg;*.jpeg" and ".jpg;.jpeg" accept these
    /// two extensions; with an empty one nothing matches. `excluded` is a folder not to enter,
    /// empty for none. Clears the stop flag.
    virtual void SetUp(std::u16string_view filter, WalkOwner* owner, bool recursive,
                       const std::filesystem::path& excluded = {});

    /// Goes through the folder. Paths begin with `folder` as it is given.
    void Walk(const std::filesystem::path& folder);

    /// Ends the walk: no further file or folder is told.
    void Stop() { stopped_ = true; }
    bool IsStopped() const { return stopped_; }

    /// Whether the name's extension is accepted, ignoring case; a name without one never is.
    bool MatchesExtension(const FindData& findData) const {
        return MatchesExtension(findData.path());
    }
    bool MatchesExtension(const std::filesystem::path& path) const;

 protected:
    virtual void OnFile(const std::filesystem::path& path, const FindData& findData) = 0;
    /// Before and after the walk of a subfolder.
    virtual void OnFolderEnter(const std::filesystem::path&, const FindData&) {}
    virtual void OnFolderLeave(const std::filesystem::path&, const FindData&) {}
    /// After the files of a folder, before its subfolders; not when the walk was stopped.
    virtual void OnFolderDone(const std::filesystem::path&) {}
    /// How many files of a folder the filter left out, where there are any; after its files.
    virtual void OnOtherFiles(const std::filesystem::path&, std::size_t) {}
    /// A folder, or the rest of one, that could not be listed; the walk goes on behind it.
    virtual void OnFolderUnreadable(const std::filesystem::path&, const std::error_code&) {}

    WalkOwner* Owner() const { return owner_; }

 private:
    using FolderIdentity = std::pair<std::uint64_t, std::uint64_t>;  // device and inode

    void WalkFolder(const std::filesystem::path& folder);
    void WalkSubfolders(const std::filesystem::path& folder);
    bool IsExcluded(const std::filesystem::path& folder) const;
    bool Enter(const std::filesystem::path& folder);

    std::vector<std::string> extensions_;
    std::filesystem::path excluded_;
    WalkOwner* owner_ = nullptr;
    std::atomic<bool> stopped_{false};
    bool recursive_ = false;
    std::vector<FolderIdentity> open_;      // the folders from the root to the current one
    std::map<FolderIdentity, int> visits_;  // of the current walk
};

}  // namespace velloran
