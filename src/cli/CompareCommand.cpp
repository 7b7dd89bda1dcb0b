// `velloran compare`: how two pictures differ, or the pictures of two folders.

#include <algorithm>
#include <optional>
#include <string>

#include "cli/Causes.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "cli/Json.h"
#include "cli/StopSignal.h"
#include "cli/TerminalAsker.h"
#include "core/ProcessorCount.h"
#include "core/StepContext.h"
#include "documents/compare/CompareExport.h"
#include "documents/compare/CompareFolders.h"
#include "text/CommandLabels.h"
#include "text/Labels.h"
#include "text/Phrase.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

int WrongUsage(const std::string& text) {
    PrintError(text);
    return kWrongUsage;
}

/// An array by channel, R G B or grey alone.
template <typename Of>
Json ByChannel(const DiffStats& stats, Of&& of) {
    Json json = Json::Array();
    for (int channel = stats.channels; channel-- > 0;)
        json.Append(of(static_cast<std::size_t>(channel)));
    return json;
}

/// The keys that both forms have; null where the files are identical.
void AddStatistics(const DiffStats& stats, Json& json) {
    const bool same = stats.IsIdentical();
    json.Add("different", static_cast<std::int64_t>(stats.differentPixels));
    const auto add = [&](std::string_view key, auto&& of) {
        json.Add(key, same ? Json() : ByChannel(stats, of));
    };
    add("maxima", [&](std::size_t c) { return Json(stats.maxima[c]); });
    add("means", [&](std::size_t c) { return Json(stats.means[c]); });
    add("deviations", [&](std::size_t c) { return Json(stats.deviations[c]); });
}

Json PairAsJson(const DiffStats& stats) {
    Json json = Json::Object();
    json.Add("identical", stats.IsIdentical());
    json.Add("width", stats.width);
    json.Add("height", stats.height);
    json.Add("bpp", stats.channels * 8);
    json.Add("pixels", static_cast<std::int64_t>(stats.Pixels()));
    AddStatistics(stats, json);
    json.Add("similarity", stats.IsIdentical() ? Json() : ByChannel(stats, [&](std::size_t c) {
                 return Json(static_cast<double>(stats.similarity[c]));
             }));
    return json;
}

/// The exports of a pair, each where its option names a file.
class Exports {
 public:
    Exports(const ParsedWords& words, const CDibImage& image1, const CDibImage& image2,
            const DiffStats& stats)
        : words_(words), image1_(image1), image2_(image2), stats_(stats) {}

    int Write() {
        Export(Option::kAll, [&](const std::string& file, FileError* error) {
            return ExportPixels(image1_, image2_, /*nonZeroOnly=*/false, file, error);
        });
        Export(Option::kNonZero, [&](const std::string& file, FileError* error) {
            return ExportPixels(image1_, image2_, /*nonZeroOnly=*/true, file, error);
        });
        Export(Option::kLevels, [&](const std::string& file, FileError* error) {
            return ExportLevels(stats_, file, error);
        });
        if (!words_.Has(Option::kDifference) && !words_.Has(Option::kFrequency))
            return status_;
        CDibImage difference;
        if (!BuildDiffImage(image1_, image2_, difference)) {
            PrintError(ToUtf8(labels::kLogRows[6]));
            return kNotWritten;
        }
        Export(Option::kFrequency, [&](const std::string& file, FileError* error) {
            return ExportFrequency(difference, file, error);
        });
        Export(Option::kDifference, [&](const std::string& file, FileError* error) {
            return ExportDifference(difference, file, error);
        });
        return status_;
    }

 private:
    template <typename Work>
    void Export(Option option, Work&& work) {
        const std::optional<std::string> file = words_.Text(option);
        FileError error;
        if (!file || work(*file, &error))
            return;
        PrintFailure({.path = *file,
                      .message = labels::kCompareFileFailed,
                      .cause = CauseText(error.reason),
                      .detail = error.detail});
        const int failed = error.cause == FileError::Cause::kContent ? kFileFailed : kNotWritten;
        status_ = std::max<int>(status_, failed);
    }

    const ParsedWords& words_;
    const CDibImage& image1_;
    const CDibImage& image2_;
    const DiffStats& stats_;
    int status_ = kDone;
};

int TellRefusal(const ParsedWords& words, const PairRefusal& refusal) {
    if (words.Has(Option::kJson) && !refusal.isUsage)
        PrintJson(Json::Object().Add("error", refusal.message));
    if (refusal.isUsage)
        return WrongUsage(ToUtf8(refusal.message));
    if (refusal.path.empty())
        PrintError(ToUtf8(refusal.message));
    else
        PrintFailure({.path = refusal.path,
                      .message = refusal.message,
                      .cause = CauseText(refusal.error.reason),
                      .detail = refusal.error.detail});
    return FinishOutput(kFileFailed);
}

int DifferStatus(const ParsedWords& words, bool differ) {
    constexpr int kDiffer = 3;
    return differ && words.Has(Option::kExitCode) ? kDiffer : kDone;
}

int ComparePair(const ParsedWords& words) {
    SetInnerThreads(CountProcessors());
    const StepContext context{CancelToken(StopFlag())};
    CDibImage image1, image2;
    const PairRefusal refusal =
        LoadPair(words.operands[0], words.operands[1], /*keepsDepth=*/false, image1, image2);
    if (!refusal.message.empty())
        return TellRefusal(words, refusal);
    DiffStats stats;
    if (!ComputeDiff(image1, image2, /*withSimilarity=*/true, stats)) {
        PrintError(ToUtf8(labels::kLogRows[6]));
        return kNotWritten;
    }
    if (StopStatus() != 0)
        return StopStatus();
    const int status = Exports(words, image1, image2, stats).Write();
    if (words.Has(Option::kJson)) {
        PrintJson(PairAsJson(stats));
    } else {
        for (const auto& [label, value] : FieldsOf(stats))
            Print(ToUtf8(label) + "\t" + value + "\n");
    }
    return FinishOutput(status != kDone ? status : DifferStatus(words, !stats.IsIdentical()));
}

void PrintColumns(const std::vector<std::string>& columns) {
    std::string line;
    for (const std::string& column : columns)
        line += (line.empty() ? "" : "\t") + OutputName(column);
    Print(line + "\n");
}

int CompareTwoFolders(const ParsedWords& words) {
    CompareFoldersRequest request{words.operands[0], words.operands[1],
                                  words.Number(Option::kJobs).value_or(0)};
    TerminalAsker asker(words);
    const bool asJson = words.Has(Option::kJson);
    if (!asJson)
        PrintColumns(ColumnTitles());
    Json rows = Json::Array();
    const CompareFoldersOutcome outcome =
        CompareFolders(request, asker, [&](const CompareRow& row) {
            if (!asJson) {
                PrintColumns(ColumnsOf(row));
                return;
            }
            Json json = Json::Object();
            json.Add("row", row.number);
            json.Add("name", row.name);
            AddStatistics(row.stats, json);
            rows.Append(json);
        });
    if (!outcome.refusal.empty())
        return WrongUsage(ToUtf8(outcome.refusal));
    if (outcome.wasStopped)
        return StopStatus();
    if (asJson)
        PrintJson(rows);
    PrintNote(ToUtf8(labels::kCompareDone));
    FileError error;
    const std::optional<std::string> file = words.Text(Option::kExport);
    if (file && !ExportRows(outcome.rows, *file, &error)) {
        PrintFailure({.path = *file,
                      .message = labels::kCompareFileFailed,
                      .cause = CauseText(error.reason),
                      .detail = error.detail});
        return FinishOutput(kNotWritten);
    }
    if (outcome.unreadable > 0)
        return FinishOutput(kFileFailed);
    const bool differ = std::ranges::any_of(
        outcome.rows, [](const CompareRow& row) { return !row.stats.IsIdentical(); });
    return FinishOutput(DifferStatus(words, differ));
}

}  // namespace

int RunCompare(const ParsedWords& words) {
    constexpr Option kOfPairs[] = {Option::kDifference, Option::kAll, Option::kNonZero,
                                   Option::kLevels, Option::kFrequency};
    const bool folders = words.Has(Option::kFolders);
    for (const Option option : kOfPairs)
        if (folders && words.Has(option))
            return WrongUsage(Phrase(labels::kExcludesOption,
                                     {RowOf(Option::kFolders).name, RowOf(option).name}));
    CatchStopSignals();
    return folders ? CompareTwoFolders(words) : ComparePair(words);
}

}  // namespace velloran::cli
