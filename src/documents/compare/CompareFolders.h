#pragma once

// Files of one name in two folders, compared: several at once, told in the order of the names.

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "documents/compare/Compare.h"

namespace velloran {

class Asker;

struct CompareFoldersRequest {
    std::filesystem::path folder1, folder2;
    int jobs = 0;  // pairs in flight; 0: the number of processors
};

struct CompareRow {
    std::size_t number = 0;  // from 1
    std::string name;
    DiffStats stats;  // without similarity
};

struct CompareFoldersOutcome {
    std::u16string_view refusal;  // empty where the folders were compared
    std::vector<CompareRow> rows;
    std::size_t unreadable = 0;  // pairs of which a file was there and could not be read
    bool wasStopped = false;
};

/// Pairs that cannot be compared, also for their depths, are passed over and told to the asker.
CompareFoldersOutcome CompareFolders(const CompareFoldersRequest& request, Asker& asker,
                                     const std::function<void(const CompareRow&)>& told = {});

/// The columns of a row, as the list shows them.
std::vector<std::string> ColumnsOf(const CompareRow& row);
std::vector<std::string> ColumnTitles();

/// The rows below the titles, with commas and CR LF, in UTF-8; fields that hold a comma, a
/// quotation mark or a line end stand in quotation marks.
bool ExportRows(const std::vector<CompareRow>& rows, const std::filesystem::path& file,
                FileError* error);

}  // namespace velloran
