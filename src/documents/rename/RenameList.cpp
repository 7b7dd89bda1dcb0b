#include "documents/rename/RenameList.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <system_error>
#include <unordered_set>

#include "documents/rename/RenameJournal.h"
#include "files/NaturalOrder.h"
#include "files/TargetNames.h"
#include "io/Leftovers.h"
#include "text/DocumentLabels.h"
#include "text/Text.h"

namespace velloran {

namespace {

namespace fs = std::filesystem;

constexpr int kPictures = 0, kAllFiles = 9;  // of the list of types
constexpr int kNoPicture = 9, kNoGroup = 9;

struct KindExtension {
    std::string_view extension;
    int kind;
};
constexpr KindExtension kKinds[] = {
    {".jpg", 1}, {".jpeg", 1}, {".jpe", 1}, {".gif", 2}, {".bmp", 3}, {".dib", 3}, {".png", 4},
    {".tif", 5}, {".tiff", 5}, {".jpf", 6}, {".jpx", 6}, {".jp2", 6}, {".j2k", 6}, {".jpc", 6},
    {".j2c", 6}, {".webp", 7}, {".nef", 8}, {".crw", 8}, {".cr2", 8}, {".dng", 8},
};

constexpr std::string_view kGroups[] = {"cov", "bok", "leg", "fow", "!", "0", "ins", "att", "bac"};

struct ListedFile {
    std::string name;
    std::int64_t time = 0;  // nanoseconds since 1970; 0 where it is not known
};

std::int64_t TimeOf(const fs::path& path, RenameSort sort) {
    struct statx status {};
    if (statx(AT_FDCWD, path.c_str(), 0, STATX_BTIME | STATX_MTIME, &status) != 0)
        return 0;
    const bool wantsBirth = sort == RenameSort::kCreated && (status.stx_mask & STATX_BTIME) != 0;
    const statx_timestamp& time = wantsBirth ? status.stx_btime : status.stx_mtime;
    return time.tv_sec * std::int64_t{1'000'000'000} + time.tv_nsec;
}

bool IsOfType(std::string_view name, int type) {
    const int kind = FileKind(name);
    return type == kAllFiles || (type == kPictures ? kind != kNoPicture : kind == type);
}

bool LessByName(const ListedFile& a, const ListedFile& b) {
    return CompareNatural(a.name, b.name) < 0;
}

bool LessByTime(const ListedFile& a, const ListedFile& b) {
    return a.time != b.time ? a.time < b.time : LessByName(a, b);
}

bool LessByGroup(const ListedFile& a, const ListedFile& b) {
    const int groupA = PageGroup(a.name), groupB = PageGroup(b.name);
    return groupA != groupB ? groupA < groupB : LessByName(a, b);
}

/// Whether the names are those of a scanned book.
bool AreGrouped(const std::vector<ListedFile>& files) {
    std::array<bool, kNoGroup + 1> used{};
    for (const ListedFile& file : files)
        used[static_cast<std::size_t>(PageGroup(file.name))] = true;
    return !used[kNoGroup] && std::ranges::count(used, true) >= 2;
}

void Sort(const RenameFilter& filter, std::vector<ListedFile>& files) {
    if (filter.sort == RenameSort::kName && AreGrouped(files)) {
        std::ranges::sort(files, LessByGroup);  // as a book is read, whatever the order asked for
        return;
    }
    std::ranges::sort(files, filter.sort == RenameSort::kName ? LessByName : LessByTime);
    if (filter.descending)
        std::ranges::reverse(files);
}

bool EndsInDigitOf(std::string_view name, std::string_view digits) {
    const std::string_view stem = SplitName(name).stem;
    return !stem.empty() && digits.find(stem.back()) != std::string_view::npos;
}

bool IsSelected(const RenameFilter& filter, std::string_view name, std::size_t place) {
    const auto first = static_cast<std::size_t>(std::max(filter.first, 1));
    const auto every = static_cast<std::size_t>(std::max(filter.every, 1));
    switch (filter.selection) {
        case RenameSelection::kOdd:
            return EndsInDigitOf(name, "13579");
        case RenameSelection::kEven:
            return EndsInDigitOf(name, "02468");
        case RenameSelection::kEveryMth:
            return place >= first && (place - first) % every == 0;
        case RenameSelection::kAll:
            break;
    }
    return true;
}

}  // namespace

int FileKind(std::string_view name) {
    const std::string_view extension = SplitName(name).extension;
    for (const KindExtension& kind : kKinds)
        if (EqualIgnoringCase(kind.extension, extension))
            return kind.kind;
    return kNoPicture;
}

int PageGroup(std::string_view name) {
    for (std::size_t i = 0; i < std::size(kGroups); ++i)
        if (EqualIgnoringCase(name.substr(0, kGroups[i].size()), kGroups[i]))
            return static_cast<int>(i);
    return kNoGroup;
}

std::u16string_view RefuseFilter(const RenameFilter& filter) {
    if (filter.selection == RenameSelection::kEveryMth && (filter.first < 1 || filter.every < 1))
        return labels::kRenameZero;
    return {};
}

bool FillList(const fs::path& folder, const RenameFilter& filter, std::vector<RenameRow>& rows,
              FileError* error) {
    rows.clear();
    std::vector<ListedFile> files;
    std::error_code failure;
    fs::directory_iterator entries(folder, failure);
    for (; !failure && entries != fs::directory_iterator(); entries.increment(failure)) {
        std::error_code ignored;
        const std::string name = entries->path().filename().native();
        if (entries->is_directory(ignored) || name == kRenameJournalName || IsTemporaryName(name) ||
            !IsOfType(name, filter.type))
            continue;
        files.push_back(
            {name, filter.sort == RenameSort::kName ? 0 : TimeOf(entries->path(), filter.sort)});
    }
    if (failure) {
        errno = failure.value();
        return FailReadErrno(error, folder.native());
    }
    Sort(filter, files);
    for (std::size_t i = 0; i < files.size(); ++i)
        if (IsSelected(filter, files[i].name, i + 1))
            rows.push_back({std::move(files[i].name), {}});
    return true;
}

AddedFiles AddFiles(const fs::path& folder, const std::vector<fs::path>& files,
                    std::vector<RenameRow>& rows) {
    AddedFiles result;
    std::unordered_set<std::string> known;
    for (const RenameRow& row : rows)
        known.insert(row.source);
    std::error_code ignored;
    for (const fs::path& file : files) {
        if (!fs::equivalent(file.has_parent_path() ? file.parent_path() : fs::path("."), folder,
                            ignored)) {
            ++result.ofOtherFolders;
        } else if (known.insert(file.filename().native()).second) {
            rows.push_back({file.filename().native(), {}});
            ++result.added;
        } else {
            ++result.alreadyThere;
        }
    }
    return result;
}

std::u16string_view Renumber(const Numbering& numbering, std::vector<RenameRow>& rows) {
    if (numbering.useNumber && numbering.step < 1)
        return labels::kRenameStep;
    const int width = numbering.digits > 0 ? std::min(numbering.digits, 7) + 1 : 0;
    std::int64_t number = numbering.start;
    for (RenameRow& row : rows) {
        const NameParts parts = SplitName(row.source);
        row.target = numbering.prefix;
        if (numbering.useNumber)
            row.target += fmt::format("{:0{}}", number, width) + numbering.suffix;
        else
            row.target += parts.stem;
        if (numbering.keepExtension)
            row.target += parts.extension;
        number += numbering.step;
    }
    return {};
}

}  // namespace velloran
