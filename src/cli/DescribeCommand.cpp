#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "params/ParaBlock.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

std::string WithLineFeeds(const std::u16string& text) {
    std::u16string plain;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text[i] != u'\r' || i + 1 == text.size() || text[i + 1] != u'\n')
            plain += text[i];
    return ToUtf8(plain);
}

}  // namespace

void AddDescribeCommand(CLI::App& program, Work& chosen) {
    CLI::App* command =
        program.add_subcommand("describe", "Tell in words what the parameters would do");
    auto cropSummary = std::make_shared<bool>(false);
    command->add_flag("--crop-summary", *cropSummary, "Only the short summary of the crop");
    const std::shared_ptr<ParameterOptions> parameters = AddParameterOptions(*command);
    command->callback([cropSummary, parameters, &chosen] {
        chosen = [cropSummary, parameters] {
            if (!PrepareGlobalBlock(*parameters))
                return static_cast<int>(kWrongUsage);
            const CParaBlock& block = GlobalBlock();
            Print(*cropSummary ? ToUtf8(block.CropSummary()) + "\n"
                               : WithLineFeeds(block.Describe()));
            return FinishOutput(kDone);
        };
    });
}

}  // namespace velloran::cli
