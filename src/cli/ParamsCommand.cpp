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

std::string_view KindName(ParaKind kind) {
    constexpr std::string_view kNames[] = {"number",     "list",   "flag", "color",
                                           "packedPair", "packed", "kept"};
    return kNames[static_cast<std::size_t>(kind)];
}

template <typename Ranges>
Json RangesAsJson(const Ranges& ranges) {
    Json json = Json::array();
    for (const ParaRange& range : ranges)
        json.push_back({range.from, range.to});
    return json;
}

Json FieldsAsJson(const ParaRow& row) {
    Json fields = Json::array();
    for (const ParaField& field : row.fields) {
        Json list;
        for (const Label& entry : field.list)
            list.push_back(ToUtf8(entry));
        fields.push_back({{"name", field.name},
                          {"shift", field.shift},
                          {"bits", field.bits},
                          {"signed", field.isSigned},
                          {"list", list}});
    }
    return fields;
}

/// Each step with the ranges of values at which it runs.
Json StepsAsJson(const ParaRow& row) {
    Json steps = Json::array();
    for (const ParaGate& gate : row.gates)
        if (gate.step != 0)
            steps.push_back(
                {{"step", gate.step}, {"from", gate.values.from}, {"to", gate.values.to}});
    return steps;
}

void AddMeaning(const ParaRow& row, Json& json) {
    json["kind"] = KindName(row.kind);
    json["tab"] = row.tab == ParaTab::kNone ? Json() : Json(NameOf(row.tab));
    json["tabPlace"] = row.tabPlace == 0 ? Json() : Json(row.tabPlace);
    json["group"] = row.set == ParaSet::kNoSet ? Json() : Json(NameOf(row.set));
    json["unit"] = row.unit == ParaUnit::kNoUnit ? Json() : Json(NameOf(row.unit));
    json["scale"] = {
        {"factor", row.scale.factor}, {"offset", row.scale.offset}, {"divisor", row.scale.divisor}};
    json["neutral"] = row.neutral ? Json(*row.neutral) : Json();
    json["fields"] = FieldsAsJson(row);
    json["enabledWhen"] = Json();
    if (row.enabled.count > 0)
        json["enabledWhen"] = {{"parameter", ParaRowOf(row.enabled.index).name},
                               {"values", RangesAsJson(row.enabled.Ranges())}};
    json["steps"] = StepsAsJson(row);
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
    AddMeaning(row, json);
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
