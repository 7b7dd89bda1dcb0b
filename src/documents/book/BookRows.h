#pragma once

// The list of a book: halves and their partners, insertion, removal, moves, the names of the
// finished pages. A scan that is split stands in two adjacent rows, the half that is read first
// above the other.

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "documents/book/BookProject.h"

namespace velloran {

class Asker;

/// The row of the other half for each row, or nothing: an adjacent row of the same file that keeps
/// the other side.
std::vector<std::optional<std::size_t>> FindPartners(const BookProject& project);
std::optional<std::size_t> FindSplitPartner(const BookProject& project, std::size_t row);

/// Whether the values keep one half of a double page, and which: 1 is read first. 0 for none.
int HalfOf(const ParaValues& values);

/// Names all rows by their own files, with "~2", "~3" behind names that would meet: what a list
/// begins with.
void NameByFiles(BookProject& project);

/// Names all rows anew, where the step is at least 1: prefix, number and suffix, or prefix and the
/// source's own name, with "~2", "~3" behind names that would meet.
void RebuildTargets(BookProject& project);

/// Why an operation was refused, in the system's words; empty where it was done.
using RowRefusal = std::u16string_view;

/// Makes two rows of one, of kind 2 (pages turn to the right: the right half is read first) or 3.
/// A half is refused.
RowRefusal SplitRow(BookProject& project, std::size_t row, int kind);

/// Puts files before a row (the count of rows appends). Refuses what lies outside the source
/// folder or in the list already, and the place between two halves; then nothing is added.
RowRefusal AddFilesToBook(BookProject& project, const std::vector<std::filesystem::path>& files,
                          std::size_t before);

/// Asks, then removes the rows, each with its other half. False when the user declined.
bool RemoveRows(BookProject& project, const std::vector<std::size_t>& rows, Asker& asker);

/// Moves a row, with its other half, before another one (the count of rows: to the end). The place
/// between two other halves is refused.
RowRefusal MoveRow(BookProject& project, std::size_t row, std::size_t before);

}  // namespace velloran
