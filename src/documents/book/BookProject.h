#pragma once

// A book: the pages of one folder in their order, each with parameters of its own, and how the
// finished pages are called. A scan of two pages may stand in two rows, one for each half, side by
// side; the halves are linked by standing so.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "params/Settings.h"

namespace velloran {

struct BookRow {
    std::string source;     // below the source folder, as the bytes of the disk
    std::u16string target;  // in the target folder, without its extension
    ParaValues values = DefaultParaValues();
};

struct BookProject {
    std::filesystem::path source;  // folder
    // As the file holds them.
    std::u16string target;  // folder
    std::u16string prefix, postfix;
    std::int32_t viewType = 0;  // 0 automatic, 1 overlaid, 2 side by side
    std::int32_t zoom = 6;      // position in the list; fits the page
    std::int32_t rename = 1;    // pages are numbered
    std::int32_t digits = 4;    // position in the list "1" to "8"
    std::int32_t start = 1, step = 1;
    std::int32_t ext = 418096;  // packed like PARA_TGT_FILES
    std::int32_t current = -1;  // row from 0; -1 for none
    std::vector<BookRow> rows;

    /// Rows that a file told and that were not taken: their pictures are not there now.
    std::vector<std::string> missing;
    /// Names that would lead out of the source folder.
    std::vector<std::u16string> refused;
};

/// The project as the bytes of its file.
std::string ProjectBytes(const BookProject& project);

/// Whether a picture is there, asked with its name below the source folder.
using PictureExists = std::function<bool(const std::string& name)>;

/// What a file's bytes say, over a fresh project of the folder. Nothing for bytes that are no
/// project: no line "[Project]". The rule of names is normalised, and a current row that is not
/// there becomes the last one.
std::optional<BookProject> ParseProject(std::string_view bytes, const std::filesystem::path& source,
                                        const PictureExists& exists);

/// One of the project's own values by its key in the file; nothing where there is no such key.
enum class ProjectKey {
    kTarget,
    kPrefix,
    kPostfix,
    kViewType,
    kZoom,
    kRename,
    kDigits,
    kStart,
    kStep,
    kExt,
    kCurrent
};
std::optional<ProjectKey> FindProjectKey(std::u16string_view key);
std::u16string* TextOf(BookProject& project, ProjectKey key);
std::int32_t* NumberOf(BookProject& project, ProjectKey key);

}  // namespace velloran
