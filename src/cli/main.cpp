// `velloran`, the command line: one subcommand a call.

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <string>
#include <vector>

#include "cli/Arguments.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/ExitStatus.h"

namespace velloran::cli {

namespace {

int TellUsage(const CLI::App& program, const CLI::ParseError& problem) {
    std::string command = "velloran";
    for (const CLI::App* called : program.get_subcommands())
        command += " " + called->get_name();
    PrintError(Unguard(problem.what()));
    PrintNote(fmt::format("Try '{} --help'.", command));
    return kWrongUsage;
}

int Run(int count, const char* const* words) {
    CLI::App program("Cleans up scanned comics and books.", "velloran");
    program.set_version_flag("--version", "velloran " VELLORAN_VERSION);
    program.require_subcommand(1);
    Work chosen;
    AddEnhanceCommand(program, chosen);
    AddBatchCommand(program, chosen);
    AddDescribeCommand(program, chosen);
    AddParamsCommand(program, chosen);
    AddInfoCommand(program, chosen);
    AddDetectCommand(program, chosen);
    std::vector<std::string> arguments = GuardArguments(count, words);
    std::reverse(arguments.begin(), arguments.end());  // as the parser takes them
    try {
        program.parse(arguments);
    } catch (const CLI::Success& request) {
        program.exit(request);  // help and version, on standard output
        return FinishOutput(kDone);
    } catch (const CLI::ParseError& problem) {
        return TellUsage(program, problem);
    }
    return chosen();
}

}  // namespace

}  // namespace velloran::cli

int main(int count, char** words) {
    try {
        return velloran::cli::Run(count, words);
    } catch (const std::exception& failure) {  // out of memory, outside of any file's work
        velloran::cli::PrintError(failure.what());
        return velloran::cli::kNotWritten;
    }
}
