#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "cli/Arguments.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "cli/Json.h"
#include "files/FileType.h"
#include "files/ImageFiles.h"
#include "text/Labels.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

struct InfoOptions {
    std::vector<std::string> files;
    bool json = false;
};

Json InfoAsJson(const std::string& path, int type, const ImageInfo& info, bool read) {
    Json json;
    json["path"] = path;
    json["type"] = type;
    json["typeName"] = FileTypeName(type);
    json["width"] = info.width;
    json["height"] = info.height;
    json["bpp"] = info.bitsPerPixel;
    json["colours"] = info.colorsUsed;
    json["xDpi"] = info.xDpi;
    json["yDpi"] = info.yDpi;
    json["grey"] = info.grey;
    json["error"] = read ? Json() : Json(ToUtf8(labels::kLoadFailed));
    return json;
}

int PrintInfo(const InfoOptions& options) {
    int status = kDone;
    Json all = Json::array();
    for (const std::string& path : Unguard(options.files)) {
        int type = kTypeUnknown;
        ImageInfo info;
        const bool read = ReadImageInfo(path, type, info);
        if (!read) {
            info = {.xDpi = 0, .yDpi = 0};
            PrintFailure(path, labels::kLoadFailed);
            status = kFileFailed;
        }
        if (options.json)
            all.push_back(InfoAsJson(path, type, info, read));
        else if (read)
            Print(fmt::format("{}\t{}\t{}\t{}\t{}\t{}\t{}\t{}\t{}\n", path, type,
                              FileTypeName(type), info.width, info.height, info.bitsPerPixel,
                              info.colorsUsed, info.xDpi, info.yDpi));
    }
    if (options.json)
        PrintJson(all);
    return FinishOutput(status);
}

}  // namespace

void AddInfoCommand(CLI::App& program, Work& chosen) {
    auto options = std::make_shared<InfoOptions>();
    CLI::App* command = program.add_subcommand("info", "Tell size, depth and resolution of files");
    command->add_option("FILE", options->files, "Pictures")->required();
    command->add_flag("--json", options->json, "As an array of objects");
    command->callback([options, &chosen] { chosen = [options] { return PrintInfo(*options); }; });
}

}  // namespace velloran::cli
