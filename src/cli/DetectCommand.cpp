#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "cli/Arguments.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "files/FileType.h"
#include "text/Labels.h"

namespace velloran::cli {

namespace {

struct DetectOptions {
    std::vector<std::string> files;
    bool byName = false;
};

bool CanBeRead(const std::string& path) {
    std::error_code failure;
    return std::filesystem::is_regular_file(path, failure) && ::access(path.c_str(), R_OK) == 0;
}

/// A file that cannot be read is told by its name, and that it could not be read.
int PrintTypes(const DetectOptions& options) {
    constexpr int kOpenFailed = 1;  // row of the log
    int status = kDone;
    for (const std::string& path : Unguard(options.files)) {
        const int type = DetectFileType(path, options.byName ? 0 : 1);
        Print(fmt::format("{}\t{}\n", type, path));
        if (!options.byName && !CanBeRead(path)) {
            PrintFailure(path, labels::kLogRows[kOpenFailed]);
            status = kFileFailed;
        }
    }
    return FinishOutput(status);
}

}  // namespace

void AddDetectCommand(CLI::App& program, Work& chosen) {
    auto options = std::make_shared<DetectOptions>();
    CLI::App* command = program.add_subcommand("detect", "Tell the type of files");
    command->add_option("FILE", options->files, "Files")->required();
    command->add_flag("--by-name", options->byName, "Look at the extension alone");
    command->callback([options, &chosen] { chosen = [options] { return PrintTypes(*options); }; });
}

}  // namespace velloran::cli
