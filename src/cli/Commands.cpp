#include "cli/Commands.h"

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "cli/Arguments.h"
#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "params/ParaBlock.h"

namespace velloran::cli {

std::shared_ptr<ParameterOptions> AddParameterOptions(CLI::App& command) {
    auto options = std::make_shared<ParameterOptions>();
    const std::string group = "Parameters";
    command
        .add_option("-s,--set", options->sets,
                    "Set one parameter by its name, as PARA_CONTRAST=120; may be repeated")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false)
        ->group(group);
    CLI::Option* setting =
        command
            .add_option("--setting", options->setting, "Start from a section of a settings file")
            ->type_name("FILE[#SECTION]")
            ->group(group);
    command
        .add_option("--settings-store", options->storeFile, "Where named settings are looked up")
        ->type_name("FILE")
        ->group(group);
    command.add_option("-n,--named", options->named, "Start from a named setting of the store")
        ->type_name("NAME")
        ->excludes(setting)
        ->group(group);
    return options;
}

bool PrepareGlobalBlock(const ParameterOptions& options) {
    ParameterOptions typed = options;
    typed.sets = Unguard(std::move(typed.sets));
    for (std::optional<std::string>* word : {&typed.setting, &typed.named, &typed.storeFile})
        if (*word)
            **word = Unguard(std::move(**word));
    std::vector<std::string> warnings;
    const std::string problem = FillBlock(typed, GlobalBlock(), warnings);
    if (!problem.empty()) {
        PrintError(problem);
        return false;
    }
    for (const std::string& warning : warnings)
        PrintWarning(warning);
    return true;
}

int FinishOutput(int status) {
    if (!FlushOutput() && (status == kDone || status == kFileFailed))
        return kNotWritten;
    return status;
}

}  // namespace velloran::cli
