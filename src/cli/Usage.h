#pragma once

// What --help and --version say, from the tables of commands and options.

#include <string>

#include "cli/Commands.h"

namespace velloran::cli {

/// Of the whole program.
std::string ProgramHelp();
std::string CommandHelp(const Command& command);

/// "velloran batch [OPTIONS] SOURCE TARGET"
std::string SynopsisOf(const Command& command);

/// Name and version; with `verbose` also the libraries and the processor's form, a line each.
std::string VersionText(const std::string& version, bool verbose);

}  // namespace velloran::cli
