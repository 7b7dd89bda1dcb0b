// `velloran stats`: sizes and resolutions of the pictures in a folder.

#include <optional>
#include <string>

#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "cli/Json.h"
#include "cli/StopSignal.h"
#include "cli/TerminalAsker.h"
#include "cli/ToolOptions.h"
#include "documents/measure/FileStats.h"
#include "documents/measure/FileTypes.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

Json SizeAsJson(PageSize size) {
    return Json::Array()
        .Append(static_cast<std::int64_t>(size.width))
        .Append(static_cast<std::int64_t>(size.height));
}

Json CommonAsJson(const std::optional<CommonValue>& common) {
    if (!common)
        return {};
    return Json::Object()
        .Add("value", static_cast<std::int64_t>(common->value))
        .Add("count", static_cast<std::int64_t>(common->count))
        .Add("percent", common->percent);
}

Json StatsAsJson(const FileStats& stats) {
    const bool any = stats.Count() > 0;
    const auto number = [any](std::int64_t value) { return any ? Json(value) : Json(); };
    const auto size = [any](PageSize value) { return any ? SizeAsJson(value) : Json(); };
    Json json = Json::Object();
    json.Add("count", static_cast<std::int64_t>(stats.Count()));
    json.Add("maxWidth", number(stats.MaxWidth()));
    json.Add("minWidth", number(stats.MinWidth()));
    json.Add("maxHeight", number(stats.MaxHeight()));
    json.Add("minHeight", number(stats.MinHeight()));
    json.Add("maxArea", size(stats.MaxArea()));
    json.Add("minArea", size(stats.MinArea()));
    json.Add("maxDpi", number(stats.MaxDpi()));
    json.Add("minDpi", number(stats.MinDpi()));
    json.Add("common", Json::Object()
                           .Add("width", CommonAsJson(stats.CommonWidth()))
                           .Add("height", CommonAsJson(stats.CommonHeight()))
                           .Add("dpi", CommonAsJson(stats.CommonDpi())));
    return json;
}

}  // namespace

int RunStats(const ParsedWords& words) {
    FolderWalk walk;
    if (!FillWalk(words, words.operands[0], StatsFileTypes(), walk))
        return kWrongUsage;
    CatchStopSignals();
    TerminalAsker asker(words);
    const StatsOutcome outcome = MeasureFolder(walk, asker);
    if (!outcome.refusal.empty()) {
        PrintError(words.operands[0] + ": " + ToUtf8(outcome.refusal));
        return kWrongUsage;
    }
    if (outcome.wasStopped)
        return StopStatus();
    if (words.Has(Option::kJson))
        PrintJson(StatsAsJson(outcome.stats));
    else
        Print(WithLineFeeds(outcome.stats.Report()));
    const bool failed = outcome.failures > 0 || outcome.stats.Count() == 0;
    return FinishOutput(failed ? kFileFailed : kDone);
}

}  // namespace velloran::cli
