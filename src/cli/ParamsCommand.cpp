#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "cli/Json.h"
#include "params/ParaTable.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

std::string RangeOrList(const ParaRow& row) {
    std::string text;
    for (const Label& entry : row.list)
        text += (text.empty() ? "" : ", ") + ToUtf8(entry);
    if (!row.list.empty() || (!row.min && !row.max))
        return text.empty() ? "-" : text;
    return fmt::format("{}..{}", row.min ? std::to_string(*row.min) : "",
                       row.max ? std::to_string(*row.max) : "");
}

Json RowAsJson(int index, const ParaRow& row) {
    Json json;
    json["index"] = index;
    json["name"] = row.name;
    json["default"] = row.defaultValue;
    json["min"] = row.min ? Json(*row.min) : Json();
    json["max"] = row.max ? Json(*row.max) : Json();
    Json list;
    for (const Label& entry : row.list)
        list.push_back(ToUtf8(entry));
    json["list"] = list;
    json["meaning"] = ToUtf8(row.meaning);
    return json;
}

int PrintParams(bool asJson) {
    Json all = Json::array();
    for (int index = 0; index < kParaCount; ++index) {
        const ParaRow& row = ParaRowOf(index);
        if (asJson)
            all.push_back(RowAsJson(index, row));
        else
            Print(fmt::format("{}\t{}\t{}\t{}\t{}\n", index, row.name, row.defaultValue,
                              RangeOrList(row), ToUtf8(row.meaning)));
    }
    if (asJson)
        PrintJson(all);
    return FinishOutput(kDone);
}

}  // namespace

void AddParamsCommand(CLI::App& program, Work& chosen) {
    CLI::App* command = program.add_subcommand("params", "List the parameters");
    auto asJson = std::make_shared<bool>(false);
    command->add_flag("--json", *asJson, "As an array of objects");
    command->callback([asJson, &chosen] { chosen = [asJson] { return PrintParams(*asJson); }; });
}

}  // namespace velloran::cli
