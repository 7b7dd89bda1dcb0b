#include "documents/book/BookRows.h"

#include <algorithm>
#include <cstdlib>
#include <system_error>
#include <unordered_set>
#include <utility>

#include "documents/Asker.h"
#include "documents/book/RowName.h"
#include "pipeline/Split.h"
#include "text/DocumentLabels.h"
#include "text/NumberText.h"
#include "text/Text.h"

namespace velloran {

namespace {

namespace fs = std::filesystem;

constexpr std::int32_t kSecondPage = 0x100;  // of PARA_PAGE_SPLIT_TYPE
constexpr int kRightFirst = 2, kLeftFirst = 3;

int WorkOf(const BookRow& row) {
    return effectiveSplit(row.values[PARA_PAGE_SPLIT_TYPE]);
}

bool AreHalves(const BookRow& a, const BookRow& b) {
    const int workA = WorkOf(a), workB = WorkOf(b);
    return a.source == b.source && workA != workB &&
           (workA == kKeepLeftToMid || workA == kKeepMidToRight) &&
           (workB == kKeepLeftToMid || workB == kKeepMidToRight);
}

/// Whether the place before a row lies between two halves.
bool IsBetweenHalves(const BookProject& project, std::size_t before) {
    return before > 0 && before < project.rows.size() &&
           FindSplitPartner(project, before) == before - 1;
}

/// The current row stays with its page when rows come or go.
void KeepCurrent(BookProject& project, std::size_t from, std::ptrdiff_t by) {
    if (project.current >= 0 && static_cast<std::size_t>(project.current) >= from)
        project.current += static_cast<std::int32_t>(by);
}

/// The name of a file below the source folder; nothing outside of it.
std::optional<std::string> NameBelow(const fs::path& file, const fs::path& folder) {
    std::error_code failure;
    const fs::path parent =
        fs::weakly_canonical(file.has_parent_path() ? file.parent_path() : fs::path("."), failure);
    const fs::path root = fs::weakly_canonical(folder, failure);
    const std::string name = (parent / file.filename()).lexically_relative(root).native();
    if (failure || name.empty() || name == "." || name.starts_with("../") || name == ".." ||
        !IsInnerName(TextOfName(name)))
        return std::nullopt;
    return name;
}

std::u16string StemOf(const std::string& source) {
    return TextOfName(fs::path(source).stem().native());
}

void NameWithPrefix(BookProject& project, const std::u16string& prefix) {
    std::unordered_set<std::string> taken;  // as they are written: in small letters
    for (BookRow& row : project.rows) {
        const std::u16string name = prefix + StemOf(row.source);
        row.target = name;
        for (int number = 2; !taken.insert(LowerCase(NameOfText(row.target))).second; ++number)
            row.target = name + u"~" + DecimalText(number);
    }
}

}  // namespace

std::vector<std::optional<std::size_t>> FindPartners(const BookProject& project) {
    std::vector<std::optional<std::size_t>> partners(project.rows.size());
    for (std::size_t i = 0; i + 1 < project.rows.size(); ++i)
        if (AreHalves(project.rows[i], project.rows[i + 1])) {
            partners[i] = i + 1;
            partners[i + 1] = i;
            ++i;
        }
    return partners;
}

std::optional<std::size_t> FindSplitPartner(const BookProject& project, std::size_t row) {
    // Pairs are counted from the first of the rows of one file that stand together.
    std::size_t first = row;
    while (first > 0 && AreHalves(project.rows[first - 1], project.rows[first]))
        --first;
    for (std::size_t i = first; i <= row && i + 1 < project.rows.size(); ++i)
        if (AreHalves(project.rows[i], project.rows[i + 1])) {
            if (i == row)
                return i + 1;
            if (i + 1 == row)
                return i;
            ++i;
        }
    return std::nullopt;
}

int HalfOf(const ParaValues& values) {
    const std::int32_t type = values[PARA_PAGE_SPLIT_TYPE];
    const int work = effectiveSplit(type);
    if (work != kKeepLeftToMid && work != kKeepMidToRight)
        return 0;
    const bool isRight = work == kKeepMidToRight;
    return ((type & 0xFF) == kRightFirst) == isRight ? 1 : 2;
}

void NameByFiles(BookProject& project) {
    NameWithPrefix(project, {});
}

void RebuildTargets(BookProject& project) {
    if (project.step < 1)
        return;
    if (project.rename == 0) {
        NameWithPrefix(project, project.prefix);
        return;
    }
    const auto width =
        static_cast<std::size_t>(project.digits < 1 ? 1 : std::min(project.digits, 7) + 1);
    std::int64_t number = project.start;
    for (BookRow& row : project.rows) {
        std::u16string digits = DecimalText(std::abs(number));
        const std::size_t sign = number < 0 ? 1 : 0;
        if (digits.size() + sign < width)
            digits.insert(0, width - sign - digits.size(), u'0');
        row.target = project.prefix;
        row.target.append(sign, u'-').append(digits).append(project.postfix);
        number += project.step;
    }
}

RowRefusal SplitRow(BookProject& project, std::size_t row, int kind) {
    BookRow& first = project.rows[row];
    if (HalfOf(first.values) != 0)
        return labels::kBookIsHalf;
    const std::int32_t right = kind | kSecondPage;
    first.values[PARA_PAGE_SPLIT_TYPE] = kind == kRightFirst ? right : kind;
    BookRow second = first;
    second.values[PARA_PAGE_SPLIT_TYPE] = kind == kRightFirst ? kind : right;
    project.rows.insert(project.rows.begin() + static_cast<std::ptrdiff_t>(row) + 1,
                        std::move(second));
    KeepCurrent(project, row + 1, 1);
    RebuildTargets(project);
    return {};
}

RowRefusal AddFilesToBook(BookProject& project, const std::vector<fs::path>& files,
                          std::size_t before) {
    if (IsBetweenHalves(project, before))
        return labels::kBookBetweenHalves;
    std::unordered_set<std::string> known;
    for (const BookRow& row : project.rows)
        known.insert(row.source);
    std::vector<BookRow> added;
    for (const fs::path& file : files) {
        const std::optional<std::string> name = NameBelow(file, project.source);
        if (!name)
            return labels::kBookOutside;
        if (!known.insert(*name).second)
            return labels::kBookAlreadyThere;
        added.push_back({*name, StemOf(*name), DefaultParaValues()});
    }
    KeepCurrent(project, before, static_cast<std::ptrdiff_t>(added.size()));
    project.rows.insert(project.rows.begin() + static_cast<std::ptrdiff_t>(before), added.begin(),
                        added.end());
    RebuildTargets(project);
    return {};
}

bool RemoveRows(BookProject& project, const std::vector<std::size_t>& rows, Asker& asker) {
    const auto partners = FindPartners(project);
    std::vector<bool> goes(project.rows.size());
    bool anySplit = false;
    for (const std::size_t row : rows) {
        goes[row] = true;
        if (partners[row]) {
            goes[*partners[row]] = true;
            anySplit = true;
        }
    }
    std::u16string question;
    if (anySplit)
        question += labels::kBookRemoveHalves;
    question += labels::kBookRemoveAsk;
    if (!asker.AskYesNo(question))
        return false;
    std::vector<BookRow> kept;
    std::int32_t current = project.current;
    for (std::size_t i = 0; i < project.rows.size(); ++i) {
        if (!goes[i])
            kept.push_back(std::move(project.rows[i]));
        else if (project.current > static_cast<std::int32_t>(i))
            --current;
    }
    project.rows = std::move(kept);
    project.current = std::min(current, static_cast<std::int32_t>(project.rows.size()) - 1);
    RebuildTargets(project);
    return true;
}

RowRefusal MoveRow(BookProject& project, std::size_t row, std::size_t before) {
    const std::optional<std::size_t> partner = FindSplitPartner(project, row);
    const std::size_t first = partner ? std::min(row, *partner) : row;
    const std::size_t count = partner ? 2 : 1;
    if (before >= first && before <= first + count)
        return {};  // where it is
    if (IsBetweenHalves(project, before))
        return labels::kBookMoveBetween;
    const auto begin = project.rows.begin();
    const auto from = begin + static_cast<std::ptrdiff_t>(first);
    const auto end = from + static_cast<std::ptrdiff_t>(count);
    const auto to = begin + static_cast<std::ptrdiff_t>(before);
    if (before < first)
        std::rotate(to, from, end);
    else
        std::rotate(from, end, to);
    if (project.current >= 0) {
        const std::size_t now = before < first ? before : before - count;
        auto at = static_cast<std::size_t>(project.current);
        if (at >= first && at < first + count)
            at = now + (at - first);
        else if (before < first && at >= before && at < first)
            at += count;
        else if (before > first && at >= first + count && at < before)
            at -= count;
        project.current = static_cast<std::int32_t>(at);
    }
    RebuildTargets(project);
    return {};
}

}  // namespace velloran
