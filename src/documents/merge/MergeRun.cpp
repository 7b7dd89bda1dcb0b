#include "documents/merge/MergeRun.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <numeric>
#include <optional>
#include <system_error>
#include <unordered_set>
#include <utility>

#include "batch/BatchPlan.h"
#include "batch/RunLog.h"
#include "codecs/Formats.h"
#include "codecs/ImageInfo.h"
#include "codecs/JpegSource.h"
#include "core/GrayDepth.h"
#include "core/ProcessorCount.h"
#include "documents/Asker.h"
#include "documents/book/RowName.h"
#include "documents/merge/MergePair.h"
#include "files/FileCopy.h"
#include "files/FileType.h"
#include "files/ImageFiles.h"
#include "files/ReplaceRules.h"
#include "files/Walkers.h"
#include "params/ParaBlock.h"
#include "reduce/CheckGray.h"
#include "text/DocumentLabels.h"
#include "text/Labels.h"
#include "text/Phrase.h"
#include "text/Text.h"

namespace velloran {

namespace {

namespace fs = std::filesystem;
using End = MergeOutcome::End;

constexpr std::array<std::string_view, 7> kExtensions = {"",     ".jpg", ".bmp", ".png",
                                                         ".tif", ".jp2", ".webp"};

fs::path FolderOf(const MergePara& para, int folder) {
    return NameOfText(folder == 0 ? para.source1 : para.source2);
}

/// Bits a pixel of the file itself; 24 for those of colour, whatever their samples.
int OwnBits(const fs::path& file, const CDibImage& image) {
    int type = kTypeUnknown;
    ImageInfo info;
    if (!ReadImageInfo(file, type, info))
        return image.GetBpp();
    return info.bitsPerPixel > 8 && !(info.gray && info.bitsPerPixel == 16) ? 24
           : info.bitsPerPixel > 8                                          ? 8
                                                                            : info.bitsPerPixel;
}

/// The larger, the coarser the file was written.
int CoarsenessOf(const CDibImage& image) {
    const auto& head = image.Source().jpegHead;
    if (head == nullptr || !head->quantTables[0])
        return -1;
    return std::accumulate(head->quantTables[0]->begin(), head->quantTables[0]->end(), 0);
}

class MergeWork {
 public:
    MergeWork(MergeState& state, const Settings& settings, const fs::path& log, Asker& asker)
        : state_(state), settings_(settings), asker_(asker), log_(log) {
        ApplyJpegOptions(state.para, settings_);
        SetInnerThreads(CountProcessors());
        log_.Reset();
    }

    void RunRows(const fs::path& target) {
        const std::vector<MergeRole> roles = RolesOf(state_);
        for (std::size_t i = 0; i < state_.items.size(); ++i) {
            if (asker_.IsStopped()) {
                outcome_.end = End::kStopped;
                return;
            }
            const MergeItem& item = state_.items[i];
            const fs::path file = FolderOf(state_.para, item.folder) / item.name;
            asker_.ShowProgress({i + 1, state_.items.size(), file.native()});
            if (roles[i] == MergeRole::kSingle)
                Copy(file, FreePath(target, item.name));
            else if (roles[i] == MergeRole::kFirst)
                JoinRows(i, i + 1, file, target);
        }
    }

    void JoinRows(std::size_t first, std::size_t second, const fs::path& file,
                  const fs::path& target) {
        const MergeItem& other = state_.items[second];
        const fs::path otherFile = FolderOf(state_.para, other.folder) / other.name;
        const std::string stem = fs::path(file).stem().native() + "_" + otherFile.stem().native();
        Join(file, otherFile, &state_.items[first], &state_.items[second],
             [&](const std::string& extension) { return FreePath(target, stem + extension); });
    }

    /// `name` gives the path by the extension of an automatic type.
    template <typename Name>
    void Join(const fs::path& file1, const fs::path& file2, MergeItem* item1, MergeItem* item2,
              Name&& name) {
        CDibImage image1, image2;
        if (!Load(file1, image1) || !Load(file2, image2))
            return;
        const int factor = FactorOf(SizeClassOf(image1, image2));
        PairRequest request;
        request.para = &state_.para;
        request.first = Scaled(*item1, factor);
        request.second = Scaled(*item2, factor);
        request.bits1 = OwnBits(file1, image1);
        request.bits2 = OwnBits(file2, image2);
        PairResult result;
        const PairEnd end = MergePair(image1, image2, request, result);
        if (end != PairEnd::kDone) {
            FileError error;
            if (end == PairEnd::kNoMemory)
                FailNoMemory(&error);
            else
                FailContent(&error, "the joined picture would be too large", FileReason::kTooLarge);
            Fail(file1, {}, end == PairEnd::kNoMemory ? kLogOutOfMemory : kLogConversionFailed,
                 error);
            return;
        }
        item1->deskewAngle = result.firstItem.deskewAngle;
        item2->deskewAngle = result.secondItem.deskewAngle;
        Save(file1, file2, image1, image2, result, name);
    }

    MergeOutcome Finish() {
        if (outcome_.end == End::kDone) {
            EndMessage message;
            message.text = labels::kMergeDone;
            message.logQuestion = labels::kSeeLogAsk;
            if (log_.HasLogLines())
                message.log = log_.File();
            asker_.TellEnd(message);
        }
        outcome_.files = state_.items.size();
        return std::move(outcome_);
    }

 private:
    static PairItem Scaled(const MergeItem& item, int factor) {
        const auto times = [factor](std::int32_t value) {
            constexpr std::int64_t kMost = 10'000'000;
            return static_cast<std::int32_t>(
                std::clamp(std::int64_t{value} * factor, -kMost, kMost));
        };
        return {times(item.offsetH), times(item.offsetV), times(item.scale), item.deskewType,
                item.deskewAngle};
    }

    bool Load(const fs::path& file, CDibImage& image) {
        FileError error;
        if (!LoadImageFile(file, image, &error)) {
            Fail(file, {}, kLogReadFailed, error);
            return false;
        }
        if (CheckGray(image, kGrayTolerant) != 0)
            return true;
        FailNoMemory(&error);
        Fail(file, {}, kLogOutOfMemory, error);
        return false;
    }

    template <typename Name>
    void Save(const fs::path& file1, const fs::path& file2, const CDibImage& image1,
              const CDibImage& image2, PairResult& result, Name&& name) {
        const int type1 = DetectFileType(file1, /*sniff=*/1);
        const int type2 = DetectFileType(file2, /*sniff=*/1);
        const int chosen = state_.para.targetFile;
        const bool isChosen = chosen > 0 && chosen < static_cast<int>(kExtensions.size());
        const std::string extension =
            isChosen ? std::string(kExtensions[static_cast<std::size_t>(chosen)])
                     : AutomaticMergeType(type1, type2, result.image);
        const fs::path out = name(extension);
        const int type = FileTypeOfExtension(out);
        FileError error;
        const bool wantsPlain = type == kTypeJpeg || type == kTypeJp2 || type == kTypeJ2k;
        if (wantsPlain && EnsureGrayOrRgb(result.image) == 0) {
            FailNoMemory(&error);
            Fail(out, file1, kLogOutOfMemory, error);
            return;
        }
        SaveOptions options;
        options.quality = state_.para.jpegQuality;
        options.dpi = result.dpi;
        options.jp2Rate = state_.para.jp2Rate;
        options.jpeg = JpegRulesOf(Block());
        options.jpegSource = CoarsenessOf(image1) >= CoarsenessOf(image2) ? &image1 : &image2;
        if (!SaveImageAs(out, result.image, options, &error)) {
            Fail(out, file1, kLogWriteFailed, error);
            return;
        }
        ++outcome_.joined;
        AddTarget(out, file1, file2, result.image.GetWidth(), result.image.GetHeight());
    }

    CParaBlock Block() const {
        CParaBlock block;
        block.AssignValues(settings_.values);
        return block;
    }

    void Copy(const fs::path& file, const fs::path& out) {
        FileError error;
        if (!CopyFileWhole(file, out, &error)) {
            const bool unreadable = error.cause == FileError::Cause::kContent;
            Fail(unreadable ? file : out, unreadable ? fs::path() : file,
                 unreadable ? kLogReadFailed : kLogWriteFailed, error);
            return;
        }
        ++outcome_.copied;
        int type = kTypeUnknown;
        ImageInfo info;
        if (!ReadImageInfo(out, type, info))
            info = {};
        AddTarget(out, file, {}, info.width, info.height);
    }

    void AddTarget(const fs::path& out, const fs::path& first, const fs::path& second, int width,
                   int height) {
        const auto written = ReadFileStatus(out);
        outcome_.targets.push_back({out.native(), first.native(), second.native(), width, height,
                                    written ? static_cast<std::int64_t>(written->st_size) : 0});
    }

    /// A name that no result of this run has.
    fs::path FreePath(const fs::path& folder, const std::string& name) {
        const fs::path wish = name;
        std::string free = name;
        for (int number = 2; !taken_.insert(LowerCase(free)).second; ++number)
            free = wish.stem().native() + "~" + std::to_string(number) + wish.extension().native();
        return folder / free;
    }

    void Fail(const fs::path& path, const fs::path& source, int row, const FileError& error) {
        BatchFailure failure;
        failure.path = path.native();
        failure.source = source.native();
        failure.message = labels::kLogRows[row];
        failure.detail = error.detail;
        failure.storage = error.cause == FileError::Cause::kStorage;
        failure.reason = error.reason;
        asker_.TellFailure(failure);
        outcome_.failures.push_back(std::move(failure));
        FileError logError;
        if (!log_.LogFailure(path, row, &logError))
            asker_.Warn(Phrase(labels::kLogNotWritten, {log_.File().native()}));
    }

    MergeState& state_;
    Settings settings_;
    Asker& asker_;
    RunLog log_;
    std::unordered_set<std::string> taken_;
    MergeOutcome outcome_;
};

MergeOutcome Refused(const Label& message) {
    MergeOutcome outcome;
    outcome.end = End::kRefused;
    outcome.message = message;
    return outcome;
}

std::vector<std::string> NamesIn(const fs::path& folder, int filter) {
    CGetFiles lister;
    lister.SetUp(SourceFilter(filter), nullptr, /*recursive=*/false);
    lister.Walk(folder);
    std::vector<std::string> names;
    for (const fs::path& name : lister.GetNames())
        names.push_back(name.native());
    return names;
}

}  // namespace

std::vector<MergeRole> RolesOf(const MergeState& state) {
    const std::vector<MergeItem>& items = state.items;
    std::vector<MergeRole> roles(items.size(), MergeRole::kSingle);
    const bool isTwo = state.para.twoSources != 0;
    bool isOpen = false;  // the row before is the first of a pair
    for (std::size_t i = 0; i < items.size(); ++i) {
        const bool hasNext = i + 1 < items.size() && items[i + 1].checked;
        if (!items[i].checked) {
            isOpen = false;
        } else if (isOpen) {
            roles[i] = MergeRole::kSecond;
            isOpen = false;
        } else if (hasNext && (!isTwo || (items[i].folder == 0 && items[i + 1].folder == 1))) {
            roles[i] = MergeRole::kFirst;
            isOpen = true;
        }
    }
    return roles;
}

std::u16string ProposedTarget(std::u16string_view source1) {
    while (source1.size() > 1 && source1.back() == u'/')
        source1.remove_suffix(1);
    return std::u16string(source1) + std::u16string(labels::kMergeSuffix);
}

bool FillMergeList(MergeState& state, FileError* error) {
    MergePara& para = state.para;
    state.items.clear();
    std::error_code ignored;
    for (int folder = 0; folder < (para.twoSources != 0 ? 2 : 1); ++folder)
        if (!fs::is_directory(FolderOf(para, folder), ignored))
            return FailContent(error, FolderOf(para, folder).native(), FileReason::kNoSuchFile);
    const std::vector<std::string> one = NamesIn(FolderOf(para, 0), para.sourceFiles);
    const std::vector<std::string> two = para.twoSources != 0
                                             ? NamesIn(FolderOf(para, 1), para.sourceFiles)
                                             : std::vector<std::string>();
    for (std::size_t i = 0; i < std::max(one.size(), two.size()); ++i) {
        if (i < one.size())
            state.items.push_back({.name = one[i], .folder = 0});
        if (i < two.size())
            state.items.push_back({.name = two[i], .folder = 1});
    }
    if (para.target.empty())
        para.target = ProposedTarget(para.source1);
    return true;
}

std::string AutomaticMergeType(int type1, int type2, const CDibImage& result) {
    const auto either = [&](int type) { return type1 == type || type2 == type; };
    if (either(kTypeJpeg))
        return ".jpg";
    if (either(kTypeJp2) || either(kTypeJ2k))
        return ".jp2";
    if (type1 == kTypeBmp && type2 == kTypeBmp)
        return ".bmp";
    if (either(kTypeTiff))
        return ".tif";
    if (either(kTypePng))
        return ".png";
    if (either(kTypeWebp))
        return ".webp";
    if (result.IsBW())
        return ".tif";
    return result.GetBpp() == 24 || result.IsGrayScale() ? ".jpg" : ".png";
}

MergeOutcome RunMerge(MergeState& state, const Settings& settings, const fs::path& log,
                      Asker& asker) {
    if (state.items.empty())
        return Refused(labels::kMergeNoSource);
    if (state.para.target.empty())
        return Refused(labels::kMergeNoTarget);
    const fs::path target = NameOfText(state.para.target);
    for (int folder = 0; folder < (state.para.twoSources != 0 ? 2 : 1); ++folder)
        if (IsSameFolder(target, FolderOf(state.para, folder)))
            return Refused(labels::kMergeTargetIsSource);
    if (!CanBeLog(log))
        return Refused(labels::kIsNoLog);
    std::error_code reason;
    fs::create_directories(target, reason);
    if (reason) {
        MergeOutcome outcome = Refused(labels::kMergeTargetFailed);
        outcome.end = End::kNoTarget;
        errno = reason.value();
        FailErrno(&outcome.error, target.native());
        return outcome;
    }
    MergeWork work(state, settings, log, asker);
    work.RunRows(target);
    return work.Finish();
}

MergeOutcome JoinFiles(MergeState& state, const Settings& settings, const fs::path& first,
                       const fs::path& second, const fs::path& out, const fs::path& log,
                       Asker& asker) {
    if (!CanBeLog(log))
        return Refused(labels::kIsNoLog);
    MergeWork work(state, settings, log, asker);
    state.para.targetFile = 0;
    work.Join(first, second, state.items.data(), state.items.data() + 1,
              [&](const std::string&) { return out; });
    return work.Finish();
}

}  // namespace velloran
