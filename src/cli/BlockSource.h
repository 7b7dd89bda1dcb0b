#pragma once

// The block that a command runs with: defaults, or a setting from a file, then each parameter set
// on the command line.

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace velloran {
class CParaBlock;
}

namespace velloran::cli {

struct ParsedWords;

struct ParameterOptions {
    std::vector<std::string> sets;         // NAME=VALUE, in order
    std::optional<std::string> setting;    // FILE[#SECTION]
    std::optional<std::string> named;      // a section of the store
    std::optional<std::string> storeFile;  // else the program's own
    bool withoutPage = false;              // of the named setting, as the settings window reads it
};

/// Fills the block. What is wrong with the options is returned and must end the command; the
/// empty string is success. Values outside their range are taken and told in `warnings`, as is what
/// a settings file holds beside parameters and numbers.
std::string FillBlock(const ParameterOptions& options, CParaBlock& block,
                      std::vector<std::string>& warnings);

/// Fills the global block by the options among the words and prints the warnings. False after an
/// error was printed: wrong usage.
bool PrepareGlobalBlock(const ParsedWords& words);

/// FILE#SECTION to write to; nothing when no section is named or none can be called so.
struct SettingTarget {
    std::filesystem::path file;
    std::string section;
};
std::optional<SettingTarget> FindSettingTarget(const std::string& text);

}  // namespace velloran::cli
