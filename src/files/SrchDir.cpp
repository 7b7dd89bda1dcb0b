#include "files/SrchDir.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "files/NaturalOrder.h"
#include "io/Leftovers.h"
#include "text/Text.h"

namespace velloran {

namespace {

namespace fs = std::filesystem;

/// The pieces of a filter between its ";" and "*".
std::vector<std::string> CutFilter(std::u16string_view filter) {
    std::vector<std::string> pieces;
    while (!filter.empty()) {
        const std::size_t end = std::min(filter.find_first_of(u";*"), filter.size());
        if (end > 0)
            pieces.push_back(ToUtf8(filter.substr(0, end)));
        filter.remove_prefix(std::min(end + 1, filter.size()));
    }
    return pieces;
}

/// A form in which two spellings of a folder are the same text.
std::string ComparableFolder(const fs::path& folder) {
    std::error_code ignored;
    fs::path whole = fs::absolute(folder, ignored);
    std::string text = LowerCase((ignored ? folder : whole).lexically_normal().native());
    while (text.size() > 1 && text.back() == '/')
        text.pop_back();
    return text;
}

/// Appends the entries that `wanted` takes, in natural order. What was listed before an error
/// counts.
template <typename Wanted>
std::error_code ListFolder(const fs::path& folder, Wanted wanted, std::vector<FindData>& entries) {
    std::error_code code;
    for (fs::directory_iterator it(folder, code), end; !code && it != end; it.increment(code))
        if (wanted(*it))
            entries.push_back(*it);
    std::sort(entries.begin(), entries.end(), [](const FindData& a, const FindData& b) {
        return NaturalLess()(a.path().filename(), b.path().filename());
    });
    return code;
}

bool IsFolder(const FindData& entry) {
    std::error_code ignored;  // an entry that cannot be looked at is told as a file
    return entry.is_directory(ignored);
}

}  // namespace

void CSrchDir::SetUp(std::u16string_view filter, WalkOwner* owner, bool recursive,
                     const fs::path& excluded) {
    extensions_ = CutFilter(filter.substr(0, kFilterLength));
    excluded_ = excluded;
    owner_ = owner;
    recursive_ = recursive;
    stopped_ = false;
}

void CSrchDir::Walk(const fs::path& folder) {
    open_.clear();
    visits_.clear();
    WalkFolder(folder);
}

bool CSrchDir::MatchesExtension(const fs::path& path) const {
    const std::string extension = path.extension().native();
    if (extension.empty())
        return false;
    const std::string lower = LowerCase(extension);
    return std::any_of(extensions_.begin(), extensions_.end(),
                       [&](const std::string& accepted) { return LowerCase(accepted) == lower; });
}

void CSrchDir::WalkFolder(const fs::path& folder) {
    if (stopped_ || IsExcluded(folder) || !Enter(folder))
        return;
    std::vector<FindData> files;
    std::size_t others = 0;
    const auto isWanted = [&](const FindData& entry) {
        if (IsFolder(entry))
            return false;
        const bool matches = MatchesExtension(entry);
        others += matches || IsTemporaryName(entry.path().filename().native()) ? 0 : 1;
        return matches;
    };
    const std::error_code code = ListFolder(folder, isWanted, files);
    if (code)
        OnFolderUnreadable(folder, code);
    for (const FindData& file : files) {
        if (stopped_)
            break;
        OnFile(file.path(), file);
    }
    files = {};
    if (!stopped_ && others > 0)
        OnOtherFiles(folder, others);
    if (!stopped_)
        OnFolderDone(folder);
    // The listing anew: a tool may have made folders out of the files.
    if (recursive_ && !stopped_)
        WalkSubfolders(folder);
    open_.pop_back();
}

void CSrchDir::WalkSubfolders(const fs::path& folder) {
    std::vector<FindData> subfolders;
    ListFolder(folder, IsFolder, subfolders);  // an error was told with the files
    for (const FindData& subfolder : subfolders) {
        if (stopped_)
            return;
        OnFolderEnter(subfolder.path(), subfolder);
        WalkFolder(subfolder.path());
        OnFolderLeave(subfolder.path(), subfolder);
    }
}

bool CSrchDir::IsExcluded(const fs::path& folder) const {
    if (excluded_.empty())
        return false;
    if (ComparableFolder(folder) == ComparableFolder(excluded_))
        return true;
    // The same folder by another way, as through a link.
    std::error_code ignored;
    return fs::equivalent(folder, excluded_, ignored);
}

/// Notes the folder as open; false for a loop of links and for what cannot be entered.
bool CSrchDir::Enter(const fs::path& folder) {
    struct stat status {};
    if (stat(folder.c_str(), &status) != 0) {
        OnFolderUnreadable(folder, std::error_code(errno, std::generic_category()));
        return false;
    }
    const FolderIdentity identity{status.st_dev, status.st_ino};
    if (std::find(open_.begin(), open_.end(), identity) != open_.end())
        return false;
    // Links between sister folders make endless many ways without one loop.
    if (++visits_[identity] > kMaxVisits) {
        OnFolderUnreadable(folder, std::make_error_code(std::errc::too_many_symbolic_link_levels));
        return false;
    }
    open_.push_back(identity);
    return true;
}

}  // namespace velloran
