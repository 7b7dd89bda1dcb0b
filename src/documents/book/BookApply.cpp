#include "documents/book/BookApply.h"

#include <algorithm>
#include <array>

#include "core/Pipeline.h"
#include "documents/book/BookRows.h"

namespace velloran {

namespace {

constexpr std::array kTabs = {ParaTab::kPaper, ParaTab::kPage, ParaTab::kLayout, ParaTab::kImage,
                              ParaTab::kOutput};
constexpr std::array kTabPreviews = {
    TabPreview{kStopNothing, kStopSplitDrawn},
    TabPreview{kStopSplit, kStopPageCorrectionFast},
    TabPreview{kStopPageCorrection, kStopContentBox},
    TabPreview{kStopContentBoxLayout, kStopWhole},
    TabPreview{kStopContentBoxLayout, kStopWhole},
};
constexpr std::array kGeometry = {PARA_CRT_TYPE,        PARA_CRT_PT_LT,        PARA_CRT_PT_RT,
                                  PARA_CRT_PT_RB,       PARA_CRT_PT_LB,        PARA_PAGE_SPLIT_TYPE,
                                  PARA_PAGE_SPLIT_LEFT, PARA_PAGE_SPLIT_RIGHT, PARA_PAGE_SPLIT_MID};

std::size_t PlaceOf(ParaTab tab) {
    return static_cast<std::size_t>(std::ranges::find(kTabs, tab) - kTabs.begin());
}

}  // namespace

void TakeValues(const ParaValues& from, const std::vector<ParaIndex>& indexes, GeometryRule rule,
                BookRow& row) {
    const bool keepsKind = HalfOf(row.values) != 0 || HalfOf(from) != 0;
    for (const ParaIndex index : indexes) {
        const bool isGeometry = std::ranges::find(kGeometry, index) != kGeometry.end();
        if ((rule == GeometryRule::kKeep && isGeometry) ||
            (keepsKind && index == PARA_PAGE_SPLIT_TYPE))
            continue;
        row.values[static_cast<std::size_t>(index)] = from[static_cast<std::size_t>(index)];
    }
}

const std::vector<ParaIndex>& AllParaIndexes() {
    static const std::vector<ParaIndex> all = [] {
        std::vector<ParaIndex> indexes;
        for (int i = 0; i < kParaCount; ++i)
            indexes.push_back(static_cast<ParaIndex>(i));
        return indexes;
    }();
    return all;
}

std::vector<ParaIndex> IndexesOf(ApplyWhat what, ParaTab tab) {
    if (what == ApplyWhat::kAll)
        return AllParaIndexes();
    const std::size_t place = PlaceOf(tab);
    const std::size_t first = what == ApplyWhat::kBefore ? 0 : place;
    const std::size_t last = what == ApplyWhat::kAfter ? kTabs.size() - 1 : place;
    std::vector<ParaIndex> indexes;
    for (std::size_t i = first; i <= last && i < kTabs.size(); ++i)
        for (const ParaIndex index : ParaIndexesOf(kTabs[i]))
            indexes.push_back(index);
    return indexes;
}

std::vector<std::size_t> RowsOf(const BookProject& project, std::size_t from, ApplyTo to) {
    std::vector<std::size_t> rows;
    const std::size_t step = to == ApplyTo::kEverySecond ? 2 : 1;
    for (std::size_t i = to == ApplyTo::kAll ? 0 : from + step; i < project.rows.size(); i += step)
        if (i != from)
            rows.push_back(i);
    return rows;
}

void ApplyToRows(BookProject& project, std::size_t from, const std::vector<ParaIndex>& indexes,
                 const std::vector<std::size_t>& rows, GeometryRule rule) {
    const ParaValues values = project.rows[from].values;
    for (const std::size_t row : rows)
        TakeValues(values, indexes, rule, project.rows[row]);
}

void ResetRow(BookProject& project, std::size_t row, const std::vector<ParaIndex>& indexes) {
    const ParaValues defaults = DefaultParaValues();
    const bool keepsKind = FindSplitPartner(project, row).has_value();
    for (const ParaIndex index : indexes)
        if (!keepsKind || index != PARA_PAGE_SPLIT_TYPE)
            project.rows[row].values[static_cast<std::size_t>(index)] =
                defaults[static_cast<std::size_t>(index)];
}

TabPreview PreviewOf(ParaTab tab) {
    const std::size_t place = PlaceOf(tab);
    return place < kTabPreviews.size() ? kTabPreviews[place] : TabPreview{};
}

std::optional<ParaTab> TabAt(int position) {
    if (position < 1 || position > static_cast<int>(kTabs.size()))
        return std::nullopt;
    return kTabs[static_cast<std::size_t>(position) - 1];
}

}  // namespace velloran
