#pragma once

// What a file that the user names for the program's own notes may already be: such a file is
// replaced or added to, so pages, lists and notes of the user must not pass for one.

#include <filesystem>

namespace velloran {

/// Whether a run log may be written there: nothing stands there, an empty file, an old log (UTF-16
/// lines of path, TAB and a text of the log table), or what takes writes without losing anything,
/// like /dev/null.
bool CanBeLog(const std::filesystem::path& file);

/// Whether a setting may be written into the file: nothing stands there, an empty file, or lines
/// of sections, keys and comments alone with at least one section.
bool CanTakeSetting(const std::filesystem::path& file);

}  // namespace velloran
