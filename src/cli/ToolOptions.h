#pragma once

// What the commands of the folder tools have in common.

#include <filesystem>
#include <span>
#include <string>
#include <string_view>

namespace velloran {
struct FolderWalk;
struct ToolFileType;
}  // namespace velloran

namespace velloran::cli {

struct ParsedWords;

/// The walk that --types and --no-recurse ask for. False after an error was printed.
bool FillWalk(const ParsedWords& words, const std::string& folder,
              std::span<const ToolFileType> types, FolderWalk& walk);

/// The log that --log asks for, else the program's own, whose folder is made.
std::filesystem::path LogOf(const ParsedWords& words);

/// As UTF-8 with LF line ends; a text without one at its end gets it.
std::string WithLineFeeds(std::u16string_view text);

}  // namespace velloran::cli
