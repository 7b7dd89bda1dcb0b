// The verbs of `velloran book` that run pages: convert and preview.

#include <algorithm>
#include <filesystem>
#include <string>

#include "cli/BookVerbs.h"
#include "cli/Causes.h"
#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "cli/Json.h"
#include "cli/ProcessUsage.h"
#include "cli/StopSignal.h"
#include "cli/ToolOptions.h"
#include "core/DibImage.h"
#include "core/PixelMemory.h"
#include "core/ProcessorCount.h"
#include "documents/book/BookApply.h"
#include "documents/book/BookConvert.h"
#include "documents/book/BookPage.h"
#include "documents/book/RowName.h"
#include "files/ImageFiles.h"
#include "files/SavePage.h"
#include "text/CommandLabels.h"
#include "text/Labels.h"
#include "text/Phrase.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

namespace fs = std::filesystem;

Json Report(const BookConvertOutcome& outcome, double cpuSeconds) {
    Json failed = Json::Array();
    for (const BatchFailure& failure : outcome.failures)
        failed.Append(Json::Object().AddPath(failure.path).Add("message", failure.message));
    Json damaged = Json::Array();
    for (const std::string& path : outcome.damaged)
        damaged.Append(path);
    Json json = Json::Object();
    json.Add("files", outcome.files);
    json.Add("converted", outcome.converted);
    json.Add("failed", failed);
    json.Add("damaged", damaged);
    json.Add("otherTypes", 0);
    json.Add("seconds", outcome.seconds);
    json.Add("cpuSeconds", cpuSeconds);
    json.Add("bytesIn", outcome.bytesIn);
    json.Add("bytesOut", outcome.bytesOut);
    json.Add("peakMemory", PeakMemory());
    return json;
}

/// The status of a run that did not come to its end; nothing for one that did.
std::optional<int> StatusBefore(const BookConvertOutcome& outcome, const OpenBook& book) {
    using End = BookConvertOutcome::End;
    switch (outcome.end) {
        case End::kNothing:
            PrintFailure({.path = book.project.source.native(), .message = outcome.message});
            return kFileFailed;
        case End::kRefused:
            return WrongBookUsage((outcome.path.empty() ? "" : outcome.path + ": ") +
                                  ToUtf8(outcome.message));
        case End::kNoTarget:
            PrintFailure({.path = outcome.path,
                          .message = outcome.message,
                          .cause = CauseText(outcome.error.reason),
                          .detail = outcome.error.detail});
            return kNotWritten;
        case End::kDeclined:
            return book.asker.StatusOfDeclined();
        case End::kStopped:
        case End::kDone:
            break;
    }
    return std::nullopt;
}

}  // namespace

int RunBookConvert(const ParsedWords& words) {
    OpenBook book(words, OpenBook::Use::kChange, /*tellsEnd=*/!words.Has(Option::kJson));
    if (const std::optional<int> failed = book.Open())
        return *failed;
    const BookProject before = book.project;
    if (const std::optional<std::string> target = words.Text(Option::kTarget))
        book.project.target = TextOfName(fs::absolute(*target).lexically_normal().native());
    const double cpuAtStart = CpuSeconds();
    KeepFreedMemory();
    const BookConvertOutcome outcome =
        ConvertAll(book.project,
                   {.jobs = words.Number(Option::kJobs).value_or(0),
                    .log = LogOf(words),
                    .review = words.Text(Option::kReview).value_or("")},
                   book.asker);
    if (const std::optional<int> status = StatusBefore(outcome, book))
        return *status;
    int saved = kDone;
    if (outcome.hasFound || book.project.target != before.target)
        saved = book.Save();
    if (outcome.end == BookConvertOutcome::End::kStopped)
        return StopStatus();
    if (words.Has(Option::kJson))
        PrintJson(Report(outcome, CpuSeconds() - cpuAtStart));
    const bool storage =
        saved == kNotWritten || std::ranges::any_of(outcome.failures, &BatchFailure::storage);
    return FinishOutput(StatusOfFailures(!outcome.failures.empty(), storage));
}

int RunBookPreviewVerb(const ParsedWords& words) {
    OpenBook book(words, OpenBook::Use::kRead);
    if (const std::optional<int> failed = book.Open())
        return *failed;
    const std::optional<std::size_t> row = book.RowOf(words.operands[2]);
    if (!row)
        return kWrongUsage;
    constexpr int kOutputTab = 5;
    const TabPreview codes = PreviewOf(*TabAt(words.Number(Option::kTab).value_or(kOutputTab)));
    const std::string side = words.Text(Option::kSide).value_or("right");
    const int stop = EqualIgnoringCase(std::string_view(side), "left") ? codes.left : codes.right;
    SetInnerThreads(CountProcessors());
    CDibImage image;
    FoundValues found;
    FileError error;
    const PreviewEnd end =
        RunBookPreview(book.project, *row, stop, CancelToken(StopFlag()), image, found, &error);
    const std::string source = (book.project.source / book.project.rows[*row].source).native();
    if (end == PreviewEnd::kCancelled)
        return StopStatus();
    if (end != PreviewEnd::kDone) {
        PrintFailure({.path = source,
                      .message = end == PreviewEnd::kUnreadable ? labels::kLoadFailed.Text()
                                                                : labels::kLogRows[25].Text(),
                      .cause = CauseText(error.reason),
                      .detail = error.detail});
        return kFileFailed;
    }
    const Settings settings = SettingsOfRow(book.project, book.project.rows[*row]);
    const PageTarget target = PageTargetOf(settings);
    const std::string& out = words.operands[3];
    SaveOptions options;
    options.quality = target.quality;
    options.dpi = target.dpi;
    if (!SaveImageAs(out, image, options, &error)) {
        PrintFailure({.path = out,
                      .message = labels::kSaveFailed,
                      .cause = CauseText(error.reason),
                      .source = source,
                      .detail = error.detail});
        return error.cause == FileError::Cause::kStorage ? kNotWritten : kFileFailed;
    }
    return kDone;
}

}  // namespace velloran::cli
