#include "batch/ConvertFile.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "batch/PageMemory.h"
#include "batch/RunLog.h"
#include "batch/RunSettings.h"
#include "batch/TargetFolders.h"
#include "core/DibImage.h"
#include "files/AutoExtension.h"
#include "files/EnhancePage.h"
#include "files/FileCopy.h"
#include "files/LoadPage.h"
#include "files/SavePage.h"
#include "files/TargetNames.h"
#include "io/FileSource.h"
#include "params/Settings.h"
#include "params/TargetRule.h"
#include "text/Labels.h"
#include "text/Text.h"

namespace velloran {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestName = 255;  // bytes, on the file systems of the day

/// A source, opened once: for what its head tells and for the load.
struct BegunFile {
    std::optional<struct stat> status;  // from before the read, which may move the access time
    std::unique_ptr<FileSource> source = std::make_unique<FileSource>();
    bool isOpen = false;
    FileError error;
};

constexpr std::int32_t kKindBits = 0xFF, kSecondPage = 0x100;  // of PARA_PAGE_SPLIT_TYPE
constexpr std::int32_t kRightFirst = 2, kLeftFirst = 3;

/// The values as they stand when the file begins, with the side of its half.
Settings SettingsFor(const ConvertRequest& request, const PlannedFile& file) {
    Settings settings = request.settings->Get();
    if (file.half == 0)
        return settings;
    const std::int32_t kind = settings[PARA_PAGE_SPLIT_TYPE] & kKindBits;
    const bool isRight = (file.half == 1) == (kind == kRightFirst);
    settings.Set(PARA_PAGE_SPLIT_TYPE, isRight ? kind | kSecondPage : kind);
    return settings;
}

/// False, with the error of before.
bool FailAs(const FileError& before, FileError& error) {
    error = before;
    return false;
}

/// The conversion of one file, step by step; each returns whether the next one follows.
class Conversion {
 public:
    Conversion(const ConvertRequest& request, const PlannedFile& file, BegunFile& begun,
               FileOutcome& outcome)
        : request_(request),
          file_(file),
          outcome_(outcome),
          settings_(SettingsFor(request, file)),
          load_(LoadRequestFor(settings_,
                               [this](const CDibImage& image) {
                                   return KeepsAlpha("page" + ExtensionFor(image), image);
                               })),
          begun_(begun) {
        load_.strip = request.strip;
        load_.page = std::max(file.page, 1);
    }

    void Run() {
        if (IsStopped() || !Read() || StandsAlready())
            return;
        if (IsStopped() || !IsFitForItsTarget() || !MakeTargetFolder() || !CheckName())
            return;
        const bool written = IsColorToSkip() ? CopyAsItIs() : Enhance() && Save();
        if (!written)
            return;
        KeepTimes();
        outcome_.end = FileOutcome::End::kConverted;
    }

 private:
    bool IsStopped() const { return request_.stop->load(std::memory_order_relaxed); }

    void Stage(std::u16string_view text) const {
        if (request_.stage)
            request_.stage(file_.source, text);
    }

    bool Fail(const fs::path& path, int row, FileError error) {
        outcome_.end = FileOutcome::End::kFailed;
        outcome_.failedPath = path;
        outcome_.logRow = row;
        outcome_.error = std::move(error);
        outcome_.writeFailed = row == kLogWriteFailed || row == kLogOutOfMemory;
        return false;
    }

    bool Read() {
        Stage(labels::kStageRead);
        FileError error;
        const bool isRead = begun_.isOpen
                                ? LoadPage(*begun_.source, file_.source, load_, page_, &error)
                                : FailAs(begun_.error, error);
        begun_.source.reset();
        if (!isRead)
            return Fail(file_.source,
                        error.reason == FileReason::kNoMemory ? kLogOutOfMemory : kLogReadFailed,
                        std::move(error));
        outcome_.bytesIn = begun_.status ? static_cast<std::int64_t>(begun_.status->st_size) : 0;
        if (file_.page > 0)
            page_.notes.pictures = 1;  // the others are files of the plan as well
        outcome_.pictures = page_.notes.pictures;
        if (page_.notes.damaged)
            outcome_.damage = page_.notes.reason.empty() ? "damaged" : page_.notes.reason;
        return true;
    }

    /// What could be read in part only must not take the place of the rest.
    bool IsFitForItsTarget() {
        const bool isItself = request_.plan->IsItself(file_, TargetNow().extension().native());
        FileError error;
        if (page_.notes.damaged && (request_.strict || isItself)) {
            FailDamaged(&error, outcome_.damage);
            return Fail(file_.source, kLogDamaged, std::move(error));
        }
        if (page_.notes.pictures > 1 && isItself) {
            FailContent(&error, "holds " + std::to_string(page_.notes.pictures) + " pictures");
            return Fail(file_.source, kLogConversionFailed, std::move(error));
        }
        return true;
    }

    /// Whether the page is its own target, and so was converted before.
    bool StandsAlready() {
        if (!request_.skipExisting ||
            !request_.plan->IsItself(file_, TargetNow().extension().native()))
            return false;
        outcome_.end = FileOutcome::End::kSkipped;
        return true;
    }

    /// The name by the image as it is now; the image decides where the extension is automatic.
    fs::path TargetNow() { return TargetWith(ExtensionFor(page_.image)); }

    std::string ExtensionFor(const CDibImage& image) const {
        const BatchTarget& names = request_.names;
        return DottedExtension(
            names.extension.empty()
                ? PickAutoExtension(image, names.extensionPosition, names.packedRule)
                : names.extension);
    }

    fs::path TargetWith(std::string_view extension) {
        bool evaded = false;
        fs::path target = request_.plan->TargetPath(file_, extension, &evaded);
        outcome_.evadedTo = evaded ? target.native() : std::string();
        return target;
    }

    bool MakeTargetFolder() {
        const std::optional<FolderFailure> failure =
            request_.folders->Prepare(request_.plan->TargetFolder(file_));
        if (!failure)
            return true;
        outcome_.failedFolder = failure->at.native();
        return Fail(TargetNow(), kLogWriteFailed, failure->error);
    }

    /// A name that the disk does not take is told before the work on the page.
    bool CheckName() {
        const fs::path target = TargetNow();
        if (target.filename().native().size() <= kLongestName)
            return true;
        FileError error;
        FailContent(&error, "cannot write: " +
                                std::make_error_code(std::errc::filename_too_long).message());
        return Fail(target, kLogWriteFailed, std::move(error));
    }

    /// A page of several is no file that could be copied.
    bool IsColorToSkip() const {
        return request_.skipColor && file_.page == 0 && !page_.image.IsGrayScale();
    }

    bool CopyAsItIs() {
        if (request_.plan->IsSameFolder()) {
            keepTimes_ = false;
            return true;
        }
        Stage(labels::kStageCopy);
        const std::string name = fs::path(file_.source).filename().native();
        target_ = TargetWith(SplitName(name).extension);
        FileError error;
        if (!CopyFileWhole(file_.source, target_, &error)) {
            const bool unreadable = error.cause == FileError::Cause::kContent;
            return Fail(unreadable ? fs::path(file_.source) : target_,
                        unreadable ? kLogReadFailed : kLogWriteFailed, std::move(error));
        }
        outcome_.bytesOut = outcome_.bytesIn;
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
        request_.settings->Take(report.found);
        outcome_.sure = report.sure;
        return report.end == RunEnd::kDone && IsWhole(report);
    }

    bool IsWhole(const RunReport& report) {
        if (report.IsWhole())
            return true;
        FileError error;
        if (report.Worst() == StepResult::kNoMemory) {
            FailStorage(&error, report.Detail(), FileReason::kNoMemory);
            return Fail(file_.source, kLogOutOfMemory, std::move(error));
        }
        FailContent(&error, report.Detail());
        return Fail(file_.source, kLogConversionFailed, std::move(error));
    }

    bool Save() {
        target_ = TargetNow();
        Stage(labels::kStageSave);
        FileError error;
        if (!SavePage(target_, request_.names, page_, settings_, &error))
            return Fail(target_, kLogWriteFailed, std::move(error));
        if (const auto written = ReadFileStatus(target_))
            outcome_.bytesOut = static_cast<std::int64_t>(written->st_size);
        return true;
    }

    void KeepTimes() {
        if (request_.names.keepFileTime && keepTimes_ && begun_.status)
            outcome_.timesLost = !SetFileTimes(target_, *begun_.status);
    }

    const ConvertRequest& request_;
    const PlannedFile& file_;
    FileOutcome& outcome_;
    const Settings settings_;  // as they stand when the file begins
    LoadPageRequest load_;
    LoadedPage page_;
    BegunFile& begun_;
    fs::path target_;
    bool keepTimes_ = true;
};

/// What an exception made of a file; nothing of what was known before it counts.
FileOutcome FailedBy(const PlannedFile& file, int row, FileError::Cause cause, const char* detail) {
    FileOutcome outcome;
    outcome.end = FileOutcome::End::kFailed;
    outcome.failedPath = file.source;
    outcome.logRow = row;
    outcome.writeFailed = cause == FileError::Cause::kStorage;
    outcome.error = {cause, detail, FileReason::kUnknown};
    if (row == kLogOutOfMemory)
        outcome.error.reason = FileReason::kNoMemory;
    return outcome;
}

}  // namespace

bool IsDoublePage(const Settings& settings) {
    const std::int32_t kind = settings[PARA_PAGE_SPLIT_TYPE] & kKindBits;
    return kind == kRightFirst || kind == kLeftFirst;
}

PageWork BeginFile(const ConvertRequest& request, const PlannedFile& file) {
    auto begun = std::make_shared<BegunFile>();
    PageWork work;
    if (!request.stop->load(std::memory_order_relaxed)) {
        begun->status = ReadFileStatus(file.source);
        begun->isOpen = begun->source->Open(file.source, &begun->error);
        if (begun->isOpen && !request.isAlone)
            work.need = PageMemory(*begun->source, file.source, request.settings->Get());
    }
    work.run = [&request, &file, begun] {
        FileOutcome outcome;
        try {
            Conversion(request, file, *begun, outcome).Run();
        } catch (const std::bad_alloc&) {
            return FailedBy(file, kLogOutOfMemory, FileError::Cause::kStorage, "out of memory");
        } catch (const std::exception& failure) {
            return FailedBy(file, kLogConversionFailed, FileError::Cause::kContent, failure.what());
        }
        return outcome;
    };
    return work;
}

}  // namespace velloran
