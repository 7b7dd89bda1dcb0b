#pragma once

// The subcommands as data: operands, options and the function that does the work.

#include <span>
#include <string_view>

#include "cli/OptionParser.h"
#include "cli/Options.h"
#include "text/Label.h"

namespace velloran::cli {

struct Command {
    std::string_view name;
    Label summary, details;
    std::span<const Operand> operands;
    std::span<const Option> options;       // beside GeneralOptions
    int (*run)(const ParsedWords& words);  // returns the exit status
};

std::span<const Command> Commands();
/// The command of a name, or null.
const Command* FindCommand(std::string_view name);
/// Its own options in the order of the help, then those of parameters and the general ones.
std::vector<Option> OptionsOf(const Command& command);

int RunEnhance(const ParsedWords& words);
int RunBatchCommand(const ParsedWords& words);
int RunDescribe(const ParsedWords& words);
int RunParams(const ParsedWords& words);
int RunInfo(const ParsedWords& words);
int RunDetect(const ParsedWords& words);
int RunMeasure(const ParsedWords& words);
int RunBook(const ParsedWords& words);
int RunMergeCommand(const ParsedWords& words);
int RunCompare(const ParsedWords& words);
int RunRenameCommand(const ParsedWords& words);
int RunStats(const ParsedWords& words);
int RunSetDpi(const ParsedWords& words);
int RunSettings(const ParsedWords& words);

}  // namespace velloran::cli
