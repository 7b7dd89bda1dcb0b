#include "documents/compare/CompareFolders.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <optional>
#include <system_error>
#include <utility>

#include "batch/BatchWorkers.h"
#include "batch/PageMemory.h"
#include "codecs/Formats.h"
#include "codecs/ImageInfo.h"
#include "core/FreeMemory.h"
#include "core/ProcessorCount.h"
#include "core/StepContext.h"
#include "documents/Asker.h"
#include "files/ImageFiles.h"
#include "files/Walkers.h"
#include "io/AtomicFile.h"
#include "text/DocumentLabels.h"
#include "text/Labels.h"
#include "text/Phrase.h"
#include "text/Text.h"

namespace velloran {

namespace {

namespace fs = std::filesystem;

struct PairResult {
    PairRefusal refusal;
    std::optional<DiffStats> stats;
    bool wasStopped = false;
};

/// What a page of the file takes, read: its pixels, as they are compared.
std::int64_t NeedOf(const fs::path& file) {
    int type = kTypeUnknown;
    ImageInfo info;
    if (!ReadImageInfo(file, type, info))
        return 0;
    constexpr std::int64_t kBytesAPixel = 6;  // as read, and as it is judged for grey
    return std::int64_t{info.width} * info.height * kBytesAPixel;
}

class FolderCompare {
 public:
    FolderCompare(const CompareFoldersRequest& request, Asker& asker,
                  const std::function<void(const CompareRow&)>& told)
        : request_(request), asker_(asker), told_(told) {}

    CompareFoldersOutcome Run() {
        CGetFiles lister;
        lister.SetUp(SourceFilter(0), nullptr, /*recursive=*/false);
        lister.Walk(request_.folder1);
        for (const fs::path& name : lister.GetNames())
            names_.push_back(name.native());
        results_.resize(names_.size());
        RunWorkers(Work());
        outcome_.wasStopped = stop_.load() && delivered_ < names_.size();
        return std::move(outcome_);
    }

 private:
    WorkerRequest Work() {
        const int processors = CountProcessors();
        const WorkShares shares = ShareProcessors(
            names_.size(), request_.jobs > 0 ? request_.jobs : processors, processors);
        WorkerRequest work;
        work.count = names_.size();
        work.workers = shares.workers;
        work.innerThreads = shares.innerThreads;
        work.aloneThreads = shares.aloneThreads;
        work.stop = &stop_;
        work.memory = FreeMemory();
        work.begin = [this](std::size_t index) {
            PageWork page;
            page.need =
                NeedOf(request_.folder1 / names_[index]) + NeedOf(request_.folder2 / names_[index]);
            page.run = [this, index] { return Compare(index); };
            return page;
        };
        work.deliver = [this](std::size_t index, const FileOutcome& file) {
            if (file.end == FileOutcome::End::kStopped)
                return;
            ++delivered_;
            Take(index);
        };
        work.poll = [this] { return asker_.IsStopped(); };
        return work;
    }

    FileOutcome Compare(std::size_t index) {
        FileOutcome done;
        if (stop_.load())
            return done;
        const StepContext context{CancelToken(stop_)};
        PairResult& result = results_[index];
        CDibImage image1, image2;
        try {
            DiffStats stats;
            result.refusal =
                LoadPair(request_.folder1 / names_[index], request_.folder2 / names_[index],
                         /*keepsDepth=*/true, image1, image2);
            if (result.refusal.message.empty()) {
                if (ComputeDiff(image1, image2, /*withSimilarity=*/false, stats))
                    result.stats = stats;
                else
                    result.refusal.message = labels::kLogRows[6];
            }
        } catch (const std::bad_alloc&) {
            result.refusal.message = labels::kLogRows[6];
        }
        if (!stop_.load())
            done.end = FileOutcome::End::kConverted;
        return done;
    }

    void Take(std::size_t index) {
        PairResult& result = results_[index];
        asker_.ShowProgress({delivered_, names_.size(), names_[index], {}, 0});
        if (!result.stats) {
            asker_.Warn(Phrase(labels::kComparePassedOver,
                               {names_[index], ToUtf8(result.refusal.message)}));
            if (result.refusal.message == labels::kCompareUnreadable.Text())
                ++outcome_.unreadable;
            return;
        }
        outcome_.rows.push_back({outcome_.rows.size() + 1, names_[index], *result.stats});
        result.stats.reset();
        if (told_)
            told_(outcome_.rows.back());
    }

    const CompareFoldersRequest& request_;
    Asker& asker_;
    const std::function<void(const CompareRow&)>& told_;
    std::atomic<bool> stop_{false};
    std::vector<std::string> names_;
    std::vector<PairResult> results_;
    std::size_t delivered_ = 0;
    CompareFoldersOutcome outcome_;
};

std::string Quoted(const std::string& field) {
    if (field.find_first_of(",\"\r\n") == std::string::npos)
        return field;
    std::string quoted = "\"";
    for (const char c : field) {
        if (c == '"')
            quoted += '"';
        quoted += c;
    }
    return quoted + '"';
}

std::string CommaLine(const std::vector<std::string>& fields) {
    std::string line;
    for (const std::string& field : fields)
        line += (line.empty() ? "" : ",") + Quoted(field);
    return line + "\r\n";
}

}  // namespace

CompareFoldersOutcome CompareFolders(const CompareFoldersRequest& request, Asker& asker,
                                     const std::function<void(const CompareRow&)>& told) {
    CompareFoldersOutcome outcome;
    std::error_code ignored;
    if (request.folder1.empty())
        outcome.refusal = labels::kCompareFolder1;
    else if (request.folder2.empty())
        outcome.refusal = labels::kCompareFolder2;
    else if (!fs::is_directory(request.folder1, ignored) ||
             !fs::is_directory(request.folder2, ignored))
        outcome.refusal = labels::kCompareFolderGone;
    return outcome.refusal.empty() ? FolderCompare(request, asker, told).Run() : outcome;
}

std::vector<std::string> ColumnsOf(const CompareRow& row) {
    return {std::to_string(row.number), row.name,
            DifferentText(row.stats),   MaximaText(row.stats),
            MeansText(row.stats),       DeviationsText(row.stats)};
}

std::vector<std::string> ColumnTitles() {
    std::vector<std::string> titles;
    for (const Label& title : labels::kCompareColumns)
        titles.push_back(ToUtf8(title));
    return titles;
}

bool ExportRows(const std::vector<CompareRow>& rows, const fs::path& file, FileError* error) {
    AtomicFile out(file);
    if (!out.Open(error))
        return false;
    std::string text = CommaLine(ColumnTitles());
    for (const CompareRow& row : rows)
        text += CommaLine(ColumnsOf(row));
    out.Write(text.data(), text.size());
    return out.Commit(error);
}

}  // namespace velloran
