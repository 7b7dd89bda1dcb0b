#include "batch/BatchPlan.h"

#include <algorithm>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>

#include "batch/DirEnhance.h"
#include "files/ImageFiles.h"
#include "files/TargetNames.h"
#include "params/TargetRule.h"
#include "text/PathText.h"
#include "text/Text.h"

namespace velloran {

namespace {

namespace fs = std::filesystem;

std::string WithoutTrailingSlashes(std::string path) {
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

/// The path with links resolved as far as it exists.
fs::path Resolved(const fs::path& path) {
    std::error_code failure;
    const fs::path absolute = fs::absolute(path, failure);
    fs::path resolved = fs::weakly_canonical(failure ? path : absolute, failure);
    if (failure)
        resolved = absolute.lexically_normal();
    return WithoutTrailingSlashes(resolved.native());
}

bool IsBeneathOrSame(const fs::path& path, const fs::path& root) {
    const auto [inRoot, inPath] = std::mismatch(root.begin(), root.end(), path.begin(), path.end());
    return inRoot == root.end();
}

std::size_t NameAt(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? 0 : slash + 1;
}

std::string_view NameOf(std::string_view path) {
    return path.substr(NameAt(path));
}

/// Where the part of a chosen file's path begins that lies beneath the source folder; where its
/// name begins for a file from elsewhere.
std::size_t RelativeAt(const std::string& file, const fs::path& root) {
    std::error_code ignored;
    const fs::path normal = fs::absolute(file, ignored).lexically_normal();
    if (IsBeneathOrSame(normal, root)) {
        const std::string relative = normal.lexically_relative(root).native();
        if (file == relative)
            return 0;
        const std::size_t at = file.size() - std::min(file.size(), relative.size());
        if (at > 0 && file[at - 1] == '/' && file.ends_with(relative))
            return at;
    }
    return NameAt(file);
}

/// The name that a result's is made of: a numbered page's has the number behind its stem.
std::string PageNameOf(const PlannedFile& file) {
    std::string name(NameOf(file.source));
    if (file.page == 0)
        return name;
    std::string digits = std::to_string(file.page);
    digits.insert(0, digits.size() < 4 ? 4 - digits.size() : 0, '0');
    const std::size_t stem = SplitName(name).stem.size();
    return name.insert(stem, "_" + digits);
}

}  // namespace

bool IsSameFolder(const fs::path& a, const fs::path& b) {
    const auto text = [](const fs::path& folder) {
        std::error_code ignored;
        return PathText(
            WithoutTrailingSlashes(fs::absolute(folder, ignored).lexically_normal().native()));
    };
    std::error_code ignored;
    return EqualIgnoringCase(text(a), text(b)) || fs::equivalent(a, b, ignored);
}

/// Looks at what stands where results would go. A folder that is not there yet holds nothing, and
/// is looked for once.
class TargetLook {
 public:
    std::optional<StandingFile> Find(const std::string& folder, const std::string& path) {
        if (folder != folder_) {
            std::error_code ignored;
            folder_ = folder;
            isThere_ = fs::is_directory(folder, ignored);
        }
        return isThere_ ? FindFile(path) : std::nullopt;
    }

 private:
    std::string folder_;
    bool isThere_ = false;
};

/// Gives each file the first number that no file before it has.
class BatchPlan::Namer {
 public:
    Namer(BatchPlan& plan, const PlanRequest& request, const Listener& listener)
        : plan_(plan),
          listener_(listener),
          fixed_(!request.names.extension.empty() && !request.skipColor),
          shown_(request.names.extension.empty() ? ".*" : plan.extensions_.front()) {}

    void Run() {
        std::vector<PlannedFile>& files = plan_.files_;
        // A source that its own result replaces keeps its name before all others.
        std::vector<bool> named(files.size(), false);
        if (fixed_)
            for (std::size_t i = 0; i < files.size(); ++i)
                named[i] = KeepsOwnName(i);
        for (std::size_t i = 0; i < files.size(); ++i)
            if (!named[i])
                Name(i);
        for (std::size_t i = 0; i < files.size(); ++i) {
            const Meeting meeting = MeetingOf(i, files[i].number);
            files[i].meetsItself = meeting.itself;
            files[i].meetsOther = meeting.other;
            if (meeting.other != 0)
                files[i].spareNumber = Claim(i, 2);
        }
    }

 private:
    struct Claimed {
        std::size_t owner = 0;
        int next = 2;  // the first number that may be free, for the stem without one
    };
    struct Meeting {
        std::uint16_t itself = 0, other = 0;  // bits by the place of the extension
    };

    std::string Path(std::size_t i, int number) const {
        return plan_.TargetStemPath(plan_.files_[i], number);
    }

    /// The same for all ways to one folder.
    std::string Key(std::size_t i, int number) {
        const PlannedFile& file = plan_.files_[i];
        std::string folder = plan_.TargetFolder(file);
        if (folder != folder_) {
            resolved_ = Resolved(folder).native();
            folder_ = std::move(folder);
        }
        return resolved_ + "/" + TargetName(file, number);
    }

    /// Which of its possible names are sources.
    Meeting MeetingOf(std::size_t i, int number) {
        Meeting meeting;
        const PlannedFile& file = plan_.files_[i];
        const std::string folder = plan_.TargetFolder(file);
        const std::string stem = Path(i, number);
        for (std::size_t place = 0; place < plan_.CountPlaces(); ++place) {
            const auto standing =
                look_.Find(folder, stem + std::string(plan_.ExtensionAt(file, place)));
            if (!standing)
                continue;
            const auto source = plan_.sources_.find(standing->identity);
            if (source == plan_.sources_.end())
                continue;
            const auto bit = static_cast<std::uint16_t>(1U << place);
            std::uint16_t& bits = source->second == i ? meeting.itself : meeting.other;
            bits = static_cast<std::uint16_t>(bits | bit);
        }
        return meeting;
    }

    bool KeepsOwnName(std::size_t i) {
        return MeetingOf(i, 1).itself != 0 && claimed_.try_emplace(Key(i, 1), Claimed{i}).second;
    }

    /// Takes the first free number from `from` on whose names are no other source's.
    int Claim(std::size_t i, int from) {
        for (int number = from;; ++number)
            if (MeetingOf(i, number).other == 0 &&
                claimed_.try_emplace(Key(i, number), Claimed{i}).second)
                return number;
    }

    void Name(std::size_t i) {
        PlannedFile& file = plan_.files_[i];
        const std::string wish = Key(i, 1);
        const auto found = claimed_.find(wish);
        // With extensions that are not known yet, a name that may turn out to be another source's
        // is kept: the spare number stands by.
        if (found == claimed_.end() && !(fixed_ && MeetingOf(i, 1).other != 0)) {
            claimed_.emplace(wish, Claimed{i});
            return;
        }
        const std::string earlier = found == claimed_.end()
                                        ? Path(i, 1) + plan_.extensions_.front()
                                        : plan_.files_[found->second.owner].source;
        file.number = Claim(i, found == claimed_.end() ? 2 : found->second.next);
        if (const auto again = claimed_.find(wish); again != claimed_.end())
            again->second.next = file.number + 1;
        if (listener_.renamed)
            listener_.renamed(file.source, earlier, Path(i, file.number) + shown_);
    }

    BatchPlan& plan_;
    const Listener& listener_;
    bool fixed_ = true;  // each result's extension is known beforehand
    std::string shown_;
    TargetLook look_;
    std::string folder_, resolved_;                     // the last one asked for
    std::unordered_map<std::string, Claimed> claimed_;  // by target path without extension
};

/// Leaves the sources whose targets stand already.
class BatchPlan::Skipper {
 public:
    explicit Skipper(BatchPlan& plan) : plan_(plan) {}

    /// Before names are given: sources that their own results replaced, and those whose results
    /// were found as sources themselves.
    void LeaveResultsAmongSources() {
        Leave([this](std::size_t i) {
            return AnyTarget(i, 1, [&](const StandingFile& target, std::int64_t changed) {
                return plan_.sources_.contains(target.identity) && target.changed >= changed;
            });
        });
    }

    void LeaveDone() {
        Leave([this](std::size_t i) {
            const PlannedFile& file = plan_.files_[i];
            const auto isDone = [](const StandingFile& target, std::int64_t changed) {
                return target.changed >= changed;
            };
            return AnyTarget(i, file.number, isDone) ||
                   (file.spareNumber != 0 && AnyTarget(i, file.spareNumber, isDone));
        });
    }

 private:
    template <typename Test>
    bool AnyTarget(std::size_t i, int number, Test&& test) {
        const PlannedFile& file = plan_.files_[i];
        const std::string folder = plan_.TargetFolder(file);
        const std::string stem = plan_.TargetStemPath(file, number);
        std::optional<StandingFile> source;
        for (std::size_t place = 0; place < plan_.CountPlaces(); ++place) {
            const bool isLikely =
                place == plan_.extensions_.size() || (plan_.likely_ >> place & 1U) != 0;
            if (!isLikely)
                continue;
            const auto target =
                look_.Find(folder, stem + std::string(plan_.ExtensionAt(file, place)));
            if (target && !source)
                source = FindFile(file.source);
            // Whether an automatic extension makes the source its own target, the page decides.
            const bool isOpen = source && target && target->identity == source->identity &&
                                plan_.extensions_.size() > 1;
            if (target && source && !isOpen && test(*target, source->changed))
                return true;
        }
        return false;
    }

    template <typename Test>
    void Leave(Test&& isLeft) {
        std::vector<PlannedFile>& files = plan_.files_;
        std::vector<bool> left(files.size(), false);
        for (std::size_t i = 0; i < files.size(); ++i)
            left[i] = isLeft(i);
        std::size_t kept = 0;
        for (std::size_t i = 0; i < files.size(); ++i)
            if (!left[i] && kept++ != i)
                files[kept - 1] = std::move(files[i]);
        plan_.skipped_ += files.size() - kept;
        files.resize(kept);
    }

    BatchPlan& plan_;
    TargetLook look_;
};

bool BatchPlan::Make(const PlanRequest& request, const Listener& listener) {
    *this = BatchPlan();
    target_ = WithoutTrailingSlashes(request.target.native());
    sameFolder_ = velloran::IsSameFolder(WithoutTrailingSlashes(request.source.native()), target_);
    FindExtensions(request);
    if (!FindSources(request, listener) || (request.allPages && !SplitIntoPages(listener))) {
        files_.clear();
        return false;
    }
    if (request.bothHalves)
        DoubleFiles();
    NoteSources();
    if (request.skipExisting) {
        Skipper(*this).LeaveResultsAmongSources();
        NoteSources();
    }
    files_.shrink_to_fit();
    Namer(*this, request, listener).Run();
    CountNames();
    if (request.skipExisting)
        Skipper(*this).LeaveDone();
    return true;
}

/// Puts a file for each page in the place of those that hold several.
bool BatchPlan::SplitIntoPages(const Listener& listener) {
    std::vector<PlannedFile> files;
    for (PlannedFile& file : files_) {
        if (listener.isStopped && listener.isStopped())
            return false;
        const int pages = CountPages(file.source);
        for (int page = 1; page < pages; ++page) {
            files.push_back(file);
            files.back().page = page;
        }
        file.page = pages > 1 ? pages : 0;
        files.push_back(std::move(file));
    }
    files_ = std::move(files);
    return true;
}

bool BatchPlan::FindSources(const PlanRequest& request, const Listener& listener) {
    const std::string root = WithoutTrailingSlashes(request.source.native());
    const auto isStopped = [&] { return listener.isStopped && listener.isStopped(); };
    bool stopped = false;
    if (request.useList) {
        std::error_code ignored;
        const fs::path normalRoot =
            WithoutTrailingSlashes(fs::absolute(root, ignored).lexically_normal().native());
        std::unordered_set<std::string> seen;
        for (const fs::path& chosen : request.list) {
            stopped = stopped || isStopped();
            const std::string file = WithoutTrailingSlashes(chosen.native());
            if (!file.empty() && seen.insert(file).second)
                files_.push_back({file, static_cast<std::uint32_t>(RelativeAt(file, normalRoot))});
        }
        return !stopped;
    }
    const std::size_t at = root.size() + (root.ends_with('/') ? 0 : 1);
    CDirEnhance walker;
    walker.onFile = [&](const fs::path& path) {
        files_.push_back({path.native(), static_cast<std::uint32_t>(at)});
        stopped = isStopped();
        return !stopped;
    };
    walker.onUnreadable = listener.unreadable;
    walker.SetUp(request.filter, nullptr, request.recursive,
                 sameFolder_ ? fs::path() : fs::path(target_));
    walker.Walk(root);
    otherTypes_ = walker.CountOtherTypes();
    return !stopped;
}

/// Each source twice, for its halves in reading order.
void BatchPlan::DoubleFiles() {
    std::vector<PlannedFile> halves;
    halves.reserve(files_.size() * 2);
    for (const PlannedFile& file : files_)
        for (const std::int8_t half : {1, 2}) {
            halves.push_back(file);
            halves.back().half = half;
        }
    files_ = std::move(halves);
}

/// The extensions that results may take, and which of them the rule for automatic ones names.
void BatchPlan::FindExtensions(const PlanRequest& request) {
    skipColor_ = request.skipColor;
    const std::u16string_view chosen = request.names.extension;
    if (!chosen.empty()) {
        extensions_.push_back(DottedExtension(chosen));
        likely_ = 1;
        return;
    }
    const TargetRule rule = UnpackTargetRule(request.names.packedRule);
    for (const TargetFormat format : ExtensionChoices()) {
        if (format == TargetFormat::kAuto)
            continue;
        const bool isNamed = format == rule.color24 || format == rule.gray256 ||
                             format == rule.blackWhite || format == rule.other;
        likely_ |= std::size_t{isNamed} << extensions_.size();
        extensions_.push_back(DottedExtension(TargetExtension(format)));
    }
}

/// Those that were noted before stay, also when they are left now: no result may replace them.
void BatchPlan::NoteSources() {
    for (auto& [identity, index] : sources_)
        index = kNobody;
    for (std::size_t i = 0; i < files_.size(); ++i)
        if (const auto standing = FindFile(files_[i].source))
            if (const auto at = sources_.try_emplace(standing->identity, i).first;
                at->second == kNobody)
                at->second = i;
}

void BatchPlan::CountNames() {
    const auto likely = static_cast<std::uint16_t>(likely_);
    std::string folder;  // of the last file
    bool isSame = false;
    newNames_ = 0;
    for (const PlannedFile& file : files_) {
        std::string own(file.source, 0, NameAt(file.source));
        if (own.empty())
            own = "./";
        if (own != folder) {
            isSame = velloran::IsSameFolder(own, TargetFolder(file));
            folder = std::move(own);
        }
        newNames_ += isSame && (file.meetsItself & likely) != likely ? 1 : 0;
    }
}

std::size_t BatchPlan::CountReplaced() const {
    return static_cast<std::size_t>(
        std::count_if(files_.begin(), files_.end(),
                      [](const PlannedFile& file) { return file.meetsItself != 0; }));
}

bool BatchPlan::IsSource(const fs::path& path) const {
    const auto standing = FindFile(path);
    return standing && sources_.contains(standing->identity);
}

std::string_view BatchPlan::ExtensionAt(const PlannedFile& file, std::size_t place) const {
    return place < extensions_.size() ? std::string_view(extensions_[place])
                                      : SplitName(NameOf(file.source)).extension;
}

std::string BatchPlan::TargetFolder(const PlannedFile& file) const {
    const std::string_view source = file.source;
    const std::size_t nameAt = NameAt(source);
    std::string folder = target_;
    if (!folder.ends_with('/'))
        folder += '/';
    if (nameAt > file.relativeAt)
        folder += source.substr(file.relativeAt, nameAt - file.relativeAt);
    return folder;
}

/// Without its extension.
std::string BatchPlan::TargetName(const PlannedFile& file, int number) {
    const std::string name = PageNameOf(file);
    if (file.half == 0)
        return TargetStem(name, number);
    const NameParts parts = SplitName(name);
    return TargetStem(
        std::string(parts.stem) + "_" + std::to_string(file.half) + std::string(parts.extension),
        number);
}

std::string BatchPlan::TargetStemPath(const PlannedFile& file, int number) const {
    return TargetFolder(file) + TargetName(file, number);
}

std::string BatchPlan::TargetWithoutExtension(const PlannedFile& file) const {
    return TargetStemPath(file, file.number);
}

bool BatchPlan::HasBit(unsigned bits, const PlannedFile& file, std::string_view extension) const {
    for (std::size_t place = 0; place < CountPlaces(); ++place)
        if ((bits >> place & 1U) != 0 && ExtensionAt(file, place) == extension)
            return true;
    return false;
}

bool BatchPlan::IsItself(const PlannedFile& file, std::string_view extension) const {
    return HasBit(file.meetsItself, file, extension);
}

fs::path BatchPlan::TargetPath(const PlannedFile& file, std::string_view extension,
                               bool* evaded) const {
    const bool evades = HasBit(file.meetsOther, file, extension);
    if (evaded != nullptr)
        *evaded = evades;
    return TargetStemPath(file, evades ? file.spareNumber : file.number) + std::string(extension);
}

}  // namespace velloran
