// `velloran set-dpi`: one resolution for the pictures of a folder.

#include <algorithm>
#include <optional>
#include <string>

#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "cli/Json.h"
#include "cli/StopSignal.h"
#include "cli/TerminalAsker.h"
#include "cli/ToolOptions.h"
#include "documents/measure/FileTypes.h"
#include "documents/measure/SetDpi.h"
#include "text/CommandLabels.h"
#include "text/Phrase.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

int WrongUsage(const std::string& text) {
    PrintError(text);
    return kWrongUsage;
}

Json OutcomeAsJson(const DpiOutcome& outcome) {
    Json failed = Json::Array();
    for (const DpiFailure& failure : outcome.failures)
        failed.Append(Json::Object().AddPath(failure.path).Add("message", failure.message));
    Json json = Json::Object();
    json.Add("files", outcome.files);
    json.Add("changed", outcome.changed);
    json.Add("failed", failed);
    return json;
}

}  // namespace

int RunSetDpi(const ParsedWords& words) {
    DpiRequest request;
    const std::optional<std::int32_t> dpi = ParseInt32(words.operands[0]);
    if (!dpi || *dpi < 0)
        return WrongUsage(
            Phrase(labels::kNotWithin, {"DPI", words.operands[0], "0", std::to_string(kMostDpi)}));
    request.dpi = *dpi;
    if (!FillWalk(words, words.operands[1], DpiFileTypes(), request.walk))
        return kWrongUsage;
    request.log = LogOf(words);
    CatchStopSignals();
    TerminalAsker asker(words, /*tellsEnd=*/!words.Has(Option::kJson));
    const DpiOutcome outcome = SetFolderDpi(request, asker);
    if (!outcome.refusal.empty())
        return WrongUsage(ToUtf8(outcome.refusal));
    if (words.Has(Option::kJson))
        PrintJson(OutcomeAsJson(outcome));
    const bool storage = std::ranges::any_of(outcome.failures, &DpiFailure::storage);
    return FinishOutput(StatusOfFailures(!outcome.failures.empty(), storage));
}

}  // namespace velloran::cli
