#pragma once

// Values from one page to others: pasted, applied in bulk, reset, or taken from a setting. None of
// these makes or breaks a link between two halves.

#include <cstddef>
#include <optional>
#include <vector>

#include "documents/book/BookProject.h"
#include "params/ParaTable.h"

namespace velloran {

/// What becomes of split and correction (PageSetting's m_eCrtAppType).
enum class GeometryRule { kAuto, kCopy, kKeep };

enum class ApplyWhat { kAll, kTab, kBefore, kAfter };
enum class ApplyTo { kAll, kRest, kEverySecond };

/// Writes values into a row. Under kKeep the type and the corners of its correction and its split
/// stay. A half keeps its side; a row that is none takes no half's side.
void TakeValues(const ParaValues& from, const std::vector<ParaIndex>& indexes, GeometryRule rule,
                BookRow& row);

/// All 134, in the order of their table.
const std::vector<ParaIndex>& AllParaIndexes();
/// Of the tab, with those before it or behind it.
std::vector<ParaIndex> IndexesOf(ApplyWhat what, ParaTab tab);
/// The rows that a bulk application reaches; the row itself is not among them.
std::vector<std::size_t> RowsOf(const BookProject& project, std::size_t from, ApplyTo to);

void ApplyToRows(BookProject& project, std::size_t from, const std::vector<ParaIndex>& indexes,
                 const std::vector<std::size_t>& rows, GeometryRule rule);

/// Back to the defaults; a row that has a partner keeps its side. `indexes` of one tab, or all.
void ResetRow(BookProject& project, std::size_t row, const std::vector<ParaIndex>& indexes);

/// The stop codes of the two previews of a tab.
struct TabPreview {
    int left = 0, right = 0;
};
TabPreview PreviewOf(ParaTab tab);
/// The tab at a position from 1; nothing for one that is none.
std::optional<ParaTab> TabAt(int position);

}  // namespace velloran
