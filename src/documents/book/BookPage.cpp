#include "documents/book/BookPage.h"

#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <utility>

#include "batch/BatchRules.h"
#include "batch/PageMemory.h"
#include "batch/RunLog.h"
#include "codecs/Formats.h"
#include "core/DibImage.h"
#include "documents/book/RowName.h"
#include "files/AutoExtension.h"
#include "files/EnhancePage.h"
#include "files/FileCopy.h"
#include "files/ImageFiles.h"
#include "files/LoadPage.h"
#include "files/SavePage.h"
#include "files/TargetNames.h"
#include "io/FileSource.h"
#include "params/TargetRule.h"
#include "text/Labels.h"
#include "text/Text.h"

namespace velloran {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestName = 255;  // bytes, on the file systems of the day

/// The type of a page's result, with its dot, by what the page is.
std::string ExtensionFor(const BookProject& project, const BookRow& row, const BatchTarget& names,
                         const CDibImage& image) {
    if (Is16BitColor(names.color))
        return ".bmp";
    if (project.rename == 0)
        return SameAsSourceExtension(image, row.source, UnpackTargetRule(project.ext).cropGif);
    return DottedExtension(PickAutoExtension(image, names.extensionPosition, project.ext));
}

class PageRun {
 public:
    PageRun(const BookPageRequest& request, const BookRow& row, FoundValues& found)
        : request_(request),
          row_(row),
          found_(found),
          source_(request.project->source / row.source),
          settings_(SettingsOfRow(*request.project, row)),
          names_(ReadBatchTarget(settings_)),
          load_(LoadRequestFor(settings_, [this](const CDibImage& image) {
              return KeepsAlpha("page" + Extension(image), image);
          })) {}

    FileOutcome Run(FileSource* source, const FileError& openError) {
        if (IsStopped() || !Read(source, openError) || IsStopped())
            return std::move(outcome_);
        if (Enhance() && !IsStopped() && Save())
            outcome_.end = FileOutcome::End::kConverted;
        return std::move(outcome_);
    }

    const Settings& Values() const { return settings_; }
    const fs::path& Source() const { return source_; }

 private:
    bool IsStopped() const { return request_.stop->load(std::memory_order_relaxed); }
    void Stage(std::u16string_view text) const {
        if (request_.stage)
            request_.stage(source_.native(), text);
    }
    bool Fail(const fs::path& path, int logRow, FileError error) {
        outcome_.end = FileOutcome::End::kFailed;
        outcome_.failedPath = path;
        outcome_.logRow = logRow;
        outcome_.error = std::move(error);
        outcome_.writeFailed = logRow == kLogWriteFailed || logRow == kLogOutOfMemory;
        return false;
    }
    std::string Extension(const CDibImage& image) const {
        return ExtensionFor(*request_.project, row_, names_, image);
    }

    bool Read(FileSource* source, const FileError& openError) {
        Stage(labels::kStageRead);
        FileError error = openError;
        if (source == nullptr || !LoadPage(*source, source_, load_, page_, &error)) {
            const bool noMemory = error.reason == FileReason::kNoMemory;
            return Fail(source_, noMemory ? kLogOutOfMemory : kLogReadFailed, std::move(error));
        }
        outcome_.bytesIn = static_cast<std::int64_t>(source->Size());
        outcome_.pictures = page_.notes.pictures;
        if (page_.notes.damaged)
            outcome_.damage = page_.notes.reason.empty() ? "damaged" : page_.notes.reason;
        return true;
    }

    bool Enhance() {
        RunRequest run;
        run.settings = settings_;
        run.cancel = CancelToken(*request_.stop);
        run.label = [this](std::u16string_view label) { Stage(label); };
        run.deskewEdge = settings_[PARA_DESKEW_EDGE];
        run.wantsSure = request_.wantsSure;
        const RunReport report = EnhancePage(load_, page_, std::move(run));
        if (report.end != RunEnd::kDone)
            return false;
        found_ = report.found;
        outcome_.sure = report.sure;
        if (report.IsWhole())
            return true;
        FileError error;
        const bool noMemory = report.Worst() == StepResult::kNoMemory;
        if (noMemory)
            FailStorage(&error, report.Detail(), FileReason::kNoMemory);
        else
            FailContent(&error, report.Detail());
        return Fail(source_, noMemory ? kLogOutOfMemory : kLogConversionFailed, std::move(error));
    }

    bool Save() {
        const std::string name = LowerCase(NameOfText(row_.target) + Extension(page_.image));
        const fs::path target = request_.target / name;
        Stage(labels::kStageSave);
        FileError error;
        if (name.size() > kLongestName) {
            FailContent(&error, "the name is too long", FileReason::kNameTooLong);
            return Fail(target, kLogWriteFailed, std::move(error));
        }
        if (!SavePage(target, names_, page_, settings_, &error))
            return Fail(target, kLogWriteFailed, std::move(error));
        if (const auto written = ReadFileStatus(target))
            outcome_.bytesOut = static_cast<std::int64_t>(written->st_size);
        return true;
    }

    const BookPageRequest& request_;
    const BookRow& row_;
    FoundValues& found_;
    const fs::path source_;
    const Settings settings_;
    const BatchTarget names_;
    const LoadPageRequest load_;
    LoadedPage page_;
    FileOutcome outcome_;
};

FileOutcome FailedBy(const fs::path& source, int logRow, FileError error) {
    FileOutcome outcome;
    outcome.end = FileOutcome::End::kFailed;
    outcome.failedPath = source;
    outcome.logRow = logRow;
    outcome.writeFailed = logRow == kLogOutOfMemory;
    outcome.error = std::move(error);
    return outcome;
}

}  // namespace

Settings SettingsOfRow(const BookProject& project, const BookRow& row) {
    Settings settings;
    settings.values = row.values;
    settings.Set(PARA_TGT_FILES, project.ext);
    return settings;
}

std::u16string RefuseColors(const BookProject& project, std::string& source) {
    if (project.rename == 0)
        return {};  // pages keep types that suit them
    for (const BookRow& row : project.rows) {
        const BatchTarget names = ReadBatchTarget(SettingsOfRow(project, row));
        if (const std::u16string_view refusal = RefuseTarget(names); !refusal.empty()) {
            source = row.source;
            return std::u16string(refusal);
        }
    }
    return {};
}

PageWork BeginBookPage(const BookPageRequest& request, std::size_t row, FoundValues& found) {
    PageWork work;
    auto source = std::make_shared<FileSource>();
    auto error = std::make_shared<FileError>();
    const BookRow& page = request.project->rows[row];
    const fs::path path = request.project->source / page.source;
    bool isOpen = false;
    if (!request.stop->load(std::memory_order_relaxed)) {
        isOpen = source->Open(path, error.get());
        if (isOpen && !request.isAlone)
            work.need = PageMemory(*source, path, SettingsOfRow(*request.project, page));
    }
    work.run = [&request, &page, &found, source, error, isOpen, path] {
        try {
            return PageRun(request, page, found).Run(isOpen ? source.get() : nullptr, *error);
        } catch (const std::bad_alloc&) {
            FileError failure;
            FailNoMemory(&failure);
            return FailedBy(path, kLogOutOfMemory, std::move(failure));
        } catch (const std::exception& thrown) {
            FileError failure;
            FailContent(&failure, thrown.what());
            return FailedBy(path, kLogConversionFailed, std::move(failure));
        }
    };
    return work;
}

PreviewEnd RunBookPreview(const BookProject& project, std::size_t row, int stop, CancelToken cancel,
                          CDibImage& image, FoundValues& found, FileError* error) {
    const BookRow& page = project.rows[row];
    const Settings settings = SettingsOfRow(project, page);
    LoadedPage loaded;
    const LoadPageRequest load = LoadRequestFor(settings, {});
    if (!LoadPage(project.source / page.source, load, loaded, error))
        return PreviewEnd::kUnreadable;
    RunRequest run;
    run.settings = settings;
    run.mode = RunMode::kPreview;
    run.stop = stop;
    run.cancel = cancel;
    run.deskewEdge = settings[PARA_DESKEW_EDGE];
    const RunReport report = EnhancePage(load, loaded, std::move(run));
    if (report.end != RunEnd::kDone)
        return PreviewEnd::kCancelled;
    if (!report.IsWhole()) {
        FailContent(error, report.Detail());
        return PreviewEnd::kFailed;
    }
    found = report.found;
    image.Transfer(loaded.image);
    return PreviewEnd::kDone;
}

}  // namespace velloran
