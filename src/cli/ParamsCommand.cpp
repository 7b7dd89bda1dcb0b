#include <fmt/format.h>

#include <span>
#include <string>

#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "cli/Json.h"
#include "params/ParaTable.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

/// Texts of a list stand behind their values.
std::string RangeOrList(const ParaRow& row) {
    std::string text;
    for (std::size_t i = 0; i < row.list.size(); ++i)
        text += fmt::format("{}{}={}", i == 0 ? "" : ", ", i, ToUtf8(row.list[i]));
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

Json TextsAsJson(std::span<const Label> texts) {
    Json list = texts.empty() ? Json() : Json::Array();
    for (const Label& entry : texts)
        list.Append(entry.Text());
    return list;
}

template <typename Ranges>
Json RangesAsJson(const Ranges& ranges) {
    Json all = Json::Array();
    for (const ParaRange& range : ranges)
        all.Append(Json::Array().Append(range.from).Append(range.to));
    return all;
}

Json FieldsAsJson(const ParaRow& row) {
    Json fields = Json::Array();
    for (const ParaField& field : row.fields)
        fields.Append(Json::Object()
                          .Add("name", field.name)
                          .Add("shift", field.shift)
                          .Add("bits", field.bits)
                          .Add("signed", field.isSigned)
                          .Add("list", TextsAsJson(field.list)));
    return fields;
}

/// Each step with the ranges of values at which it runs.
Json StepsAsJson(const ParaRow& row) {
    Json steps = Json::Array();
    for (const ParaGate& gate : row.gates)
        if (gate.step != 0)
            steps.Append(Json::Object()
                             .Add("step", gate.step)
                             .Add("from", gate.values.from)
                             .Add("to", gate.values.to));
    return steps;
}

void AddMeaning(const ParaRow& row, Json& json) {
    json.Add("kind", KindName(row.kind));
    json.Add("tab", row.tab == ParaTab::kNone ? Json() : Json(NameOf(row.tab)));
    json.Add("tabPlace", row.tabPlace == 0 ? Json() : Json(row.tabPlace));
    json.Add("group", row.set == ParaSet::kNoSet ? Json() : Json(NameOf(row.set)));
    json.Add("unit", row.unit == ParaUnit::kNoUnit ? Json() : Json(NameOf(row.unit)));
    json.Add("scale", Json::Object()
                          .Add("factor", row.scale.factor)
                          .Add("offset", row.scale.offset)
                          .Add("divisor", row.scale.divisor));
    json.Add("neutral", row.neutral ? Json(*row.neutral) : Json());
    json.Add("fields", FieldsAsJson(row));
    json.Add("enabledWhen", row.enabled.count == 0
                                ? Json()
                                : Json::Object()
                                      .Add("parameter", ParaRowOf(row.enabled.index).name)
                                      .Add("values", RangesAsJson(row.enabled.Ranges())));
    json.Add("steps", StepsAsJson(row));
}

Json RowAsJson(int index, const ParaRow& row) {
    Json json = Json::Object();
    json.Add("index", index);
    json.Add("name", row.name);
    json.Add("default", row.defaultValue);
    json.Add("min", row.min ? Json(*row.min) : Json());
    json.Add("max", row.max ? Json(*row.max) : Json());
    json.Add("list", TextsAsJson(row.list));
    json.Add("meaning", row.meaning.Text());
    AddMeaning(row, json);
    return json;
}

}  // namespace

int RunParams(const ParsedWords& words) {
    Json all = Json::Array();
    for (int index = 0; index < kParaCount; ++index) {
        const ParaRow& row = ParaRowOf(index);
        if (words.Has(Option::kJson))
            all.Append(RowAsJson(index, row));
        else
            Print(fmt::format("{}\t{}\t{}\t{}\t{}\n", index, row.name, row.defaultValue,
                              RangeOrList(row), ToUtf8(row.meaning)));
    }
    if (words.Has(Option::kJson))
        PrintJson(all);
    return FinishOutput(kDone);
}

}  // namespace velloran::cli
