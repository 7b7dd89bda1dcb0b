#pragma once

// Scripts that complete the words of a command line, from the tables of commands and options.

#include <string>

namespace velloran::cli {

std::string BashCompletion();
/// With the meanings in the language that VELLORAN_LANG asks the shell for.
std::string ZshCompletion();

}  // namespace velloran::cli
