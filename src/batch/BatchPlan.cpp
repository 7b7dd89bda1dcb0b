#include "batch/BatchPlan.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "batch/DirEnhance.h"
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

std::string IdentityOf(const std::string& path) {
    const fs::path folder = fs::path(path).parent_path();
    return Resolved(folder.empty() ? fs::path(".") : folder).native() + "/" +
           path.substr(NameAt(path));
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

/// Gives each file the first number that no file before it has.
class BatchPlan::Namer {
 public:
    Namer(BatchPlan& plan, const PlanRequest& request, const Listener& listener)
        : plan_(plan), listener_(listener) {
        const std::u16string_view chosen = request.names.extension;
        fixed_ = !chosen.empty() && !request.skipColor;
        if (!chosen.empty())
            extensions_.push_back(DottedExtension(chosen));
        else
            for (const TargetFormat format : ExtensionChoices())
                if (format != TargetFormat::kAuto)
                    extensions_.push_back(DottedExtension(TargetExtension(format)));
        skipColor_ = request.skipColor;
        shown_ = chosen.empty() ? ".*" : extensions_.front();
    }

    void Run() {
        // A source that its own result replaces keeps its name before all others.
        std::vector<bool> named(plan_.files_.size(), false);
        if (fixed_ && !plan_.sources_.empty())
            for (std::size_t i = 0; i < plan_.files_.size(); ++i)
                named[i] = KeepsOwnName(i);
        for (std::size_t i = 0; i < plan_.files_.size(); ++i)
            if (!named[i])
                Name(i);
        if (!fixed_ && !plan_.sources_.empty())
            for (std::size_t i = 0; i < plan_.files_.size(); ++i)
                if (MeetsAnotherSource(i, plan_.files_[i].number))
                    plan_.files_[i].spareNumber = Claim(i, 2);
    }

 private:
    struct Claimed {
        std::size_t owner = 0;
        int next = 2;  // the first number that may be free, for the stem without one
    };

    std::string Key(std::size_t i, int number) const {
        return plan_.TargetStemPath(plan_.files_[i], number);
    }

    bool KeepsOwnName(std::size_t i) {
        const std::string target = Key(i, 1) + extensions_.front();
        if (IdentityOf(target) != IdentityOf(plan_.files_[i].source))
            return false;
        return claimed_.try_emplace(Key(i, 1), Claimed{i}).second;
    }

    bool MeetsAnotherSource(std::size_t i, int number) const {
        if (plan_.sources_.empty())
            return false;
        const PlannedFile& file = plan_.files_[i];
        const std::string stem = plan_.TargetStemPath(file, number);
        const auto meets = [&](std::string_view extension) {
            return plan_.IsAnotherSource(file, stem + std::string(extension));
        };
        if (std::any_of(extensions_.begin(), extensions_.end(), meets))
            return true;
        const std::string_view source = file.source;
        return skipColor_ && meets(SplitName(source.substr(NameAt(source))).extension);
    }

    /// Takes the first free number from `from` on whose names are no other source's.
    int Claim(std::size_t i, int from) {
        for (int number = from;; ++number)
            if (!MeetsAnotherSource(i, number) &&
                claimed_.try_emplace(Key(i, number), Claimed{i}).second)
                return number;
    }

    void Name(std::size_t i) {
        PlannedFile& file = plan_.files_[i];
        const std::string wish = Key(i, 1);
        const auto found = claimed_.find(wish);
        // With extensions that are not known yet, a name that may turn out to be another source's
        // is kept: the spare number stands by.
        if (found == claimed_.end() && !(fixed_ && MeetsAnotherSource(i, 1))) {
            claimed_.emplace(wish, Claimed{i});
            return;
        }
        const std::string earlier = found == claimed_.end()
                                        ? wish + extensions_.front()
                                        : plan_.files_[found->second.owner].source;
        file.number = Claim(i, found == claimed_.end() ? 2 : found->second.next);
        if (const auto again = claimed_.find(wish); again != claimed_.end())
            again->second.next = file.number + 1;
        if (listener_.renamed)
            listener_.renamed(file.source, earlier, Key(i, file.number) + shown_);
    }

    BatchPlan& plan_;
    const Listener& listener_;
    bool fixed_ = true;  // each result's extension is known beforehand
    bool skipColor_ = false;
    std::vector<std::string> extensions_;  // with dots, that results may take
    std::string shown_;
    std::unordered_map<std::string, Claimed> claimed_;  // by target path without extension
};

bool BatchPlan::Make(const PlanRequest& request, const Listener& listener) {
    files_.clear();
    sources_.clear();
    const std::string root = WithoutTrailingSlashes(request.source.native());
    target_ = WithoutTrailingSlashes(request.target.native());
    sameFolder_ = velloran::IsSameFolder(root, target_);
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
    } else {
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
    }
    if (stopped) {
        files_.clear();
        return false;
    }
    files_.shrink_to_fit();
    NoteSources(request.useList ? fs::path() : fs::path(root));
    Namer(*this, request, listener).Run();
    return true;
}

/// Sources are noted where a result can meet one: chosen files may lie anywhere; the files of a
/// walk lie beneath the target only when the source folder does.
void BatchPlan::NoteSources(const fs::path& source) {
    if (!source.empty() && !sameFolder_ && !IsBeneathOrSame(Resolved(source), Resolved(target_)))
        return;
    for (const PlannedFile& file : files_)
        sources_.insert(IdentityOf(file.source));
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

std::string BatchPlan::TargetStemPath(const PlannedFile& file, int number) const {
    const std::string_view source = file.source;
    return TargetFolder(file) + TargetStem(source.substr(NameAt(source)), number);
}

std::string BatchPlan::TargetWithoutExtension(const PlannedFile& file) const {
    return TargetStemPath(file, file.number);
}

bool BatchPlan::IsAnotherSource(const PlannedFile& file, const std::string& path) const {
    const std::string identity = IdentityOf(path);
    return sources_.contains(identity) && identity != IdentityOf(file.source);
}

fs::path BatchPlan::TargetPath(const PlannedFile& file, std::string_view extension,
                               bool* evaded) const {
    std::string path = TargetStemPath(file, file.number) + std::string(extension);
    const bool evades = file.spareNumber != 0 && !sources_.empty() && IsAnotherSource(file, path);
    if (evades)
        path = TargetStemPath(file, file.spareNumber) + std::string(extension);
    if (evaded != nullptr)
        *evaded = evades;
    return path;
}

}  // namespace velloran
