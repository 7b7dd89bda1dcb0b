#pragma once

// The subcommands. Each adds its options to the parser and, when it is the one called, leaves its
// work in `chosen`.

#include <functional>
#include <memory>

#include "cli/BlockSource.h"

namespace CLI {
class App;
}

namespace velloran::cli {

/// The work of the subcommand that was called; returns the exit status.
using Work = std::function<int()>;

void AddEnhanceCommand(CLI::App& program, Work& chosen);
void AddBatchCommand(CLI::App& program, Work& chosen);
void AddDescribeCommand(CLI::App& program, Work& chosen);
void AddParamsCommand(CLI::App& program, Work& chosen);
void AddInfoCommand(CLI::App& program, Work& chosen);
void AddDetectCommand(CLI::App& program, Work& chosen);

/// -s, --setting, --settings-store and -n, which several subcommands share.
std::shared_ptr<ParameterOptions> AddParameterOptions(CLI::App& command);

/// Fills the global block and prints the warnings. False after an error was printed: wrong usage.
bool PrepareGlobalBlock(const ParameterOptions& options);

/// Output is flushed; kNotWritten instead of `status` when that fails and `status` tells of no
/// failure to write yet.
int FinishOutput(int status);

}  // namespace velloran::cli
