#pragma once

// Commands that are several: the first operand is a verb, which has operands and options of its
// own.

#include <cstddef>
#include <span>
#include <string_view>

#include "cli/OptionParser.h"

namespace velloran::cli {

struct Verb {
    std::string_view name;
    std::string_view operands;  // behind the verb, as the help names them
    std::size_t fewest = 0, most = 0;
    std::span<const Option> options;  // beside the general ones
    int (*run)(const ParsedWords& words);
};

/// Runs the verb that the first operand names, once its operands and options are right; else what
/// is wrong is told, and the status is wrong usage.
int RunVerb(std::string_view command, std::span<const Verb> verbs, const ParsedWords& words);

}  // namespace velloran::cli
