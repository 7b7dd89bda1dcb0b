#include <fmt/format.h>

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/BlockSource.h"
#include "cli/Causes.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "cli/Json.h"
#include "cli/NearestWord.h"
#include "cli/StopSignal.h"
#include "core/ProcessorCount.h"
#include "dewarping/CurvePoints.h"
#include "files/LoadPage.h"
#include "params/ParaBlock.h"
#include "pipeline/Findings.h"
#include "text/CommandLabels.h"
#include "text/Labels.h"
#include "text/Phrase.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

constexpr int kOutOfMemoryRow = 6;  // of the log

/// A value of a finding in both forms.
struct Field {
    std::string_view key;
    Json json;
    std::string text;
};
using Fields = std::vector<Field>;

Field Whole(std::string_view key, int value) {
    return {key, value, std::to_string(value)};
}
Field Real(std::string_view key, double value) {
    value += 0.0;  // no number is -0
    return {key, value, fmt::format("{:.6g}", value)};
}
Field Flag(std::string_view key, bool value) {
    return {key, value, value ? "true" : "false"};
}
Field Pair(std::string_view key, int first, int second) {
    return {key, Json::Array().Append(first).Append(second), fmt::format("{},{}", first, second)};
}

Fields FieldsOf(const SkewFinding& skew) {
    return {Real("sure", skew.sure), Whole("mode", skew.skew.mode), Real("angle", skew.skew.angle),
            Real("confidence", skew.skew.confidence), Whole("turn", turnOfSkew(skew.skew))};
}
Fields FieldsOf(const BoxFinding& box) {
    return {Real("sure", box.sure),        Flag("found", box.found),
            Whole("left", box.box.left),   Whole("top", box.box.top),
            Whole("right", box.box.right), Whole("bottom", box.box.bottom),
            Real("inkLost", box.inkLost)};
}
Fields FieldsOf(const SplitFinding& split) {
    const UprightLines& lines = split.lines;
    return {Real("sure", split.sure), Flag("found", lines.seesMid),
            Pair("left", lines.left.top, lines.left.bottom),
            Pair("right", lines.right.top, lines.right.bottom),
            Pair("mid", lines.mid.top, lines.mid.bottom)};
}
Fields FieldsOf(const CornersFinding& finding) {
    const TrueCorners& at = finding.corners;
    return {Real("sure", finding.sure),   Flag("found", finding.found),
            Pair("lt", at[0].x, at[0].y), Pair("rt", at[1].x, at[1].y),
            Pair("rb", at[2].x, at[2].y), Pair("lb", at[3].x, at[3].y)};
}

Field Points(std::string_view key, const std::array<std::int32_t, dewarping::kCurvePoints>& curve) {
    Json json = Json::Array();
    std::string text;
    for (const std::int32_t packed : curve) {
        const QT::QPointF point = dewarping::unpackPoint(packed);
        const int x = static_cast<int>(point.x), y = static_cast<int>(point.y);
        json.Append(Json::Array().Append(x).Append(y));
        text += fmt::format("{}{},{}", text.empty() ? "" : ";", x, y);
    }
    return {key, json, text};
}
Fields FieldsOf(const dewarping::CurveFinding& finding) {
    return {Real("sure", finding.sure), Flag("found", finding.found), Points("top", finding.top),
            Points("bottom", finding.bottom)};
}

/// The findings that were made, in their order.
std::vector<std::pair<Finding, Fields>> FieldsOf(const PageFindings& page) {
    std::vector<std::pair<Finding, Fields>> all;
    if (page.skew)
        all.emplace_back(Finding::kSkew, FieldsOf(*page.skew));
    if (page.box)
        all.emplace_back(Finding::kBox, FieldsOf(*page.box));
    if (page.split)
        all.emplace_back(Finding::kSplit, FieldsOf(*page.split));
    if (page.corners)
        all.emplace_back(Finding::kCorners, FieldsOf(*page.corners));
    if (page.curves)
        all.emplace_back(Finding::kCurves, FieldsOf(*page.curves));
    if (page.darkLevel)
        all.emplace_back(Finding::kDark, Fields{Whole("level", *page.darkLevel)});
    return all;
}

/// "path TAB finding TAB sure TAB key=value ..."; a level has nothing to be sure of.
std::string LineOf(const std::string& path, Finding finding, const Fields& fields) {
    std::string values, sure = "-";
    for (const Field& field : fields) {
        if (field.key == "sure")
            sure = field.text;
        else
            values += fmt::format("{}{}={}", values.empty() ? "" : " ", field.key, field.text);
    }
    return fmt::format("{}\t{}\t{}\t{}\n", OutputName(path), NameOf(finding), sure, values);
}

/// The words of --only; nothing after an error was printed.
std::optional<WantedFindings> Wanted(const ParsedWords& words) {
    WantedFindings wanted{};
    const std::optional<std::string> only = words.Text(Option::kOnly);
    if (!only) {
        wanted.fill(true);
        wanted[static_cast<std::size_t>(Finding::kCurves)] = false;  // takes long
        return wanted;
    }
    std::vector<std::string> names;
    for (std::size_t i = 0; i < kFindingCount; ++i)
        names.emplace_back(NameOf(static_cast<Finding>(i)));
    for (std::size_t from = 0; from <= only->size();) {
        const std::size_t comma = std::min(only->find(',', from), only->size());
        const std::string word = only->substr(from, comma - from);
        const std::optional<Finding> finding = FindingOfName(word);
        if (!finding) {
            PrintError(Phrase(labels::kNoneOfWords, {RowOf(Option::kOnly).name, word,
                                                     fmt::format("{}", fmt::join(names, ", "))}) +
                       Suggestion(word, names));
            return std::nullopt;
        }
        wanted[static_cast<std::size_t>(*finding)] = true;
        from = comma + 1;
    }
    return wanted;
}

class MeasureCommand {
 public:
    MeasureCommand(const WantedFindings& wanted, bool asJson) : wanted_(wanted), asJson_(asJson) {}

    int Run(const std::vector<std::string>& paths) {
        for (const std::string& path : paths) {
            Measure(path);
            if (StopFlag().load())
                return StopStatus();
        }
        if (asJson_)
            PrintJson(all_);
        return FinishOutput(status_);
    }

 private:
    void Measure(const std::string& path) {
        const Settings settings = GlobalBlock().GetSettings();
        LoadedPage page;
        FileError error;
        if (!LoadPage(path, LoadRequestFor(settings, {}), page, &error)) {
            const bool isStorage = error.cause == FileError::Cause::kStorage;
            Fail({.path = path,
                  .message = labels::kLoadFailed,
                  .cause = CauseText(error.reason),
                  .detail = error.detail},
                 isStorage ? kNotWritten : kFileFailed);
            return;
        }
        if (page.notes.damaged)
            PrintWarning(path + ": " + ToUtf8(labels::kDamagedSource));
        const PageFindings findings =
            MeasurePage(page.image, settings.values, wanted_, CancelToken(StopFlag()));
        if (StopFlag().load())
            return;
        if (findings.outOfMemory) {
            Fail({.path = path, .message = labels::kLogRows[kOutOfMemoryRow]}, kNotWritten);
            return;
        }
        Tell(path, page.image, findings);
    }

    void Fail(const FailureText& failure, int status) {
        PrintFailure(failure);
        status_ = std::max(status_, status);
        if (!asJson_)
            return;
        Json json = Json::Object();
        json.AddPath(failure.path).Add("error", failure.message);
        all_.Append(json.Add("width", 0).Add("height", 0));
    }

    void Tell(const std::string& path, const CDibImage& image, const PageFindings& findings) {
        Json json = Json::Object();
        json.AddPath(path).Add("error", Json());
        json.Add("width", image.GetWidth()).Add("height", image.GetHeight());
        for (const auto& [finding, fields] : FieldsOf(findings)) {
            if (!asJson_)
                Print(LineOf(path, finding, fields));
            Json object = Json::Object();
            for (const Field& field : fields)
                object.Add(field.key, field.json);
            json.Add(NameOf(finding), object);
        }
        all_.Append(json);
    }

    const WantedFindings wanted_;
    const bool asJson_;
    int status_ = kDone;
    Json all_ = Json::Array();
};

}  // namespace

int RunMeasure(const ParsedWords& words) {
    const std::optional<WantedFindings> wanted = Wanted(words);
    if (!wanted || !PrepareGlobalBlock(words))
        return kWrongUsage;
    CatchStopSignals();
    SetInnerThreads(CountProcessors());
    return MeasureCommand(*wanted, words.Has(Option::kJson)).Run(words.operands);
}

}  // namespace velloran::cli
